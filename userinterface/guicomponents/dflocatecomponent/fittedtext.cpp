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

QSize neededSize(const FittedText& text, const QSize& room, int flags)
{
    return QFontMetrics(text.font).boundingRect(QRect(QPoint(0, 0), room), flags, text.text).size();
}

bool fits(const QSize& needed, const QSize& room)
{
    return needed.width() <= room.width() && needed.height() <= room.height();
}

} // namespace

FittedText fitText(const QString& text, const QFont& font, const QSize& room, int flags)
{
    FittedText fitted{text.left(mostCharacters), font};
    const QSize needed = neededSize(fitted, room, flags);
    if (fits(needed, room))
        return fitted;
    const auto fitsWith = [&](int pixelSize) {
        fitted.font.setPixelSize(pixelSize);
        return fits(neededSize(fitted, room, flags), room);
    };
    const int tooLarge = QFontInfo(font).pixelSize();
    if (tooLarge > smallestPixelSize) {
        // A text is about as wide as its letters are high, and every size that is tried is a font to load.
        int size = std::clamp(tooLarge * room.width() / std::max(1, needed.width()), smallestPixelSize, tooLarge - 1);
        while (size > smallestPixelSize && !fitsWith(size))
            --size;
        while (size + 1 < tooLarge && fitsWith(size + 1))
            ++size;
        if (fitsWith(size))
            return fitted;
    }
    fitted.text = QFontMetrics(fitted.font).elidedText(fitted.text, Qt::ElideRight, room.width());
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
