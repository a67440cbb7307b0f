#pragma once

#include "guicomponentbase/parametersetstore.h"

#include <QPointer>
#include <QWidget>

class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPushButton;
class QStackedWidget;

namespace VelmarGui {
class GuiComponentCommon;
}

namespace workbench {

/// One parameter set of a component beside the named sets in a store: hands a named set to the component, and keeps
/// what the component reports. Shows the current text and whether there are edits that it does not have yet.
class ParameterSetView : public QWidget
{
    Q_OBJECT
public:
    /// Follows the set @p set of @p component (its folder in the value tree) as long as @p common lives. @p isOffline:
    /// edits reach the set only when the component is asked for it, so that it can be asked here.
    ParameterSetView(VelmarGui::GuiComponentCommon& common, const QString& component, const QString& set,
                     bool isOffline, const QString& folder, QWidget* parent = nullptr);

signals:
    /// What was done, or why not: a sentence for people.
    void message(const QString& text);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void layOut();
    void connectCommon();
    void refreshNames(const QString& current);
    void refreshText();
    void setModified(bool modified);
    void updateButtons();
    [[nodiscard]] QString selectedName() const;
    [[nodiscard]] QString editedName() const;

    void load();
    void save();
    void saveAs(const QString& name);
    void rename();
    void askToDelete();
    void deleteSet(const QString& name);
    void request();
    void ask(const QString& question, const QString& button, void (ParameterSetView::*act)(const QString&),
             const QString& name);
    /// Tells @p error, or @p done when it is empty.
    bool tell(const VelmarGui::ParameterSetStore::Error& error, const QString& done);

    QPointer<VelmarGui::GuiComponentCommon> m_common;
    QString m_component;
    QString m_set;
    bool m_isOffline;
    bool m_isModified = false;
    VelmarGui::ParameterSetStore m_store;

    QStackedWidget* m_names = nullptr;
    QListWidget* m_list = nullptr;
    QLabel* m_emptyText = nullptr;
    QLineEdit* m_nameEdit = nullptr;
    QPushButton* m_loadButton = nullptr;
    QPushButton* m_saveButton = nullptr;
    QPushButton* m_renameButton = nullptr;
    QPushButton* m_deleteButton = nullptr;
    QPushButton* m_requestButton = nullptr;
    QLabel* m_stateText = nullptr;
    QPlainTextEdit* m_text = nullptr;
};

} // namespace workbench
