#include "clicklabel.h"

ClickLabel::ClickLabel(const QString& text, QWidget* parent)
    : QLabel(text, parent)
{
    setCursor(Qt::PointingHandCursor);
    setObjectName(text + QStringLiteral(" Label"));
}

void ClickLabel::mouseReleaseEvent(QMouseEvent* /*event*/)
{
    emit signal_open();
}
