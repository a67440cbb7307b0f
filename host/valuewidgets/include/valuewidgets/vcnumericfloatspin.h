#pragma once

#include "valuewidgets/undorecordingcontrolbase.h"

#include <QDoubleSpinBox>

#include <memory>

namespace values {
class ValueBase;
}

/// A spin box that shows and edits an integer or double value with the value's limits and step.
///
/// An edit is written when the operator finishes it (Return, leaving the field) and by arrow keys, buttons and wheel,
/// not per key stroke, with this widget as the causing observer. A field being edited is not overwritten by the value;
/// leaving it without a change writes nothing and shows the value again, and so does Escape. A number that others give
/// the spin box (an assistive tool by setValue()) is an edit as well. Following the value writes nothing. Disabled
/// while it has no value and while the value is in state "not in use"; the status tip then says why.
///
/// Numbers are shown in the fewest digits that are exact, with a decimal point and without grouping; a decimal comma is
/// read as well.
class VALUEWIDGETS_EXPORT VCNumericFloatSpin : public QDoubleSpinBox, public UndoRecordingControlBase
{
    Q_OBJECT
public:
    /// With @p editableWhenUnused the field can be edited in state "not in use" too; an edit then first brings the
    /// value to the ordinary state.
    explicit VCNumericFloatSpin(QWidget* parent = nullptr, bool editableWhenUnused = false);
    ~VCNumericFloatSpin() override;

    /// Shows @p numeric (an integer or double value), or nothing for null or another kind. Ends a binding by path.
    void SetNumeric(values::ValueBase* numeric);
    /// Shows the number at @p path: as soon as it comes into the tree, until it goes, and again when it comes back.
    void SetNumeric_ValuePath(const QString& path);

    /// The value shown; null when there is none.
    [[nodiscard]] values::ValueBase* GetNumeric() const;

    QString textFromValue(double value) const override;
    double valueFromText(const QString& text) const override;
    QValidator::State validate(QString& text, int& position) const override;
    void stepBy(int steps) override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};
