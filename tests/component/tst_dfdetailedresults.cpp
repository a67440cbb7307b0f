#include "dfdetailedresults.h"

#include "drivervalues.h"
#include "support/testmain.h"
#include "support/traces.h"

#include <QAction>
#include <QClipboard>
#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTimer>
#include <QTranslator>

#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

using testsupport::DriverValues;
using testsupport::RecordingObserver;
using testsupport::Traces;
using VelmarGui::DFDetailedResults;
using Rows = QList<QStringList>;
using Change = std::function<void(QTableWidget&)>;
Q_DECLARE_METATYPE(Change)

namespace {

const QString resultPrefix = QStringLiteral("/GUI/DFLocateHandler/Values/Result/");
const QString nothing = QStringLiteral("---");
constexpr const char* winterNoon = "2026-01-15 11:00:00"; // noon in the time zone of the tests
const QString winterNoonHere = QStringLiteral("2026-01-15 12:00:00");

enum Column
{
    Name,
    Frequency,
    Azimuth,
    Level,
    Quality,
    Longitude,
    Latitude,
    Error
};

/// A driver with everything that the window shows, and a result of it.
struct Driver : DriverValues
{
    explicit Driver(const QStringList& without = {})
        : DriverValues(without)
        , level(add<values::ValueSelection>("Values/Result/Level"))
        , averageLongitude(add<values::DoubleValue>("Values/Result/AveragePositionLongitude"))
        , averageLatitude(add<values::DoubleValue>("Values/Result/AveragePositionLatitude"))
        , fromHistory(add<values::BoolValue>("Values/Status/LocateHRIRunning"))
    {
        if (level != nullptr) {
            level->AddItem("37.5", 0.0, North);
            level->AddItem("-3", 0.0, South);
        }
        if (averageLongitude != nullptr)
            averageLongitude->SetValue(8.5, nullptr);
        if (averageLatitude != nullptr)
            averageLatitude->SetValue(-12.25, nullptr);
        if (resultTime != nullptr)
            resultTime->SetValue(winterNoon, nullptr);
    }

    /// A new result with the same contents as before.
    void announce() const { resultTime->HasChanged(ChangeContent, nullptr); }

    values::ValueSelection* level;
    values::DoubleValue* averageLongitude;
    values::DoubleValue* averageLatitude;
    values::BoolValue* fromHistory;
};

/// Puts @p text into the item of the northern station.
void setNorth(values::ValueSelection* selection, const QString& text)
{
    QVERIFY(selection->AddItem(text, 0.0, DriverValues::North));
}

/// The window, and what an operator reads in it.
struct Window : DFDetailedResults
{
    explicit Window(const QString& prefix = resultPrefix)
        : DFDetailedResults(prefix)
    {
    }

    [[nodiscard]] QString time() const { return m_pDateTimeLabel->text(); }
    [[nodiscard]] QString location() const { return m_pCoordinateLabel->text(); }
    [[nodiscard]] QString locateType() const { return m_pLocateTypeLabel->text(); }
    [[nodiscard]] QString cell(int row, int column) const
    {
        const QTableWidgetItem* const item = m_pTable->item(row, column);
        return item != nullptr ? item->text() : QString();
    }
    /// Where the texts of all cells stand in memory: a text that is written stands elsewhere.
    [[nodiscard]] std::vector<const QChar*> characters() const
    {
        std::vector<const QChar*> places;
        for (int row = 0; row < m_pTable->rowCount(); ++row) {
            for (int column = 0; column < m_pTable->columnCount(); ++column)
                places.push_back(cell(row, column).constData());
        }
        return places;
    }
    [[nodiscard]] Rows rows() const
    {
        Rows rows;
        for (int row = 0; row < m_pTable->rowCount(); ++row) {
            QStringList texts;
            for (int column = 0; column < m_pTable->columnCount(); ++column)
                texts << cell(row, column);
            rows << texts;
        }
        return rows;
    }
};

const Rows bothStations{{"North", "433.92 MHz", "12.5°", "37.5 dBµV", "80%", "11°36.000'", "48°6.000'", "---"},
                        {"South", "433.92 MHz", "---", "-3 dBµV", "---", "11°42.000'", "48°12.000'", "Timeout"}};

/// Hands every text to a function that may change it or throw.
class CheckingTranslator : public QTranslator
{
public:
    using Translate = std::function<QString(QString context, QString text)>;
    explicit CheckingTranslator(Translate translate)
        : m_translate(std::move(translate))
    {
        QCoreApplication::installTranslator(this);
    }
    ~CheckingTranslator() override { QCoreApplication::removeTranslator(this); }
    CheckingTranslator(const CheckingTranslator&) = delete;
    CheckingTranslator& operator=(const CheckingTranslator&) = delete;

    [[nodiscard]] bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* sourceText, const char*, int) const override
    {
        return m_translate(QString::fromUtf8(context), QString::fromUtf8(sourceText));
    }

private:
    Translate m_translate;
};

/// The application's font, larger for the life of this object.
class LargeFont
{
public:
    LargeFont()
    {
        QFont large = m_before;
        large.setPointSize(24);
        QApplication::setFont(large);
    }
    ~LargeFont() { QApplication::setFont(m_before); }
    LargeFont(const LargeFont&) = delete;
    LargeFont& operator=(const LargeFont&) = delete;

private:
    QFont m_before = QApplication::font();
};

/// What the window shows.
struct Shown
{
    QString time;
    QString location;
    QString locateType;
    Rows rows;
};

bool operator==(const Shown& a, const Shown& b)
{
    return a.time == b.time && a.location == b.location && a.locateType == b.locateType && a.rows == b.rows;
}

Shown shownBy(const Window& window)
{
    return {window.time(), window.location(), window.locateType(), window.rows()};
}

/// What it shows of the driver's result.
Shown wholeResult()
{
    return {winterNoonHere, "8°30.000' -12°15.000'", "Online", bothStations};
}

void clearColumns(Rows& rows, const QList<int>& columns)
{
    for (QStringList& row : rows) {
        for (const int column : columns)
            row[column] = nothing;
    }
}

/// The same without the value of that name below the driver's root.
Shown wholeResultWithout(const QString& name)
{
    Shown shown = wholeResult();
    const QMap<QString, QList<int>> columnsOf{
        {"Azimuth", {Azimuth}},    {"Quality", {Azimuth, Quality}},   {"Level", {Level}},
        {"Errors", {Error}},       {"Frequency", {Frequency, Level}}, {"DFLongitude", {Longitude}},
        {"DFLatitude", {Latitude}}};
    const QString lastName = name.mid(name.lastIndexOf('/') + 1);
    clearColumns(shown.rows, columnsOf.value(lastName));
    if (lastName == "SelectedDF")
        shown.rows.clear();
    if (lastName == "ResultTime")
        shown.time = shown.locateType = nothing;
    if (lastName == "LocateHRIRunning")
        shown.locateType = nothing;
    if (lastName.startsWith("AveragePosition"))
        shown.location = nothing;
    if (lastName == "QualityThreshold") {
        // Every quality is good enough.
        shown.rows[1][Azimuth] = "271.0°";
        shown.rows[1][Quality] = "40%";
    }
    return shown;
}

