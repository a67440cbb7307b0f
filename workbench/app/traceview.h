#pragma once

#include "ztbase/errorhandler.h"

#include <QWidget>

class QCheckBox;
class QLabel;
class QTableView;

namespace workbench {

class TraceModel;

/// The host's traces as a table, with the means to switch them on, to hold them and to take them elsewhere.
class TraceView : public QWidget
{
    Q_OBJECT
public:
    explicit TraceView(QWidget* parent = nullptr);

    /// Adds a trace with the present time.
    void append(const TraceRecord& record);
    [[nodiscard]] TraceModel* model() const { return m_model; }

public slots:
    /// Copies the selected traces, all of them when none is selected, to the clipboard.
    void copy();

private:
    void setComponentTraces(bool on);
    void showHeldBackCount(int count);
    void followEnd();

    TraceModel* m_model;
    QTableView* m_table;
    QLabel* m_heldBack;
};

} // namespace workbench
