#include "fittedtext.h"

#include "support/testmain.h"

#include <QAbstractItemView>
#include <QFontInfo>
#include <QFontMetrics>
#include <QRandomGenerator>

using VelmarGui::FittedComboBox;
using VelmarGui::FittedLabel;
using VelmarGui::FittedText;
using VelmarGui::fitText;

namespace {

constexpr int oneLine = Qt::AlignLeft;
constexpr int wrapped = Qt::AlignLeft | Qt::TextWordWrap;

QFont largeFont()
{
    QFont font;
    font.setPixelSize(16);
    return font;
}

int widthOf(const FittedText& fitted)
{
    return QFontMetrics(fitted.font).horizontalAdvance(fitted.text);
}

} // namespace

class TestFittedText : public QObject
{
    Q_OBJECT

private slots:
    void everySizeAboveTheOneTakenIsTooLarge();
    void aTextThatFitsIsLeftAlone();
    void aTextTooWideGetsTheLargestFontThatFits();
    void aTextTooHighGetsASmallerFont();
    void aTextIsWrappedBeforeItIsShortened();
    void aTextThatFitsInNoFontIsShortenedVisibly();
    void noRoomAtAllIsNoTrouble();
    void theTextsOfTheToolbarAreShownWhole_data();
    void theTextsOfTheToolbarAreShownWhole();
    void aLabelKeepsItsTextAndPaintsWithinItself();
    void aLabelShowsMarkupAsItIs();
    void aComboBoxShowsItsTextWhole();
    void aListIsAsWideAsItsTexts();
};

void TestFittedText::aTextThatFitsIsLeftAlone()
{
    const FittedText fitted = fitText("123", largeFont(), QSize(500, 50), oneLine);
    QCOMPARE(fitted.text, QStringLiteral("123"));
    QCOMPARE(fitted.font, largeFont());
}

void TestFittedText::aTextTooWideGetsTheLargestFontThatFits()
{
    QFont smaller = largeFont();
    smaller.setPixelSize(12);
    const QString text = QStringLiteral("359.9 degrees");
    const int room = QFontMetrics(smaller).boundingRect(QRect(0, 0, 500, 50), oneLine, text).width();
    const FittedText fitted = fitText(text, largeFont(), QSize(room, 50), oneLine);
    QCOMPARE(fitted.text, text);
    QCOMPARE(fitted.font.pixelSize(), 12);
}

void TestFittedText::aTextTooHighGetsASmallerFont()
{
    const FittedText fitted = fitText("123", largeFont(), QSize(500, QFontMetrics(largeFont()).height() - 4), oneLine);
    QCOMPARE(fitted.text, QStringLiteral("123"));
    QVERIFY(fitted.font.pixelSize() < 16);
}

void TestFittedText::aTextIsWrappedBeforeItIsShortened()
{
    const QString text = QStringLiteral("Scan range undefined");
    const QSize room(QFontMetrics(largeFont()).horizontalAdvance("undefined") + 2, 200);
    QCOMPARE(fitText(text, largeFont(), room, wrapped).font, largeFont());
    QVERIFY(fitText(text, largeFont(), room, oneLine).font != largeFont());
}

void TestFittedText::aTextThatFitsInNoFontIsShortenedVisibly()
{
    const QSize room(30, 20);
    const FittedText fitted = fitText("123456789012345", largeFont(), room, oneLine);
    QVERIFY(fitted.text.endsWith(QChar(0x2026)));
    QVERIFY(fitted.text.startsWith(QLatin1Char('1')));
    QVERIFY(widthOf(fitted) <= room.width());
    QCOMPARE(fitted.font.pixelSize(), 8);
}

void TestFittedText::noRoomAtAllIsNoTrouble()
{
    QCOMPARE(fitText("123", largeFont(), QSize(0, 0), oneLine).font.pixelSize(), 8);
    QCOMPARE(fitText(QString(), largeFont(), QSize(0, 0), oneLine).text, QString());
}

void TestFittedText::theTextsOfTheToolbarAreShownWhole_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("width");

    QTest::newRow("bearing") << QStringLiteral("359.9") + QChar(0x00B0) << 36;
    QTest::newRow("quality") << "100%" << 36;
    QTest::newRow("time") << "22:58:38" << 60;
    for (const char* error : {"No signal", "Timeout", "Not in time range", "Scan range undefined", "Not in scan range"})
        QTest::newRow(error) << error << 60;
}