void addValueNames()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"Values/Result/SelectedDF", "Values/Result/Azimuth", "Values/Result/Quality",
                             "Values/Result/Level", "Values/Result/Errors", "Values/Result/Frequency",
                             "Values/Result/ResultTime", "Values/Result/AveragePositionLongitude",
                             "Values/Result/AveragePositionLatitude", "Values/Result/QualityThreshold",
                             "Values/Result/DFLongitude", "Values/Result/DFLatitude", "Values/Status/LocateHRIRunning"})
        QTest::newRow(name) << name;
}

} // namespace

class TestDFDetailedResults : public QObject
{
    Q_OBJECT

private slots:
    // The form
    void itIsAWindowOfItsOwnWithoutSignalsAndSlots();
    void theFormHasItsLayouts();
    void theHeaderLineStandsInItsOrder_data();
    void theHeaderLineStandsInItsOrder();
    void theTableHasItsColumns();
    void theTableCannotBeEdited();
    void theTableIsNeverSorted();
    void theTableIsWalkedByKeys();
    void theTextsAreTranslatedInTheirContexts();
    void theWindowDoesNotKeepTheApplicationRunning();

    // Values
    void aWholeResultIsShown();
    void withoutADriverEverythingShowsNothing();
    void aMissingValueLeavesItsPlaceEmpty_data();
    void aMissingValueLeavesItsPlaceEmpty();
    void aValueOfAnotherKindCountsAsMissing_data();
    void aValueOfAnotherKindCountsAsMissing();
    void sevenValuesAreBoundAndTwoOfThemObserved();
    void theSevenBoundValuesAreNotLookedForAgain();
    void theOtherValuesAreLookedUpAtEachFill();
    void itWritesNoValueAndReportsNothing();

    // Header line
    void theTimeIsLocal_data();
    void theTimeIsLocal();
    void theTimeDecidesOnTheLocateType();
    void theStatusFolderReplacesEveryResultInThePrefix();
    void aLocationThatIsNotValidKeepsTheText();
    void anEmptyTimeLeavesTheLocationAlone();
    void aLocationOfNoCoordinateShowsNothing();

    // Rows
    void azimuthAndQualityNeedTheThreshold_data();
    void azimuthAndQualityNeedTheThreshold();
    void frequencyAndLevelNeedAFrequency_data();
    void frequencyAndLevelNeedAFrequency();
    void theLevelIsShownHoweverBadTheQuality();
    void aPositionIsACoordinateOrStandsAsItIs();
    void anErrorCodeIsShownAsItsText_data();
    void anErrorCodeIsShownAsItsText();
    void aStationWithoutItemsShowsNothingBesideItsName();
    void emptyItemsShowTheirUnitOnly();
    void itemsOfUnknownStationsAreIgnored();
    void rowsStayInTheOrderOfTheStations();
    void hostileTextsAreShownAsTheyAre();

    // Refreshing
    void aResultTimeFillsTheTable();
    void otherNotificationsAreIgnored();
    void aNullNotificationMatchesNoUnboundValue();
    void aResultTimeLeavesTheRowCountAlone();
    void refreshTakesOverTheRowCount();
    void aThousandStationsAreShown();
    void onlyCellsWithAnotherTextAreWritten();
    void theTableIsToldOnceOfAllThatChanged();
    void aTableThatIsShownPaintsWhatChanged();
    void aWindowThatSawOtherResultsShowsTheSameAsANewOne();
    void cellsAreKeptAndTheirTextReplaced();
    void whatOthersDoToTheTableIsMadeGood_data();
    void whatOthersDoToTheTableIsMadeGood();
    void whatOthersDoOnBeingToldIsMadeGood();
    void aTableThatShrinksWhileItIsFilledIsFilledAsFarAsItGoes();
    void withoutATableRefreshDoesNothing();
    void anExceptionIsTracedAndGoesNoFurther();

    // Looks
    void theNameColumnIsEightyPixelsWide();
    void everyTextIsSeenWhole_data();
    void everyTextIsSeenWhole();
    void aLongerTextWidensItsColumn();

    // Copying
    void selectedCellsAreCopiedAsText();
    void withoutASelectionTheClipboardStays();
    void copyingIsInTheTablesMenu();

    // Lives and deaths
    void eachValueMayGo_data();
    void eachValueMayGo();
    void theStationsMayGoWhileAResultIsTold();
    void theTreeMayGoBeforeTheWindow();
    void theWindowMayGoWhileAResultIsTold();
    void twoWindowsShowTheSameResult();
};

// ---- The form ----

void TestDFDetailedResults::itIsAWindowOfItsOwnWithoutSignalsAndSlots()
{
    const testsupport::FreshTree tree;
    const DFDetailedResults window(resultPrefix);
    const QMetaObject& meta = DFDetailedResults::staticMetaObject;
    QCOMPARE(meta.className(), "VelmarGui::DFDetailedResults");
    QCOMPARE(meta.methodCount(), meta.methodOffset());
    QVERIFY(window.parent() == nullptr);
    QVERIFY(window.isWindow());
    QVERIFY(!window.isVisible());
    QCOMPARE(window.objectName(), QStringLiteral("DetailedResults"));
    QCOMPARE(window.windowTitle(), QStringLiteral("DF/Locate detailed results"));
    QCOMPARE(window.size(), QSize(580, 160));
}

void TestDFDetailedResults::theFormHasItsLayouts()
{
    const testsupport::FreshTree tree;
    const Window window;
    const auto* const outer = qobject_cast<QGridLayout*>(window.layout());
    QVERIFY(outer != nullptr);
    QCOMPARE(outer->objectName(), QStringLiteral("gridLayout_2"));
    QCOMPARE(outer->rowCount(), 2);
    QCOMPARE(outer->columnCount(), 1);
    QCOMPARE(outer->rowStretch(0), 0);
    QCOMPARE(outer->rowStretch(1), 10);
    const auto* const inner = qobject_cast<QGridLayout*>(outer->itemAtPosition(0, 0)->layout());
    QVERIFY(inner != nullptr);
    QCOMPARE(inner->objectName(), QStringLiteral("gridLayout"));
    QCOMPARE(inner->rowCount(), 1);
    QCOMPARE(inner->columnCount(), 6);
    QCOMPARE(outer->itemAtPosition(1, 0)->widget(), window.m_pTable);
    QCOMPARE(window.m_pTable->objectName(), QStringLiteral("m_pTable"));
}

void TestDFDetailedResults::theHeaderLineStandsInItsOrder_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");

    QTest::newRow("1") << 0 << "label_5"
                       << "Latest results from:";
    QTest::newRow("2") << 1 << "m_pDateTimeLabel"
                       << "---";
    QTest::newRow("3") << 2 << "label_6"
                       << "Location:";
    QTest::newRow("4") << 3 << "m_pCoordinateLabel"
                       << "---";
    QTest::newRow("5") << 4 << "label_7"
                       << "Locate Type:";
    QTest::newRow("6") << 5 << "m_pLocateTypeLabel"
                       << "---";
}

