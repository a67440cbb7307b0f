#include "boxwatchdog.h"
#include "dfdetailedresults.h"
#include "fittedtext.h"
#include "guicomponentbase/guicomponentcommon.h"
#include "locatestatushandler.h"
#include "reportpictures.h"

#include "support/freshtree.h"
#include "support/hostiletexts.h"
#include "support/testmain.h"

#include <QAbstractItemView>
#include <QDesktopServices>
#include <QLabel>
#include <QScreen>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTextDocument>

using namespace VelmarGui;
using testsupport::BoxWatchdog;
using testsupport::FreshTree;
using testsupport::HostileText;
using testsupport::hostileTexts;

namespace {

const QString componentRoot = QStringLiteral("/GUI/DFLocateComponent/");
const QString handlerRoot = QStringLiteral("/GUI/DFLocateHandler/");
const QColor alarm(255, 0, 0);

bool shows(const QWidget& widget, const QColor& color)
{
    const QImage picture = const_cast<QWidget&>(widget).grab().toImage();
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixelColor(x, y) == color)
                return true;
        }
    }
    return false;
}

/// A status display with its values, and what its report looked like.
class Display
{
public:
    Display()
        : m_df(tree.add<values::StringValue>(handlerRoot + QStringLiteral("Values/Status/LocateStatus")))
        , m_handler(&m_window, &m_common, componentRoot, handlerRoot)
    {
        tree.add<values::StringValue>(QStringLiteral("/DRV/DRIVER/DFLOCATE/LocateHRIStatus"));
        tree.add<values::DoubleValue>(QStringLiteral("/GLOBAL/Frequency"));
        m_handler.SetUpValues();
    }

    /// Opens the report of a station with that name and hands the box to @p look.
    void open(const QString& name, const std::function<void(QWidget&)>& look)
    {
        m_df->SetValue(QStringLiteral("DFID3#N_%1#ST1").arg(name), nullptr);
        BoxWatchdog watchdog([&look] { look(*QApplication::activeModalWidget()); });
        QMetaObject::invokeMethod(&m_handler, "slot_open");
        seen = watchdog.seen;
    }

    FreshTree tree;
    std::vector<testsupport::SeenBox> seen;

private:
    values::StringValue* m_df;
    GuiComponentCommon m_common;
    QWidget m_window;
    LocateStatusHandler m_handler;
};

/// The result values of one station, each with that text.
class Results
{
public:
    explicit Results(const QString& text)
    {
        for (const char* const name :
             {"SelectedDF", "Azimuth", "Quality", "Level", "Errors", "DFLongitude", "DFLatitude"})
            tree.add<values::ValueSelection>(path(name))->AddItem(text, 0.0, 1);
        tree.add<values::StringValue>(path("Frequency"))->SetValue(QStringLiteral("433920000"), nullptr);
        tree.add<values::StringValue>(path("ResultTime"));
    }

    static QString path(const char* name)
    {
        return handlerRoot + QLatin1String("Values/Result/") + QLatin1String(name);
    }

    FreshTree tree;
};

/// Notes what somebody wants opened outside.
class Opener : public QObject
{
    Q_OBJECT
public:
    QList<QUrl> asked;
public slots:
    void open(const QUrl& url) { asked += url; }
};

} // namespace

class TestHostileTextsComponent : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void theReportReadsNoFile_data();
    void theReportReadsNoFile();
    void theReportShowsItsTick();
    void aLinkInTheReportOpensNothing();
    void theReportHasItsTextAsItIs_data();
    void theReportHasItsTextAsItIs();
    void theReportShowsTheBeginningOfALongName();
    void onlyTheComponentsOwnPicturesAreLoaded_data();
    void onlyTheComponentsOwnPicturesAreLoaded();

    void aLabelTakesNoTextForMarkup();
    void aHugeTextIsFittedByItsBeginning();
    void aListIsNoWiderThanTheScreen();

    void theDetailedResultsShowEveryText_data();
    void theDetailedResultsShowEveryText();
    void theDetailedResultsShowTheBeginningOfAHugeText();

private:
    QString file(const char* name) const { return m_folder.filePath(QLatin1String(name)); }

    QTemporaryDir m_folder;
};