void TestFittedText::theTextsOfTheToolbarAreShownWhole()
{
    QFETCH(QString, text);
    QFETCH(int, width);
    QCOMPARE(fitText(text, QApplication::font(), QSize(width, 30), wrapped).text, text);
}

void TestFittedText::aLabelKeepsItsTextAndPaintsWithinItself()
{
    FittedLabel label;
    label.setFont(largeFont());
    label.setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label.setFixedSize(36, 24);
    label.setText("359.9");
    QCOMPARE(label.text(), QStringLiteral("359.9"));
    const QImage shown = label.grab().toImage();
    // A text cut off at the left would reach the first column.
    for (int y = 0; y < shown.height(); ++y)
        QCOMPARE(shown.pixel(0, y), shown.pixel(0, 0));
    label.setText(QString());
    QVERIFY(label.grab().toImage() != shown);
}

void TestFittedText::aLabelShowsMarkupAsItIs()
{
    FittedLabel label;
    label.setFixedSize(120, 24);
    label.setText("<b>5</b>");
    const QImage markup = label.grab().toImage();
    label.setTextFormat(Qt::PlainText);
    QCOMPARE(label.grab().toImage(), markup);
}

void TestFittedText::aComboBoxShowsItsTextWhole()
{
    FittedComboBox fitted;
    QComboBox plain;
    plain.setEnabled(false); // as the other is, having no value
    const auto shown = [](QComboBox& combo, const char* text) {
        combo.clear();
        combo.addItem(text);
        combo.setFixedSize(80, 28);
        return combo.grab().toImage();
    };
    // What follows the place where a plain combo box cuts off makes a difference only when it is shown.
    QCOMPARE(shown(plain, "WWWWWWWWW.1"), shown(plain, "WWWWWWWWW.2"));
    QVERIFY(shown(fitted, "000.000 Hz") != shown(fitted, "000.000 kz"));
    QCOMPARE(shown(fitted, "Off"), shown(plain, "Off")); // short texts look as ever
}

void TestFittedText::aListIsAsWideAsItsTexts()
{
    FittedComboBox combo;
    combo.addItems({"Off", "a text far too wide for a combo box of this width"});
    combo.setFixedWidth(60);
    combo.show();
    QVERIFY(QTest::qWaitForWindowExposed(&combo));
    combo.showPopup();
    QVERIFY(combo.view()->viewport()->width() >= combo.view()->sizeHintForColumn(0));
    combo.hidePopup();
}

void TestFittedText::everySizeAboveTheOneTakenIsTooLarge()
{
    QRandomGenerator random(17);
    const QString alphabet = QStringLiteral("0123456789. kHzMnoDFiW");
    for (int turn = 0; turn < 400; ++turn) {
        QString text;
        for (int i = random.bounded(1, 24); i > 0; --i)
            text += alphabet.at(random.bounded(alphabet.size()));
        QFont font;
        font.setPixelSize(random.bounded(6, 30));
        const QSize room(random.bounded(1, 160), random.bounded(8, 40));
        const int flags = random.bounded(2) == 0 ? int(Qt::AlignLeft) : int(Qt::AlignLeft) | Qt::TextWordWrap;
        const auto fitsWith = [&](int size) {
            QFont tried = font;
            tried.setPixelSize(size);
            const QSize needed = QFontMetrics(tried).boundingRect(QRect(QPoint(), room), flags, text).size();
            return needed.width() <= room.width() && needed.height() <= room.height();
        };
        int expected = font.pixelSize();
        while (expected > 8 && !fitsWith(expected))
            --expected;
        const FittedText fitted = fitText(text, font, room, flags);
        QCOMPARE(fitted.font.pixelSize(), expected);
        const QString shortened = QFontMetrics(fitted.font).elidedText(text, Qt::ElideRight, room.width());
        QCOMPARE(fitted.text, fitsWith(expected) ? text : shortened);
    }
}

DFL_TEST_MAIN(TestFittedText)
#include "tst_fittedtext.moc"