void TestDFDetailedResults::theHeaderLineStandsInItsOrder()
{
    QFETCH(int, column);
    QFETCH(QString, name);
    QFETCH(QString, text);
    const testsupport::FreshTree tree;
    const Window window;
    const auto* const line = window.findChild<QGridLayout*>("gridLayout");
    const auto* const label = qobject_cast<QLabel*>(line->itemAtPosition(0, column)->widget());
    QVERIFY(label != nullptr);
    QCOMPARE(label->objectName(), name);
    QCOMPARE(label->text(), text);
    QCOMPARE(label->alignment(), Qt::AlignLeft | Qt::AlignVCenter);
}

void TestDFDetailedResults::theTableHasItsColumns()
{
    const testsupport::FreshTree tree;
    const Window window;
    QStringList headers;
    for (int column = 0; column < window.m_pTable->columnCount(); ++column)
        headers << window.m_pTable->horizontalHeaderItem(column)->text();
    QCOMPARE(headers,
             (QStringList{"DF name", "Frequency", "Azimuth", "Level", "Quality", "Longitude", "Latitude", "DF Error"}));
}

void TestDFDetailedResults::theTableCannotBeEdited()
{
    const Driver driver;
    Window window;
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    window.m_pTable->setCurrentCell(0, Azimuth);
    QTest::keyClick(window.m_pTable, Qt::Key_F2);
    QTest::keyClicks(window.m_pTable, "x");
    QTest::mouseDClick(window.m_pTable->viewport(), Qt::LeftButton, {},
                       window.m_pTable->visualItemRect(window.m_pTable->item(0, Azimuth)).center());
    QVERIFY(window.m_pTable->findChildren<QLineEdit*>().isEmpty());
    QCOMPARE(window.rows(), bothStations);
}

void TestDFDetailedResults::theTableIsNeverSorted()
{
    const Driver driver;
    Window window;
    window.show();
    QVERIFY(!window.m_pTable->isSortingEnabled());
    const QHeaderView* const header = window.m_pTable->horizontalHeader();
    for (int click = 0; click < 2; ++click)
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, {header->sectionPosition(Azimuth) + 10, 5});
    QCOMPARE(window.rows(), bothStations);
}

void TestDFDetailedResults::theTableIsWalkedByKeys()
{
    const Driver driver;
    Window window;
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    window.m_pTable->setFocus();
    window.m_pTable->setCurrentCell(0, Name);
    QTest::keyClick(window.m_pTable, Qt::Key_Down);
    QTest::keyClick(window.m_pTable, Qt::Key_Right);
    QCOMPARE(window.m_pTable->currentRow(), 1);
    QCOMPARE(window.m_pTable->currentColumn(), int(Frequency));
}

void TestDFDetailedResults::theTextsAreTranslatedInTheirContexts()
{
    const CheckingTranslator translator(
        [](const QString& context, const QString& text) { return QStringLiteral("%1: %2").arg(context, text); });
    const Driver driver;
    const Window window;
    QCOMPARE(window.windowTitle(), QStringLiteral("DFLocateDetailedResultsWidget: DF/Locate detailed results"));
    QCOMPARE(window.label_5->text(), QStringLiteral("DFLocateDetailedResultsWidget: Latest results from:"));
    QCOMPARE(window.m_pTable->horizontalHeaderItem(Error)->text(),
             QStringLiteral("DFLocateDetailedResultsWidget: DF Error"));
    QCOMPARE(window.locateType(), QStringLiteral("VelmarGui::DFDetailedResults: Online"));
    QCOMPARE(window.cell(1, Error), QStringLiteral("QObject: Timeout"));
    driver.fromHistory->SetValue(true, nullptr);
    driver.announce();
    QCOMPARE(window.locateType(), QStringLiteral("VelmarGui::DFDetailedResults: History"));
}

void TestDFDetailedResults::theWindowDoesNotKeepTheApplicationRunning()
{
    const testsupport::FreshTree tree;
    QWidget mainWindow;
    mainWindow.show();
    Window window;
    window.show();
    constexpr int stillRunning = 1;
    QTimer::singleShot(10000, &window, [] { QCoreApplication::exit(stillRunning); });
    QTimer::singleShot(0, &mainWindow, &QWidget::close);
    QCOMPARE(QCoreApplication::exec(), 0);
}

// ---- Values ----

void TestDFDetailedResults::aWholeResultIsShown()
{
    const Driver driver;
    const Window window;
    QCOMPARE(window.time(), winterNoonHere);
    QCOMPARE(window.location(), QStringLiteral("8°30.000' -12°15.000'"));
    QCOMPARE(window.locateType(), QStringLiteral("Online"));
    QCOMPARE(window.rows(), bothStations);
}

void TestDFDetailedResults::withoutADriverEverythingShowsNothing()
{
    const testsupport::FreshTree tree;
    Window window;
    QVERIFY(shownBy(window) == (Shown{nothing, nothing, nothing, {}}));
    window.Refresh();
    QVERIFY(shownBy(window) == (Shown{nothing, nothing, nothing, {}}));
}

void TestDFDetailedResults::aMissingValueLeavesItsPlaceEmpty_data()
{
    addValueNames();
}

void TestDFDetailedResults::aMissingValueLeavesItsPlaceEmpty()
{
    QFETCH(QString, name);
    const Driver driver({name});
    const Window window;
    const Shown expected = wholeResultWithout(name);
    QCOMPARE(window.time(), expected.time);
    QCOMPARE(window.location(), expected.location);
    QCOMPARE(window.locateType(), expected.locateType);
    QCOMPARE(window.rows(), expected.rows);
}

void TestDFDetailedResults::aValueOfAnotherKindCountsAsMissing_data()
{
    addValueNames();
}

void TestDFDetailedResults::aValueOfAnotherKindCountsAsMissing()
{
    QFETCH(QString, name);
    const Driver driver({name});
    const QString path = QStringLiteral("/GUI/DFLocateHandler/") + name;
    if (name.contains("Average"))
        driver.tree.add<values::IntValue>(path)->SetValue(7, nullptr);
    else
        driver.tree.add<values::DoubleValue>(path)->SetValue(60.0, nullptr);
    const Window window;
    const Shown expected = wholeResultWithout(name);
    QCOMPARE(window.time(), expected.time);
    QCOMPARE(window.location(), expected.location);
    QCOMPARE(window.locateType(), expected.locateType);
    QCOMPARE(window.rows(), expected.rows);
}

void TestDFDetailedResults::sevenValuesAreBoundAndTwoOfThemObserved()
{
    const Driver driver;
    const auto observers = [] {
        QMap<QString, std::size_t> counts;
        for (const values::ValueBase* value : values::Tree::Instance()->ValuesBelow("/GUI/DFLocateHandler/Values"))
            counts[value->GetName()] = value->GetObserverCount();
        return counts;
    };
    const QMap<QString, std::size_t> before = observers();
    {
        const Window window;
        QMap<QString, std::size_t> expected = before;
        for (const char* name : {"SelectedDF", "Azimuth", "Quality", "Level", "Errors"})
            expected[name] += 1;
        for (const char* name : {"Frequency", "ResultTime"})
            expected[name] += 2;
        QCOMPARE(observers(), expected);
        QVERIFY(driver.frequency->IsObservedBy(&window));
        QVERIFY(driver.resultTime->IsObservedBy(&window));
    }
    QCOMPARE(observers(), before);
}