void TestHostileTextsComponent::initTestCase()
{
    QImage picture(64, 64, QImage::Format_RGB32);
    picture.fill(alarm);
    QVERIFY(picture.save(file("alarm.png")));
    QFile style(file("alarm.css"));
    QVERIFY(style.open(QIODevice::WriteOnly));
    style.write("td, p, body { background-color: #ff0000; }");
}

void TestHostileTextsComponent::theReportReadsNoFile_data()
{
    QTest::addColumn<QString>("name");
    const QString picture = file("alarm.png");
    const QString url = QUrl::fromLocalFile(picture).toString();
    QTest::newRow("picture by address") << QStringLiteral("<img src=\"%1\">").arg(url);
    QTest::newRow("picture by path") << QStringLiteral("<img src='%1' width=64 height=64>").arg(picture);
    QTest::newRow("picture by relative path")
        << QStringLiteral("<img src=\"%1\">").arg(QDir::current().relativeFilePath(picture));
    QTest::newRow("ground of a table")
        << QStringLiteral("<table background=\"%1\" width=64 height=64><tr><td>North</table>").arg(url);
    QTest::newRow("ground by style") << QStringLiteral("<p style=\"background-image: url(%1)\">North</p>").arg(url);
    QTest::newRow("style sheet") << QStringLiteral("<link rel=\"stylesheet\" type=\"text/css\" href=\"%1\">North")
                                        .arg(QUrl::fromLocalFile(file("alarm.css")).toString());
}

void TestHostileTextsComponent::theReportReadsNoFile()
{
    QFETCH(QString, name);
    Display display;
    bool isRed = false;
    display.open(name, [&isRed](QWidget& box) { isRed = shows(box, alarm); });
    QCOMPARE(display.seen.size(), std::size_t(1));
    QVERIFY(!isRed);
}

void TestHostileTextsComponent::theReportShowsItsTick()
{
    const QImage tick(QStringLiteral(":/icons/OK"));
    QColor mark;
    for (int i = 0; i < tick.width() && !mark.isValid(); ++i) {
        const QColor color = tick.pixelColor(i, tick.height() / 2);
        if (color.alpha() == 255 && color.saturation() > 100)
            mark = color;
    }
    QVERIFY(mark.isValid());
    Display display;
    int near = 0;
    display.open(QStringLiteral("North"), [&near, mark](QWidget& box) {
        const QImage picture = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))->grab().toImage();
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                const QColor color = picture.pixelColor(x, y);
                near += color.saturation() > 100 && qAbs(color.hue() - mark.hue()) < 20 ? 1 : 0;
            }
        }
    });
    QVERIFY2(near > 20, qPrintable(QString::number(near)));
}

void TestHostileTextsComponent::aLinkInTheReportOpensNothing()
{
    Opener opener;
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &opener, "open");
    Display display;
    display.open(QStringLiteral("<a href=\"file:///etc/passwd\">North</a>"), [](QWidget& box) {
        emit box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))->linkActivated(QStringLiteral("file:///x"));
        QVERIFY(!box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))->openExternalLinks());
    });
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    QVERIFY(opener.asked.isEmpty());
}

void TestHostileTextsComponent::theReportHasItsTextAsItIs_data()
{
    QTest::addColumn<QString>("name");
    for (const HostileText& hostile : hostileTexts())
        QTest::newRow(hostile.name) << hostile.text;
    QTest::newRow("huge") << testsupport::hugeText();
}

/// A name with a place marker may be filled by what follows; all others stand in the report as they are.
void TestHostileTextsComponent::theReportHasItsTextAsItIs()
{
    QFETCH(QString, name);
    Display display;
    display.open(name, [](QWidget& box) { QVERIFY(box.grab().width() > 0); });
    QCOMPARE(display.seen.size(), std::size_t(1));
    QVERIFY(display.seen[0].text.startsWith(QLatin1String("<TABLE border")));
    if (!name.contains(QLatin1Char('%')))
        QVERIFY(display.seen[0].text.contains(QLatin1String("<TR><TD> ") + name + QLatin1String("<TD> ")));
}

void TestHostileTextsComponent::theReportShowsTheBeginningOfALongName()
{
    const QString name(5000, QLatin1Char('W'));
    Display display;
    QString shown;
    display.open(name, [&shown](QWidget& box) { shown = box.findChild<QTextDocument*>()->toPlainText(); });
    QVERIFY(display.seen.at(0).text.contains(name));
    QVERIFY(shown.contains(name.left(150)));
    QVERIFY(shown.contains(QChar(0x2026)));
    QVERIFY(!shown.contains(name.left(250)));
    QVERIFY(shown.contains(QLatin1String("DF Station")));
}

