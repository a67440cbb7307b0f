#pragma once

#include <QLabel>

/// A label that can be clicked.
class ClickLabel final : public QLabel
{
    Q_OBJECT
public:
    /// The object is named @p text followed by " Label".
    ClickLabel(const QString& text, QWidget* parent);

signals:
    /// A mouse button, whichever, was released after a press on the label.
    void signal_open();

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
};