void TestDFDetailedResults::theSevenBoundValuesAreNotLookedForAgain()
{
    const testsupport::FreshTree tree;
    Window window;
    const Driver driver;
    window.Refresh();
    QCOMPARE(window.rows(), Rows{});
    QCOMPARE(window.time(), nothing);
}

void TestDFDetailedResults::theOtherValuesAreLookedUpAtEachFill()
{
    const Driver driver({"Values/Result/AveragePositionLongitude", "Values/Result/AveragePositionLatitude",
                         "Values/Result/QualityThreshold", "Values/Result/DFLongitude", "Values/Result/DFLatitude",
                         "Values/Status/LocateHRIRunning"});
    const Window window;
    QCOMPARE(window.location(), nothing);
    driver.tree.add<values::DoubleValue>(resultPrefix + "AveragePositionLongitude");
    driver.tree.add<values::DoubleValue>(resultPrefix + "AveragePositionLatitude");
    driver.tree.add<values::IntValue>(resultPrefix + "QualityThreshold")->SetValue(81, nullptr);
    driver.tree.add<values::ValueSelection>(resultPrefix + "DFLongitude")->AddItem("1", 0.0, DriverValues::North);
    driver.tree.add<values::ValueSelection>(resultPrefix + "DFLatitude")->AddItem("2", 0.0, DriverValues::North);
    driver.tree.add<values::BoolValue>("/GUI/DFLocateHandler/Values/Status/LocateHRIRunning")->SetValue(true, nullptr);
    driver.announce();
    QCOMPARE(window.location(), QStringLiteral("0°0.000' 0°0.000'"));
    QCOMPARE(window.locateType(), QStringLiteral("History"));
    QCOMPARE(window.cell(0, Azimuth), nothing);
    QCOMPARE(window.cell(0, Longitude), QStringLiteral("1°0.000'"));
    QCOMPARE(window.cell(0, Latitude), QStringLiteral("2°0.000'"));
    QCOMPARE(window.cell(1, Latitude), nothing);
}

void TestDFDetailedResults::itWritesNoValueAndReportsNothing()
{
    RecordingObserver observer;
    const Driver driver({"Values/Result/Level", "Values/Result/QualityThreshold"});
    const std::size_t count = values::Tree::Instance()->ValuesBelow(QString()).size();
    for (values::ValueBase* value : values::Tree::Instance()->ValuesBelow(QString()))
        value->AddObserver(&observer);
    const Traces traces;
    {
        Window window;
        window.Refresh();
    }
    QCOMPARE(values::Tree::Instance()->ValuesBelow(QString()).size(), count);
    QVERIFY(observer.codes.empty());
    QVERIFY(traces.records.empty());
}

// ---- Header line ----

void TestDFDetailedResults::theTimeIsLocal_data()
{
    QTest::addColumn<QString>("resultTime");
    QTest::addColumn<QString>("shown");

    QTest::newRow("winter") << "2026-01-15 11:00:00"
                            << "2026-01-15 12:00:00";
    QTest::newRow("summer") << "2026-07-15 10:00:00"
                            << "2026-07-15 12:00:00";
    QTest::newRow("next day") << "2026-01-15 23:30:00"
                              << "2026-01-16 00:30:00";
    QTest::newRow("with T and Z") << "2026-01-15T11:00:00Z"
                                  << "2026-01-15 12:00:00";
    QTest::newRow("with a zone") << "2026-01-15 12:00:00+01:00"
                                 << "2026-01-15 12:00:00";
    QTest::newRow("no clock") << "1970-01-01 00:00:00"
                              << "1970-01-01 01:00:00";
    QTest::newRow("unreadable") << "yesterday"
                                << "";
    QTest::newRow("empty") << ""
                           << "---";
}

void TestDFDetailedResults::theTimeIsLocal()
{
    QFETCH(QString, resultTime);
    QFETCH(QString, shown);
    const Driver driver;
    const Window window;
    driver.resultTime->SetValue("2001-01-01 00:00:00", nullptr);
    driver.resultTime->SetValue(resultTime, nullptr);
    QCOMPARE(window.time(), shown);
    QCOMPARE(window.locateType(), resultTime.isEmpty() ? nothing : QStringLiteral("Online"));
}

void TestDFDetailedResults::theTimeDecidesOnTheLocateType()
{
    const Driver driver;
    const Window window;
    driver.fromHistory->SetValue(true, nullptr);
    QCOMPARE(window.locateType(), QStringLiteral("Online")); // not observed
    driver.announce();
    QCOMPARE(window.locateType(), QStringLiteral("History"));
    driver.resultTime->SetValue(QString(), nullptr);
    QCOMPARE(window.locateType(), nothing);
    driver.resultTime->SetValue(winterNoon, nullptr);
    QCOMPARE(window.locateType(), QStringLiteral("History"));
    driver.fromHistory->SetValue(false, nullptr);
    driver.announce();
    QCOMPARE(window.locateType(), QStringLiteral("Online"));
}

void TestDFDetailedResults::theStatusFolderReplacesEveryResultInThePrefix()
{
    const testsupport::FreshTree tree;
    const QString prefix = QStringLiteral("/GUI/ResultsOfresult/Values/Result/");
    tree.add<values::StringValue>(prefix + "ResultTime")->SetValue(winterNoon, nullptr);
    tree.add<values::BoolValue>("/GUI/StatussOfresult/Values/Status/LocateHRIRunning")->SetValue(true, nullptr);
    tree.add<values::BoolValue>("/GUI/ResultsOfresult/Values/Status/LocateHRIRunning");
    const Window window(prefix);
    QCOMPARE(window.time(), winterNoonHere);
    QCOMPARE(window.locateType(), QStringLiteral("History"));
}

void TestDFDetailedResults::aLocationThatIsNotValidKeepsTheText()
{
    const Driver driver;
    const Window window;
    const QString before = window.location();
    for (values::DoubleValue* invalid : {driver.averageLongitude, driver.averageLatitude}) {
        invalid->SetState(values::StateUnused, nullptr);
        driver.averageLongitude->SetValue(20.0, nullptr);
        driver.averageLatitude->SetValue(30.0, nullptr);
        driver.announce();
        QCOMPARE(window.location(), before);
        invalid->SetState(values::StateOrdinary, nullptr);
    }
    QCOMPARE(window.location(), before); // not observed
    driver.announce();
    QCOMPARE(window.location(), QStringLiteral("20°0.000' 30°0.000'"));
}

void TestDFDetailedResults::anEmptyTimeLeavesTheLocationAlone()
{
    const Driver driver;
    const Window window;
    driver.resultTime->SetValue(QString(), nullptr);
    QCOMPARE(window.time(), nothing);
    QCOMPARE(window.locateType(), nothing);
    QCOMPARE(window.location(), QStringLiteral("8°30.000' -12°15.000'"));
}

