#include "fittedtext.h"

#include <QAbstractItemView>
#include <QFontInfo>
#include <QFontMetrics>
#include <QScreen>
#include <QStyle>
#include <QStyleOptionComboBox>
#include <QStylePainter>

#include <algorithm>

namespace VelmarGui {

namespace {

/// Smaller letters cannot be read from an operator's distance.
constexpr int smallestPixelSize = 8;

/// More characters fit into no toolbar in any font. Measuring a text takes its time for every character.
constexpr int mostCharacters = 1000;

bool fits(const QString& text, const QFont& font, const QSize& room, int flags)
{
    const QSize needed = QFontMetrics(font).boundingRect(QRect(QPoint(0, 0), room), flags, text).size();
    return needed.width() <= room.width() && needed.height() <= room.height();
}

} // namespace

FittedText fitText(const QString& text, const QFont& font, const QSize& room, int flags)
{
    FittedText fitted{text.left(mostCharacters), font};
    for (int size = QFontInfo(font).pixelSize(); !fits(fitted.text, fitted.font, room, flags); --size) {
        if (size <= smallestPixelSize) {
            fitted.text = QFontMetrics(fitted.font).elidedText(fitted.text, Qt::ElideRight, room.width());
            break;
        }
        fitted.font.setPixelSize(size - 1);
    }
    return fitted;
}

/// Plain, because a label asks how large its text would be as rich text, and reads files for that.
FittedLabel::FittedLabel(const QString& text, QWidget* parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setText(text);
}

void FittedLabel::paintEvent(QPaintEvent* /*event*/)
{
    const int flags = int(QStyle::visualAlignment(layoutDirection(), alignment())) | Qt::TextWordWrap;
    const QRect room = contentsRect();
    const FittedText fitted = fitText(text(), font(), room.size(), flags);
    QStylePainter painter(this);
    painter.setFont(fitted.font);
    painter.drawItemText(room, flags, palette(), isEnabled(), fitted.text, foregroundRole());
}

void FittedComboBox::showPopup()
{
    const int needed = view()->sizeHintForColumn(0) + style()->pixelMetric(QStyle::PM_ScrollBarExtent);
    view()->setMinimumWidth(std::min(needed, screen()->availableSize().width()));
    VCComboBoxClassic::showPopup();
}

void FittedComboBox::paintEvent(QPaintEvent* /*event*/)
{
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QRect room = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    // Styles keep one pixel free on both sides of the text.
    const FittedText fitted = fitText(option.currentText, font(), room.adjusted(1, 0, -1, 0).size(), Qt::AlignLeft);
    option.currentText = fitted.text;
    QStylePainter painter(this);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    painter.setFont(fitted.font);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

} // namespace VelmarGui
