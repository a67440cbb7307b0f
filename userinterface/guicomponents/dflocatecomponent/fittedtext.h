#pragma once

#include "valuewidgets/vccomboboxclassic.h"

#include <QFont>
#include <QLabel>
#include <QSize>
#include <QString>

namespace VelmarGui {

/// A text and the font in which it is drawn.
struct FittedText
{
    QString text;
    QFont font;
};

/// How @p text is drawn in @p room (pixels): in @p font when that fits, else in the largest smaller one that does, else
/// shortened with an ellipsis. A number is never cut off unseen: 9.9 is not 359.9. @p flags are alignment and wrapping
/// as for QPainter::drawText().
[[nodiscard]] FittedText fitText(const QString& text, const QFont& font, const QSize& room, int flags);

/// A label for a place of fixed width. Shows its text as it is (never as rich text), wrapped at words and fitted.
class FittedLabel : public QLabel
{
public:
    explicit FittedLabel(const QString& text = {}, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};

/// A combo box of fixed width: the current text is fitted, and the list is as wide as its texts, within the screen.
class FittedComboBox : public VCComboBoxClassic
{
public:
    using VCComboBoxClassic::VCComboBoxClassic;
    void showPopup() override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace VelmarGui