void TestDFDetailedResults::aLocationOfNoCoordinateShowsNothing()
{
    const Driver driver;
    driver.averageLongitude->SetValue(1e300, nullptr);
    const Window window;
    QCOMPARE(window.location(), QStringLiteral("--- -12°15.000'"));
}

// ---- Rows ----

void TestDFDetailedResults::azimuthAndQualityNeedTheThreshold_data()
{
    QTest::addColumn<QString>("qualityText");
    QTest::addColumn<int>("threshold");
    QTest::addColumn<bool>("shown");

    QTest::newRow("above") << "51" << 50 << true;
    QTest::newRow("equal") << "50" << 50 << true;
    QTest::newRow("below") << "49" << 50 << false;
    QTest::newRow("blanks around") << " 50 " << 50 << true;
    QTest::newRow("base 10") << "010" << 9 << true;
    QTest::newRow("no base 16") << "0x50" << 50 << false;
    QTest::newRow("a fraction cannot be read") << "80.5" << 50 << false;
    QTest::newRow("unreadable counts as 0") << "good" << 1 << false;
    QTest::newRow("unreadable counts as 0, which suffices") << "good" << 0 << true;
    QTest::newRow("beyond every integer counts as 0") << "99999999999" << 1 << false;
    QTest::newRow("negative") << "-1" << 0 << false;
    QTest::newRow("negative threshold") << "-1" << -1 << true;
}

void TestDFDetailedResults::azimuthAndQualityNeedTheThreshold()
{
    QFETCH(QString, qualityText);
    QFETCH(int, threshold);
    QFETCH(bool, shown);
    const Driver driver;
    driver.qualityThreshold->SetValue(threshold, nullptr);
    setNorth(driver.quality, qualityText);
    const Window window;
    QCOMPARE(window.cell(0, Azimuth), shown ? QStringLiteral("12.5°") : nothing);
    QCOMPARE(window.cell(0, Quality), shown ? qualityText + QLatin1Char('%') : nothing);
    QCOMPARE(window.cell(0, Level), QStringLiteral("37.5 dBµV"));
}

void TestDFDetailedResults::frequencyAndLevelNeedAFrequency_data()
{
    QTest::addColumn<QString>("frequencyText");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<bool>("hasLevel");

    QTest::newRow("MHz") << "145000000"
                         << "145 MHz" << true;
    QTest::newRow("exponent") << "1.45e8"
                              << "145 MHz" << true;
    QTest::newRow("decimal comma") << "1000,5"
                                   << "1 kHz" << true;
    QTest::newRow("zero") << "0" << nothing << false;
    QTest::newRow("zero with a point") << "0.0" << nothing << false;
    QTest::newRow("empty") << "" << nothing << false;
    QTest::newRow("unreadable") << "145 MHz" << nothing << false;
    QTest::newRow("infinite") << "inf" << nothing << false;
    QTest::newRow("not a number") << "nan" << nothing << false;
    QTest::newRow("less than a Hz") << "0.5"
                                    << "0 Hz" << true;
    QTest::newRow("negative") << "-145000000"
                              << "0 Hz" << true;
}

void TestDFDetailedResults::frequencyAndLevelNeedAFrequency()
{
    QFETCH(QString, frequencyText);
    QFETCH(QString, shown);
    QFETCH(bool, hasLevel);
    const Driver driver;
    driver.frequency->SetValue(frequencyText, nullptr);
    const Window window;
    for (int row = 0; row < 2; ++row)
        QCOMPARE(window.cell(row, Frequency), shown);
    QCOMPARE(window.cell(0, Level), hasLevel ? QStringLiteral("37.5 dBµV") : nothing);
    QCOMPARE(window.cell(1, Level), hasLevel ? QStringLiteral("-3 dBµV") : nothing);
    QCOMPARE(window.cell(0, Azimuth), QStringLiteral("12.5°"));
}

void TestDFDetailedResults::theLevelIsShownHoweverBadTheQuality()
{
    const Driver driver;
    driver.qualityThreshold->SetValue(100, nullptr);
    const Window window;
    QCOMPARE(window.cell(0, Quality), nothing);
    QCOMPARE(window.cell(0, Level), QStringLiteral("37.5 dBµV"));
}

void TestDFDetailedResults::aPositionIsACoordinateOrStandsAsItIs()
{
    const Driver driver;
    setNorth(driver.longitude, "190");
    setNorth(driver.latitude, "mobile");
    driver.longitude->AddItem("370", 0.0, DriverValues::South);
    driver.latitude->AddItem("-0,5", 0.0, DriverValues::South);
    const Window window;
    QCOMPARE(window.cell(0, Longitude), QStringLiteral("-170°0.000'"));
    QCOMPARE(window.cell(0, Latitude), QStringLiteral("mobile"));
    QCOMPARE(window.cell(1, Longitude), nothing);
    QCOMPARE(window.cell(1, Latitude), QStringLiteral("0°30.000'"));
}

void TestDFDetailedResults::anErrorCodeIsShownAsItsText_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("shown");

    QTest::newRow("none") << ""
                          << "---";
    QTest::newRow("0") << "0"
                       << "---";
    QTest::newRow("-1") << "-1"
                        << "Not in scan range";
    QTest::newRow("-2") << "-2"
                        << "Scan range undefined";
    QTest::newRow("-3") << "-3"
                        << "Not in time range";
    QTest::newRow("-14") << "-14"
                         << "Timeout";
    QTest::newRow("-17") << "-17"
                         << "No signal";
    QTest::newRow("any other") << "5"
                               << "5";
    QTest::newRow("any other negative one") << "-4"
                                            << "-4";
    QTest::newRow("base 10") << "010"
                             << "10";
    QTest::newRow("unreadable counts as 0") << "no answer"
                                            << "---";
    QTest::newRow("a fraction cannot be read") << "-14.0"
                                               << "---";
}

void TestDFDetailedResults::anErrorCodeIsShownAsItsText()
{
    QFETCH(QString, code);
    QFETCH(QString, shown);
    const Driver driver;
    setNorth(driver.errors, code);
    const Window window;
    QCOMPARE(window.cell(0, Error), shown);
}

void TestDFDetailedResults::aStationWithoutItemsShowsNothingBesideItsName()
{
    const Driver driver;
    driver.qualityThreshold->SetValue(0, nullptr);
    driver.selectedDf->AddItem("West", 0.0, -5);
    const Window window;
    QCOMPARE(window.rows().at(2),
             (QStringList{"West", "433.92 MHz", nothing, nothing, nothing, nothing, nothing, nothing}));
}

void TestDFDetailedResults::emptyItemsShowTheirUnitOnly()
{
    const Driver driver;
    driver.qualityThreshold->SetValue(0, nullptr);
    for (values::ValueSelection* selection :
         {driver.selectedDf, driver.azimuth, driver.quality, driver.level, driver.longitude, driver.latitude})
        setNorth(selection, QString());
    const Window window;
    QCOMPARE(window.rows().at(0), (QStringList{"", "433.92 MHz", "°", " dBµV", "%", "", "", nothing}));
}

