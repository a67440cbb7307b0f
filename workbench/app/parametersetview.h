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

class FileWork;

/// One parameter set of a component beside the named sets in a store: hands a named set to the component, and keeps
/// what the component reports. Shows the current text and whether there are edits that it does not have yet.
///
/// Files are read and written elsewhere, one operation at a time; what is asked for meanwhile is not done, and told. A
/// view that goes during an operation does not wait for it, and the operation is done.
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
    void makeFields();
    void layOut();
    void connectCommon();
    void refreshNames();
    void showNames(const QStringList& names, const QString& current);
    void refreshText();
    void setModified(bool modified);
    void updateButtons();
    [[nodiscard]] QString selectedName() const;
    [[nodiscard]] QString editedName() const;

    void load();
    void handOver(const QString& name, const VelmarGui::ParameterSetStore::Loaded& loaded);
    void save();
    void saveAs(const QString& name);
    void rename();
    void askToDelete();
    void deleteSet(const QString& name);
    void request();
    void ask(const QString& question, const QString& button, void (ParameterSetView::*act)(const QString&),
             const QString& name);
    /// Does @p work, an operation on the store, and calls @p answer with its result; not when another one is under way.
    template <typename Work, typename Answer>
    void start(Work work, Answer answer);
    /// Does an operation that changes the store, shows what there is then with @p current selected, and tells @p done
    /// or the error.
    template <typename Change>
    void change(Change change, const QString& current, const QString& done);

    QPointer<VelmarGui::GuiComponentCommon> m_common;
    QString m_component;
    QString m_set;
    bool m_isOffline;
    bool m_isModified = false;
    bool m_isBusy = false; // with an operation on the store
    VelmarGui::ParameterSetStore m_store;
    FileWork* m_files;

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
