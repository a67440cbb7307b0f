#pragma once

#include "kt270/kt270global.h"

#include <QPointer>
#include <QString>
#include <QWidget>

#include <vector>

class QGridLayout;
class QLabel;
class QToolButton;

namespace KT270 {

/// The face of a form: labelled widgets in rows below a title that collapses them and shows whether there are edits.
///
/// Labels break in narrow windows. The keyboard goes through the rows from top to bottom. A wheel turned over a
/// widget that has not the focus scrolls and changes nothing. GUI thread only.
class KT270_EXPORT PgXmlSheet : public QWidget
{
    Q_OBJECT
public:
    explicit PgXmlSheet(const QString& title, QWidget* parent = nullptr);
    ~PgXmlSheet() override;

    /// Puts @p widget, which then belongs to the sheet, with @p label (translated) in front of it into @p row; rows
    /// count from 1 and need not be consecutive, and of widgets with the same row the one that came first stands first.
    /// An empty label: the widget takes the whole row. Labels are buddies of their widgets and enabled with them. @p
    /// fieldName finds the widget again. Null is ignored; the row ends with its widget.
    void InsertWidget(const QString& label, const QString& fieldName, QWidget* widget, int row);
    /// The first widget inserted as @p fieldName, null when there is none.
    [[nodiscard]] QWidget* GetFieldWidget(const QString& fieldName) const;

    /// Shows or hides the modification mark. Every call with true emits si_modified(), whatever the mark was.
    void setModified(bool modified);
    [[nodiscard]] bool isModified() const { return m_modified; }

    /// Allows or forbids input to the widgets of @p row, or, when that is 0, of the whole sheet. Widgets that are
    /// disabled for a reason of their own stay so.
    void EnableInput(bool enable, int row);

    /// Whether only the title is seen.
    void setCollapsed(bool collapsed);
    [[nodiscard]] bool isCollapsed() const;

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// setModified(true) was called.
    void si_modified();
    /// Collapsed or opened, by the operator or by program.
    void si_collapsedChanged(bool collapsed);

private:
    struct Row
    {
        int number;
        QString fieldName;
        QPointer<QLabel> label; // null in a row without label
        QPointer<QWidget> widget;
        QPointer<QWidget> box; // what stands in the layout
    };

    void LayOutRows();
    void OrderKeyboard();
    [[nodiscard]] const Row* RowOf(const QObject* widget) const;

    QToolButton* m_title;
    QLabel* m_mark;
    QWidget* m_body;
    QGridLayout* m_layout;
    std::vector<Row> m_rows; // in the order shown
    bool m_modified = false;
};

} // namespace KT270