void TestDFDetailedResults::itemsOfUnknownStationsAreIgnored()
{
    const Driver driver;
    for (values::ValueSelection* selection : {driver.azimuth, driver.quality, driver.level, driver.errors})
        selection->AddItem("99", 0.0, 99);
    Window window;
    QCOMPARE(window.rows(), bothStations);
    window.Refresh();
    QCOMPARE(window.rows(), bothStations);
}

void TestDFDetailedResults::rowsStayInTheOrderOfTheStations()
{
    const Driver driver;
    driver.selectedDf->DeleteItem(DriverValues::North);
    driver.selectedDf->AddItem("North", 0.0, DriverValues::North);
    driver.selectedDf->Select(DriverValues::North);
    const Window window;
    QCOMPARE(window.rows(), (Rows{bothStations[1], bothStations[0]}));
}

void TestDFDetailedResults::hostileTextsAreShownAsTheyAre()
{
    const Driver driver;
    const QStringList texts{"<img src=x><b>12</b>",
                            "a\nb\tc",
                            "%1 %2",
                            QString(100000, QLatin1Char('7')),
                            QString::fromUtf8("\u202Eright to left\u0000", 17),
                            QString(QChar(0xD800))};
    for (const QString& text : texts) {
        for (values::ValueSelection* selection :
             {driver.selectedDf, driver.azimuth, driver.level, driver.longitude, driver.errors, driver.quality})
            setNorth(selection, text);
        driver.frequency->SetValue(text, nullptr);
        driver.frequency->SetValue("1000", nullptr);
        driver.qualityThreshold->SetValue(0, nullptr);
        Window window;
        window.show();
        QVERIFY(!window.grab().isNull());
        QCOMPARE(window.cell(0, Name), text);
        QCOMPARE(window.cell(0, Azimuth), text + QStringLiteral("°"));
        QCOMPARE(window.cell(0, Level), text + QStringLiteral(" dBµV"));
        QCOMPARE(window.cell(0, Longitude), text);
        QCOMPARE(window.cell(0, Error), nothing);
    }
}

// ---- Refreshing ----

void TestDFDetailedResults::aResultTimeFillsTheTable()
{
    const Driver driver;
    const Window window;
    setNorth(driver.azimuth, "99.0");
    setNorth(driver.errors, "-17");
    driver.resultTime->SetValue("2026-01-15 11:00:05", nullptr);
    QCOMPARE(window.time(), QStringLiteral("2026-01-15 12:00:05"));
    QCOMPARE(window.cell(0, Azimuth), QStringLiteral("99.0°"));
    QCOMPARE(window.cell(0, Error), QStringLiteral("No signal"));
}

void TestDFDetailedResults::otherNotificationsAreIgnored()
{
    const Driver driver;
    const Window window;
    driver.frequency->SetValue("145000000", nullptr);
    setNorth(driver.azimuth, "99.0");
    for (const TChangeCode code : {ChangeState, ChangeContent, ChangeLimits, ChangeItems, ChangeExternal}) {
        for (values::ValueBase* value : values::Tree::Instance()->ValuesBelow("/GUI/DFLocateHandler/Values")) {
            if (value != driver.resultTime || code != ChangeContent)
                value->HasChanged(code, nullptr);
        }
    }
    QCOMPARE(window.rows(), bothStations);
    driver.announce();
    QCOMPARE(window.cell(0, Frequency), QStringLiteral("145 MHz"));
    QCOMPARE(window.cell(0, Azimuth), QStringLiteral("99.0°"));
}

void TestDFDetailedResults::aNullNotificationMatchesNoUnboundValue()
{
    const Driver driver({"Values/Result/ResultTime"});
    Window window;
    setNorth(driver.azimuth, "99.0");
    window.Update(nullptr, ChangeContent);
    QCOMPARE(window.rows(), bothStations);
}

void TestDFDetailedResults::aResultTimeLeavesTheRowCountAlone()
{
    const Driver driver;
    const Window window;
    driver.selectedDf->AddItem("West", 0.0, 9);
    driver.announce();
    QCOMPARE(window.rows(), bothStations);
    driver.selectedDf->DeleteItem(9);
    driver.selectedDf->DeleteItem(DriverValues::North);
    driver.announce();
    // The southern station is the first one now; nobody has taken the second row away yet.
    QCOMPARE(window.rows(), (Rows{bothStations[1], bothStations[1]}));
}

void TestDFDetailedResults::refreshTakesOverTheRowCount()
{
    const Driver driver;
    Window window;
    driver.selectedDf->AddItem("West", 0.0, 9);
    window.Refresh();
    QCOMPARE(window.rows().size(), 3);
    QCOMPARE(window.cell(2, Name), QStringLiteral("West"));
    QCOMPARE(window.cell(2, Error), nothing);
    driver.selectedDf->DeleteItem(9);
    driver.selectedDf->DeleteItem(DriverValues::South);
    window.Refresh();
    QCOMPARE(window.rows(), Rows{bothStations[0]});
    driver.selectedDf->DeleteItems();
    window.Refresh();
    QCOMPARE(window.rows(), Rows{});
}

void TestDFDetailedResults::aThousandStationsAreShown()
{
    const Driver driver;
    for (int key = 100; key < 1098; ++key) {
        driver.selectedDf->AddItem(QString::number(key), 0.0, key);
        driver.azimuth->AddItem(QString::number(key % 360), 0.0, key);
        driver.quality->AddItem("90", 0.0, key);
    }
    const Window window;
    QCOMPARE(window.rows().size(), 1000);
    QCOMPARE(window.rows().mid(0, 2), bothStations);
    QCOMPARE(window.cell(999, Name), QStringLiteral("1097"));
    QCOMPARE(window.cell(999, Azimuth), QStringLiteral("17°"));
}

void TestDFDetailedResults::onlyCellsWithAnotherTextAreWritten()
{
    const Driver driver;
    Window window;
    const std::vector<const QChar*> before = window.characters();
    driver.announce();
    window.Refresh();
    QCOMPARE(window.characters(), before);
    setNorth(driver.azimuth, "99.0");
    driver.errors->AddItem("-17", 0.0, DriverValues::South);
    driver.resultTime->SetValue("2026-01-15 11:00:05", nullptr);
    const std::vector<const QChar*> after = window.characters();
    for (std::size_t cell = 0; cell < after.size(); ++cell)
        QCOMPARE(after[cell] != before[cell], cell == Azimuth || cell == 8 + Error);
}

void TestDFDetailedResults::theTableIsToldOnceOfAllThatChanged()
{
    const Driver driver;
    Window window;
    QSignalSpy told(window.m_pTable->model(), &QAbstractItemModel::dataChanged);
    const auto cells = [&](int top, int left, int bottom, int right) {
        const QAbstractItemModel* const model = window.m_pTable->model();
        return QPair<QModelIndex, QModelIndex>(model->index(top, left), model->index(bottom, right));
    };
    const auto lastTold = [&] {
        return QPair<QModelIndex, QModelIndex>(told.last().at(0).toModelIndex(), told.last().at(1).toModelIndex());
    };
    driver.announce();
    window.Refresh();
    QCOMPARE(told.count(), 0);
    setNorth(driver.azimuth, "99.0");
    driver.announce();
    QCOMPARE(told.count(), 1);
    QCOMPARE(lastTold(), cells(0, Azimuth, 0, Azimuth));
    setNorth(driver.azimuth, "98.0");
    driver.errors->AddItem("-17", 0.0, DriverValues::South);
    driver.announce();
    QCOMPARE(told.count(), 2);
    QCOMPARE(lastTold(), cells(0, Azimuth, 1, Error));
    driver.selectedDf->AddItem("West", 0.0, 9);
    window.Refresh();
    QCOMPARE(told.count(), 3);
    QCOMPARE(lastTold(), cells(2, Name, 2, Error));
}

