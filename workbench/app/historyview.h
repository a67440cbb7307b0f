#pragma once

#include "app/resulthistory.h"

#include <QPointer>
#include <QWidget>

#include <array>
#include <utility>

class QCheckBox;
class QDateTimeEdit;
class QDoubleSpinBox;
class QLabel;

namespace workbench {

/// Where the operator chooses the time span and the frequency of the stored bearings that make a position, and sees
/// what is stored and found. What is not chosen follows the latest result.
class HistoryView : public QWidget
{
    Q_OBJECT
public:
    /// @p history may end before the view.
    explicit HistoryView(ResultHistory& history, QWidget* parent = nullptr);

    /// Shows time and frequency of @p result in what is not chosen.
    void follow(const DfResult& result);

private:
    void addFields(const HistoryChoice& choice);
    [[nodiscard]] std::array<std::pair<QCheckBox*, QWidget*>, 3> checkedEdits() const;
    void choose();
    void showState();

    QPointer<ResultHistory> m_history;
    QWidget* m_fields = nullptr;
    QCheckBox* m_hasFrom = nullptr;
    QDateTimeEdit* m_from = nullptr;
    QCheckBox* m_hasTo = nullptr;
    QDateTimeEdit* m_to = nullptr;
    QCheckBox* m_hasFrequency = nullptr;
    QDoubleSpinBox* m_frequency = nullptr;
    QDoubleSpinBox* m_tolerance = nullptr;
    QLabel* m_state = nullptr;
    QLabel* m_found = nullptr;
};

} // namespace workbench