void TestHostileTextsComponent::onlyTheComponentsOwnPicturesAreLoaded_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("width");
    const int own = QPixmap(QStringLiteral(":/icons/OK")).width();
    QTest::newRow("the tick") << "qrc:/icons/OK" << own;
    QTest::newRow("no picture of that name") << "qrc:/icons/Other" << 1;
    QTest::newRow("a picture of another library") << "qrc:/qt-project.org/styles/commonstyle/images/file-16.png" << 1;
    QTest::newRow("a file") << QUrl::fromLocalFile(file("alarm.png")).toString() << 1;
    QTest::newRow("a path") << file("alarm.png") << 1;
    QTest::newRow("a path that looks like a resource") << "file:/icons/OK" << 1;
    QTest::newRow("an address") << "http://localhost/icons/OK" << 1;
    QTest::newRow("nothing") << "" << 1;
}

void TestHostileTextsComponent::onlyTheComponentsOwnPicturesAreLoaded()
{
    QFETCH(QString, name);
    QFETCH(int, width);
    QMessageBox box;
    ReportPictures::limit(box);
    const auto* const document = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))->findChild<QTextDocument*>();
    QVERIFY(document != nullptr);
    const QVariant picture = document->resource(QTextDocument::ImageResource, QUrl(name));
    QCOMPARE(picture.value<QPixmap>().width(), width);
    const QVariant style = document->resource(QTextDocument::StyleSheetResource, QUrl(name));
    QVERIFY(style.isValid());
    QVERIFY(style.toByteArray().isEmpty());
}

void TestHostileTextsComponent::aLabelTakesNoTextForMarkup()
{
    const FittedLabel label(QStringLiteral("<b>12.5</b>°"));
    QCOMPARE(label.text(), QStringLiteral("<b>12.5</b>°"));
    QVERIFY(label.sizeHint().width() > 0);
    QVERIFY(label.findChild<QTextDocument*>() == nullptr);
}

void TestHostileTextsComponent::aHugeTextIsFittedByItsBeginning()
{
    const FittedText fitted = fitText(testsupport::hugeText(), QFont(), QSize(100'000, 100), Qt::AlignLeft);
    QVERIFY(fitted.text.size() < 2000);
    QVERIFY(fitted.text.startsWith(QLatin1String("NNN")));
}

void TestHostileTextsComponent::aListIsNoWiderThanTheScreen()
{
    FreshTree tree;
    auto* const stations = tree.add<values::ValueSelection>(QStringLiteral("/Stations"));
    stations->AddItem(QString(20'000, QLatin1Char('N')), 0.0, 1);
    FittedComboBox combo;
    combo.SetValueSelection(stations);
    combo.show();
    combo.showPopup();
    QVERIFY(combo.view()->minimumWidth() > 0);
    QVERIFY(combo.view()->minimumWidth() <= combo.screen()->availableSize().width());
}

void TestHostileTextsComponent::theDetailedResultsShowEveryText_data()
{
    theReportHasItsTextAsItIs_data();
}

void TestHostileTextsComponent::theDetailedResultsShowEveryText()
{
    QFETCH(QString, name);
    Results results(name);
    DFDetailedResults window(Results::path(""));
    const auto* const table = window.findChild<QTableWidget*>();
    QCOMPARE(table->item(0, 0)->text(), name);
    QCOMPARE(table->item(0, 2)->text(), name + QStringLiteral("°"));
    QCOMPARE(table->item(0, 5)->text(), name);
    QVERIFY(window.grab().width() > 0);
}

void TestHostileTextsComponent::theDetailedResultsShowTheBeginningOfAHugeText()
{
    Results results(testsupport::hugeText());
    DFDetailedResults window(Results::path(""));
    const auto* const table = window.findChild<QTableWidget*>();
    const int letter = table->fontMetrics().horizontalAdvance(QLatin1Char('N'));
    QVERIFY(table->columnWidth(2) > table->columnWidth(1));
    QVERIFY(table->columnWidth(2) < 300 * letter);
}

DFL_TEST_MAIN(TestHostileTextsComponent)
#include "tst_hostiletexts_component.moc"