void TestDFDetailedResults::aTableThatIsShownPaintsWhatChanged()
{
    const Driver driver;
    Window window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QImage before = window.m_pTable->viewport()->grab().toImage();
    setNorth(driver.azimuth, "99.0");
    QSignalSpy told(window.m_pTable->model(), &QAbstractItemModel::dataChanged);
    driver.announce();
    QCOMPARE(told.count(), 1);
    QVERIFY(window.m_pTable->viewport()->grab().toImage() != before);
}

/// Any sequence of results, against a window made for the last one alone.
void TestDFDetailedResults::aWindowThatSawOtherResultsShowsTheSameAsANewOne()
{
    QRandomGenerator random(11);
    const Driver driver;
    Window window;
    const auto anyOf = [&random](const QStringList& texts) { return texts.at(random.bounded(texts.size())); };
    const QStringList numbers{"",       "0",   "8.5", "-12.25", "190", "370", "1,5",
                              "aboard", "012", "80",  "49",     "50",  "-14", "5"};
    const std::vector<values::ValueSelection*> selections{driver.azimuth,   driver.quality,  driver.level,
                                                          driver.longitude, driver.latitude, driver.errors};
    for (int turn = 0; turn < 300; ++turn) {
        for (values::ValueSelection* const selection : selections) {
            if (random.bounded(4) == 0)
                selection->DeleteItem(random.bounded(2) == 0 ? DriverValues::North : DriverValues::South);
            if (random.bounded(2) == 0)
                selection->AddItem(anyOf(numbers), 0.0, DriverValues::North);
            if (random.bounded(2) == 0)
                selection->AddItem(anyOf(numbers), 0.0, DriverValues::South);
        }
        driver.frequency->SetValue(anyOf({"433920000", "433920000", "0", "", "1e6"}), nullptr);
        driver.resultTime->SetValue(anyOf({"2026-01-15 11:00:00", "2026-01-15 11:00:05", "", "soon"}), nullptr);
        window.Refresh();
        const Window another;
        QCOMPARE(window.rows(), another.rows());
        QCOMPARE(window.time(), another.time());
        QCOMPARE(window.locateType(), another.locateType());
    }
}

void TestDFDetailedResults::cellsAreKeptAndTheirTextReplaced()
{
    const Driver driver;
    const Window window;
    const QTableWidgetItem* const cell = window.m_pTable->item(0, Azimuth);
    window.m_pTable->selectRow(0);
    setNorth(driver.azimuth, "99.0");
    driver.announce();
    QCOMPARE(window.m_pTable->item(0, Azimuth), cell);
    QVERIFY(cell->isSelected());
    delete window.m_pTable->takeItem(1, Error);
    driver.announce();
    QCOMPARE(window.cell(1, Error), QStringLiteral("Timeout"));
}

void TestDFDetailedResults::whatOthersDoToTheTableIsMadeGood_data()
{
    QTest::addColumn<Change>("change");

    const auto row = [](const char* name, Change change) { QTest::newRow(name) << std::move(change); };
    row("another text", [](QTableWidget& table) { table.item(0, Azimuth)->setText("else"); });
    row("a cell taken", [](QTableWidget& table) { delete table.takeItem(1, Error); });
    row("a cell deleted", [](QTableWidget& table) { delete table.item(1, Name); });
    row("another cell", [](QTableWidget& table) { table.setItem(0, Level, new QTableWidgetItem("else")); });
    row("cells exchanged", [](QTableWidget& table) {
        QTableWidgetItem* const first = table.takeItem(0, Name);
        table.setItem(0, Name, table.takeItem(1, Name));
        table.setItem(1, Name, first);
    });
    row("rows sorted", [](QTableWidget& table) { table.sortItems(Name, Qt::DescendingOrder); });
    row("a row removed and added", [](QTableWidget& table) {
        table.removeRow(0);
        table.insertRow(0);
    });
    row("a column removed and added", [](QTableWidget& table) {
        table.removeColumn(Quality);
        table.insertColumn(Quality);
    });
    row("all cells gone", [](QTableWidget& table) { table.clearContents(); });
    row("no rows for a while", [](QTableWidget& table) {
        table.setRowCount(0);
        table.setRowCount(2);
    });
}

void TestDFDetailedResults::whatOthersDoToTheTableIsMadeGood()
{
    QFETCH(Change, change);
    const Driver driver;
    const Window window;
    change(*window.m_pTable);
    driver.announce();
    QCOMPARE(window.rows(), bothStations);
}

void TestDFDetailedResults::whatOthersDoOnBeingToldIsMadeGood()
{
    const Driver driver;
    Window window;
    QTableWidget& table = *window.m_pTable;
    const auto once = std::make_shared<QMetaObject::Connection>();
    *once = connect(table.model(), &QAbstractItemModel::dataChanged, &window, [&table, once] {
        disconnect(*once);
        delete table.takeItem(1, Name);
    });
    setNorth(driver.azimuth, "99.0");
    driver.announce();
    QVERIFY(table.item(1, Name) == nullptr);
    driver.announce();
    QCOMPARE(window.cell(1, Name), QStringLiteral("South"));
}

void TestDFDetailedResults::aTableThatShrinksWhileItIsFilledIsFilledAsFarAsItGoes()
{
    const Driver driver;
    const Window window;
    setNorth(driver.errors, "-14");
    setNorth(driver.azimuth, "99.0");
    {
        const CheckingTranslator shrinking([&](const QString& /*context*/, const QString& text) {
            if (text == "Timeout")
                window.m_pTable->setRowCount(1);
            return text;
        });
        driver.announce();
    }
    QCOMPARE(window.m_pTable->rowCount(), 1);
    QCOMPARE(window.cell(0, Azimuth), QStringLiteral("99.0°"));
    QCOMPARE(window.cell(0, Error), QStringLiteral("Timeout"));
}

void TestDFDetailedResults::withoutATableRefreshDoesNothing()
{
    const Driver driver;
    Window window;
    delete window.m_pTable;
    driver.averageLongitude->SetValue(9.0, nullptr);
    window.Refresh();
    QCOMPARE(window.location(), QStringLiteral("8°30.000' -12°15.000'"));
    driver.announce();
    QCOMPARE(window.location(), QStringLiteral("9°0.000' -12°15.000'"));
}

void TestDFDetailedResults::anExceptionIsTracedAndGoesNoFurther()
{
    const Driver driver;
    const Window window;
    const Traces traces;
    const CheckingTranslator failing([](const QString& context, const QString& text) {
        if (context == "VelmarGui::DFDetailedResults")
            throw std::runtime_error("out of words");
        return text;
    });
    driver.announce();
    QCOMPARE(traces.records.size(), std::size_t(1));
    QCOMPARE(traces.records[0].text, QStringLiteral("Exception in DFDetailedResults::Update"));
    QCOMPARE(traces.records[0].sourceFile,
             QStringLiteral("userinterface/guicomponents/dflocatecomponent/dfdetailedresults"));
}

// ---- Looks ----

void TestDFDetailedResults::theNameColumnIsEightyPixelsWide()
{
    const Driver driver;
    setNorth(driver.selectedDf, QString(50, QLatin1Char('M')));
    Window window;
    QCOMPARE(window.m_pTable->columnWidth(Name), 80);
    setNorth(driver.selectedDf, QString(60, QLatin1Char('M')));
    window.Refresh();
    QCOMPARE(window.m_pTable->columnWidth(Name), 80);
}

void TestDFDetailedResults::everyTextIsSeenWhole_data()
{
    QTest::addColumn<bool>("large");
    QTest::newRow("usual font") << false;
    QTest::newRow("large font") << true;
}

void TestDFDetailedResults::everyTextIsSeenWhole()
{
    QFETCH(bool, large);
    const std::unique_ptr<LargeFont> font = large ? std::make_unique<LargeFont>() : nullptr;
    const Driver driver;
    setNorth(driver.errors, "-2");
    Window window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QTableWidget* const table = window.m_pTable;
    for (int row = 0; row < 2; ++row) {
        QVERIFY(table->rowHeight(row) >= table->fontMetrics().height());
        for (int column = Frequency; column <= Error; ++column) {
            const QSize needed = table->sizeHintForIndex(table->model()->index(row, column));
            QVERIFY2(table->columnWidth(column) > needed.width(), qPrintable(window.cell(row, column)));
        }
    }
    for (int column = Frequency; column <= Error; ++column)
        QVERIFY(table->columnWidth(column) >= table->horizontalHeader()->sectionSizeHint(column));
    for (const QLabel* label : window.findChildren<QLabel*>())
        QVERIFY2(label->width() >= label->sizeHint().width(), qPrintable(label->text()));
}

void TestDFDetailedResults::aLongerTextWidensItsColumn()
{
    const Driver driver;
    const Window window;
    const int before = window.m_pTable->columnWidth(Azimuth);
    setNorth(driver.azimuth, "123.456789012345");
    driver.announce();
    const int after = window.m_pTable->columnWidth(Azimuth);
    QVERIFY(after > before);
    QVERIFY(after > window.m_pTable->sizeHintForIndex(window.m_pTable->model()->index(0, Azimuth)).width());
    setNorth(driver.azimuth, "1");
    driver.announce();
    QCOMPARE(window.m_pTable->columnWidth(Azimuth), after);
}

// ---- Copying ----

void TestDFDetailedResults::selectedCellsAreCopiedAsText()
{
    const Driver driver;
    setNorth(driver.longitude, "on\ta\nship");
    Window window;
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    window.m_pTable->setFocus();
    window.m_pTable->setRangeSelected({0, Name, 1, Azimuth}, true);
    window.m_pTable->setRangeSelected({0, Longitude, 0, Longitude}, true);
    QGuiApplication::clipboard()->setText("before");
    QTest::keyClick(window.m_pTable, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(),
             QStringLiteral("North\t433.92 MHz\t12.5°\ton a ship\nSouth\t433.92 MHz\t---"));
}

void TestDFDetailedResults::withoutASelectionTheClipboardStays()
{
    const Driver driver;
    Window window;
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    window.m_pTable->setFocus();
    window.m_pTable->clearSelection();
    QGuiApplication::clipboard()->setText("before");
    QTest::keyClick(window.m_pTable, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("before"));
}

void TestDFDetailedResults::copyingIsInTheTablesMenu()
{
    const Driver driver;
    const Window window;
    QCOMPARE(window.m_pTable->contextMenuPolicy(), Qt::ActionsContextMenu);
    QCOMPARE(window.m_pTable->actions().size(), 1);
    window.m_pTable->selectRow(1);
    window.m_pTable->actions().first()->trigger();
    QCOMPARE(QGuiApplication::clipboard()->text(), bothStations[1].join(QLatin1Char('\t')));
}

// ---- Lives and deaths ----

void TestDFDetailedResults::eachValueMayGo_data()
{
    addValueNames();
}

void TestDFDetailedResults::eachValueMayGo()
{
    QFETCH(QString, name);
    Driver driver;
    Window window;
    Shown expected = wholeResultWithout(name);
    expected.location = wholeResult().location; // the latest one stays
    QVERIFY(driver.remove(qPrintable(name)));
    QVERIFY(shownBy(window) == wholeResult());
    if (!name.endsWith("ResultTime")) {
        driver.announce();
        QCOMPARE(window.rows(), name.endsWith("SelectedDF") ? bothStations : expected.rows);
    }
    window.Refresh();
    QCOMPARE(window.time(), expected.time);
    QCOMPARE(window.location(), expected.location);
    QCOMPARE(window.locateType(), expected.locateType);
    QCOMPARE(window.rows(), expected.rows);
}

void TestDFDetailedResults::theStationsMayGoWhileAResultIsTold()
{
    RecordingObserver deleting(
        [](Observable*, TChangeCode) { values::Tree::Instance()->DeleteValue(resultPrefix + "SelectedDF"); });
    const Driver driver;
    const Window window;
    driver.resultTime->MakeFirstObserver(&deleting);
    driver.resultTime->SetValue("2026-01-15 11:00:05", nullptr);
    QCOMPARE(window.time(), QStringLiteral("2026-01-15 12:00:05"));
    QCOMPARE(window.rows(), bothStations);
}

void TestDFDetailedResults::theTreeMayGoBeforeTheWindow()
{
    std::unique_ptr<Window> window;
    {
        const Driver driver;
        window = std::make_unique<Window>();
    }
    window->Refresh();
    QCOMPARE(window->rows(), Rows{});
    QCOMPARE(window->time(), nothing);
}

void TestDFDetailedResults::theWindowMayGoWhileAResultIsTold()
{
    std::unique_ptr<Window> window;
    RecordingObserver deleting([&window](Observable*, TChangeCode) { window.reset(); });
    const Driver driver;
    window = std::make_unique<Window>();
    driver.resultTime->MakeFirstObserver(&deleting);
    const std::size_t bound = driver.azimuth->GetObserverCount();
    driver.announce();
    QVERIFY(window == nullptr);
    QCOMPARE(driver.azimuth->GetObserverCount(), bound - 1);
}

void TestDFDetailedResults::twoWindowsShowTheSameResult()
{
    const Driver driver;
    const Window first;
    auto second = std::make_unique<Window>();
    setNorth(driver.azimuth, "99.0");
    driver.announce();
    QVERIFY(shownBy(first) == shownBy(*second));
    second.reset();
    setNorth(driver.azimuth, "100.0");
    driver.announce();
    QCOMPARE(first.cell(0, Azimuth), QStringLiteral("100.0°"));
}

DFL_TEST_MAIN(TestDFDetailedResults)
#include "tst_dfdetailedresults.moc"
