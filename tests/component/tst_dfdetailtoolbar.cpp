#include "dfdetailedresults.h"
#include "dfdetailtoolbar.h"

#include "drivervalues.h"
#include "support/testmain.h"
#include "support/traces.h"

#include "valuewidgets/vccomboboxclassic.h"

#include <QLabel>
#include <QPointer>
#include <QSignalSpy>
#include <QTableWidget>
#include <QToolBar>
#include <QToolButton>
#include <QTranslator>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <utility>

Q_DECLARE_METATYPE(values::ValueSelection*)

using testsupport::DriverValues;
using testsupport::RecordingObserver;
using testsupport::Traces;
using VelmarGui::DFDetailedResults;
using VelmarGui::DFDetailToolbar;

namespace {

const QString toolbarPath = QStringLiteral("/GUI/DFLocateHandler/");
const QString nothing = QStringLiteral("---");
const QString degrees = QString(QChar(0x00B0));
constexpr const char* winterNoon = "2026-01-15 11:00:00"; // noon in the time zone of the tests

/// A toolbar with nothing but the result widgets.
struct Results
{
    Results()
        : bar(std::make_unique<QToolBar>())
        , detail(new DFDetailToolbar(bar.get(), toolbarPath))
    {
    }

    [[nodiscard]] QString text(const char* label) const
    {
        return bar->findChild<QLabel*>(QLatin1String(label))->text();
    }
    [[nodiscard]] QString bearing() const { return text("average bearing"); }
    [[nodiscard]] QString quality() const { return text("average quality"); }
    [[nodiscard]] QString time() const { return text("LocationFindingTime"); }
    [[nodiscard]] VCComboBoxClassic* combo() const
    {
        return bar->findChild<VCComboBoxClassic*>("direction finder name");
    }
    [[nodiscard]] QToolButton* button() const { return bar->findChild<QToolButton*>("DetailedResults"); }
    void press() const { QTest::mousePress(button(), Qt::LeftButton); }
    [[nodiscard]] QBrush ground(QPalette::ColorGroup group = QPalette::Active) const
    {
        return button()->palette().brush(group, QPalette::Window);
    }
    [[nodiscard]] bool isGreen() const { return ground().color() == QColor(Qt::green); }

    std::unique_ptr<QToolBar> bar;
    QPointer<DFDetailToolbar> detail;
};

/// Puts @p text into the item of the northern station.
void setNorth(values::ValueSelection* selection, const QString& text)
{
    QVERIFY(selection->AddItem(text, 0.0, DriverValues::North));
}

/// The open or hidden windows of detailed results.
QList<DFDetailedResults*> resultWindows()
{
    QList<DFDetailedResults*> windows;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* const window = dynamic_cast<DFDetailedResults*>(widget))
            windows << window;
    }
    return windows;
}

} // namespace

class TestDFDetailToolbar : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    // Construction
    void itIsAnObjectOfTheToolbarWithOneSignalAndOneSlot();
    void theWidgetsStandInTheirOrder();
    void theLabelsHaveTheirPlace_data();
    void theLabelsHaveTheirPlace();
    void theComboShowsTheStations();
    void theButtonShowsTheMagnifier();
    void withoutADriverEverythingShowsNothing();
    void missingValuesAreNotReported();
    void noValueIsEverCreated();
    void everyResultValueIsBound_data();
    void everyResultValueIsBound();
    void aResultThatIsThereAlreadyIsShown();
    void anErrorThatIsThereAlreadyIsNotShown();

    // Bearing and quality
    void bearingAndQualityNeedTheThreshold_data();
    void bearingAndQualityNeedTheThreshold();
    void aMissingAzimuthLeavesTheQuality();
    void aMissingQualityOrThresholdLeavesTheLabels_data();
    void aMissingQualityOrThresholdLeavesTheLabels();
    void aSelectionWithoutACurrentItemShowsNothing();
    void onlyTheQualityRefreshesTheNumbers();

    // Station
    void choosingAStationShowsItsResult();
    void theKeyIsCopiedToAzimuthQualityAndErrorsOnly();
    void theErrorsAreWrittenAsOnesOwn();
    void aKeyThatAnotherSelectionLacksLeavesThatOneAlone();
    void aStationWithoutAQualityRefreshesTheNumbersToo();
    void aStationChosenWhileTheKeyIsCopiedWins();
    void aNewStationListCopiesTheKeyToo();
    void noCurrentStationCopiesNothing();
    void theOperatorsChoiceCountsAsAChange();

    // Time and errors
    void aResultTimeIsShownInLocalTime();
    void aResultTimeOfNoResultKeepsTheText();
    void aTimeThatCannotBeReadClearsTheLabel();
    void anErrorIsShownInPlaceOfTheTime_data();
    void anErrorIsShownInPlaceOfTheTime();
    void anErrorStaysUntilTheNextTime();
    void noErrorKeepsTheTime();
    void errorsNeedTheFrequency();

    // Signal and button
    void aResultTimeAnnouncesTheResult();
    void missingSelectionsAreAnnouncedAsNull();
    void aTimeOfNoResultIsAnnouncedToo();
    void theButtonIsGreenWithMoreThanOneStation_data();
    void theButtonIsGreenWithMoreThanOneStation();
    void theColourChangesWithTheResultTimeOnly();
    void withoutStationsTheColourStays();
    void theGreenFillsAllColourGroups();

    void otherCodesAreIgnored();
    void aNullNotificationMatchesNoUnboundValue();
    void oneWholeResultIsShownAndThenItsError();

    // Pressing the button
    void pressingWithoutResultValuesOpensNothing();
    void pressingLinksWhatHasAppeared();
    void pressingUpdatesOnlyWhatIsNew();
    void pressingShowsAnErrorThatHasAppeared();
    void pressingActsOnThePressAndNotOnTheRelease();
    void pressingFindsAValueThatCameBack();

    // The window of detailed results
    void pressingOpensTheWindow();
    void pressingAgainShowsAndActivatesTheWindow();
    void theWindowNeedsStationsAzimuthAndQuality_data();
    void theWindowNeedsStationsAzimuthAndQuality();
    void pressingOnceMoreOpensTheWindowWhenTheValuesHaveCome();
    void aNewStationListRefreshesTheWindow();
    void aNewStationListIsRefreshedAfterTheKeyIsCopied();
    void anotherStationDoesNotRefreshTheWindow();
    void aNewStationListOpensNoWindow();
    void aWholeResultIsShownInTheWindow();
    void aWindowThatCannotBeMadeIsTraced();
    void theWindowGoesWithTheToolbar();
    void theToolbarMayGoAfterTheWindow();
    void aWindowThatWasDeletedIsMadeAnew();
    void aWindowThatIsDeletedWhenClosedIsMadeAnew();
    void theWindowMayGoWhileTheKeyIsCopied();

    // Lives and deaths
    void eachResultValueMayGo_data();
    void eachResultValueMayGo();
    void valuesMayGoWhileTheKeyIsCopied();
    void theToolbarMayGoWhileTheKeyIsCopied_data();
    void theToolbarMayGoWhileTheKeyIsCopied();
    void theToolbarMayGoInTheSignal();
    void theObjectMayGoBeforeItsToolbar();
    void theTreeMayGoBeforeTheToolbar();
    void twoToolbarsShowTheSameResult();
    void anExceptionIsTracedAndGoesNoFurther();
};

void TestDFDetailToolbar::initTestCase()
{
    qRegisterMetaType<values::ValueSelection*>("values::ValueSelection*");
}

// ---- Construction ----

void TestDFDetailToolbar::itIsAnObjectOfTheToolbarWithOneSignalAndOneSlot()
{
    const testsupport::FreshTree tree;
    const Results results;
    const QMetaObject& meta = DFDetailToolbar::staticMetaObject;
    QCOMPARE(meta.className(), "VelmarGui::DFDetailToolbar");
    QCOMPARE(results.detail->parent(), results.bar.get());
    QVERIFY(!results.detail->isWidgetType());
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 2);
    const QMetaMethod signal = meta.method(meta.methodOffset());
    QCOMPARE(signal.methodType(), QMetaMethod::Signal);
    QCOMPARE(signal.methodSignature(),
             QByteArray("LocateResultArrived(values::ValueSelection*,values::ValueSelection*,values::ValueSelection*,"
                        "QString,values::ValueSelection*,values::ValueSelection*)"));
    QCOMPARE(signal.parameterNames(),
             (QList<QByteArray>{"pDfName", "pAzimuth", "pQuality", "sTime", "pLongitude", "pLatitude"}));
    const QMetaMethod slot = meta.method(meta.methodOffset() + 1);
    QCOMPARE(slot.methodType(), QMetaMethod::Slot);
    QCOMPARE(slot.methodSignature(), QByteArray("SlotDetailedResults()"));
}

void TestDFDetailToolbar::theWidgetsStandInTheirOrder()
{
    const testsupport::FreshTree tree;
    const Results results;
    QStringList shown;
    for (QAction* action : results.bar->actions()) {
        const QWidget* const widget = results.bar->widgetForAction(action);
        shown << (action->isSeparator() ? QStringLiteral("|") : widget->objectName());
        QCOMPARE(widget->parentWidget(), results.bar.get());
    }
    QCOMPARE(shown, (QStringList{"|", "", "direction finder name", "average bearing", "average quality",
                                 "LocationFindingTime", "DetailedResults"}));
    const auto* const leading = qobject_cast<QLabel*>(results.bar->widgetForAction(results.bar->actions().at(1)));
    QVERIFY(leading != nullptr);
    QCOMPARE(leading->text(), QString());
}

void TestDFDetailToolbar::theLabelsHaveTheirPlace_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("toolTip");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("alignment");

    QTest::newRow("bearing") << "average bearing"
                             << "result azimuth" << 36 << int(Qt::AlignRight | Qt::AlignVCenter);
    QTest::newRow("quality") << "average quality"
                             << "result quality" << 36 << int(Qt::AlignRight | Qt::AlignVCenter);
    QTest::newRow("time") << "LocationFindingTime"
                          << "time of location finding resp. error text" << 60
                          << int(Qt::AlignHCenter | Qt::AlignVCenter);
}

void TestDFDetailToolbar::theLabelsHaveTheirPlace()
{
    QFETCH(QString, name);
    QFETCH(QString, toolTip);
    QFETCH(int, width);
    QFETCH(int, alignment);
    const testsupport::FreshTree tree;
    const Results results;
    const auto* const label = results.bar->findChild<QLabel*>(name);
    QVERIFY(label != nullptr);
    QCOMPARE(label->toolTip(), toolTip);
    QCOMPARE(label->minimumWidth(), width);
    QCOMPARE(label->maximumWidth(), width);
    QCOMPARE(int(label->alignment()), alignment);
}

void TestDFDetailToolbar::theComboShowsTheStations()
{
    const DriverValues driver;
    const Results results;
    QCOMPARE(results.combo()->GetValueSelection(), driver.selectedDf);
    QCOMPARE(results.combo()->sizeAdjustPolicy(), QComboBox::AdjustToContents);
    QCOMPARE(results.combo()->maximumWidth(), 120);
    QCOMPARE(results.combo()->toolTip(), QStringLiteral("direction finder name"));
    QCOMPARE(results.combo()->count(), 2);
    QCOMPARE(results.combo()->currentText(), QStringLiteral("North"));
}

void TestDFDetailToolbar::theButtonShowsTheMagnifier()
{
    const testsupport::FreshTree tree;
    const Results results;
    QCOMPARE(results.button()->icon().availableSizes(), QList<QSize>{QSize(23, 22)});
    QCOMPARE(results.button()->text(), QStringLiteral("Detailed results"));
    QCOMPARE(results.button()->toolTip(), QStringLiteral("Detailed results"));
}

void TestDFDetailToolbar::withoutADriverEverythingShowsNothing()
{
    const testsupport::FreshTree tree;
    const Results results;
    QCOMPARE(results.bearing(), nothing);
    QCOMPARE(results.quality(), nothing);
    QCOMPARE(results.time(), nothing);
    QVERIFY(results.combo()->GetValueSelection() == nullptr);
    QVERIFY(!results.isGreen());
}

void TestDFDetailToolbar::missingValuesAreNotReported()
{
    const testsupport::FreshTree tree;
    const Traces traces;
    const Results results;
    results.press();
    QVERIFY(traces.records.empty());
}

void TestDFDetailToolbar::noValueIsEverCreated()
{
    const testsupport::FreshTree tree;
    const Results results;
    results.press();
    QVERIFY(values::Tree::Instance()->ValuesBelow(QString()).empty());
}

void TestDFDetailToolbar::everyResultValueIsBound_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"SelectedDF", "Azimuth", "Quality", "DFLongitude", "DFLatitude", "QualityThreshold",
                             "ResultTime", "Frequency", "Errors"})
        QTest::newRow(name) << name;
}

void TestDFDetailToolbar::everyResultValueIsBound()
{
    QFETCH(QString, name);
    const DriverValues driver;
    values::ValueBase* const value =
        values::Tree::Instance()->FindValue(toolbarPath + QLatin1String("Values/Result/") + name);
    QVERIFY(value != nullptr);
    const std::size_t before = value->GetObserverCount();
    {
        const Results results;
        QVERIFY(value->IsObservedBy(results.detail));
    }
    QCOMPARE(value->GetObserverCount(), before);
}

void TestDFDetailToolbar::aResultThatIsThereAlreadyIsShown()
{
    const DriverValues driver;
    driver.resultTime->SetValue(winterNoon, nullptr);
    const Results results;
    QCOMPARE(results.bearing(), QStringLiteral("12.5") + degrees);
    QCOMPARE(results.quality(), QStringLiteral("80%"));
    QCOMPARE(results.time(), QStringLiteral("12:00:00"));
    QVERIFY(results.isGreen());
}

void TestDFDetailToolbar::anErrorThatIsThereAlreadyIsNotShown()
{
    const DriverValues driver;
    driver.resultTime->SetValue(winterNoon, nullptr);
    driver.errors->Select(DriverValues::South);
    const Results results;
    QCOMPARE(results.time(), QStringLiteral("12:00:00"));
}

// ---- Bearing and quality ----

void TestDFDetailToolbar::bearingAndQualityNeedTheThreshold_data()
{
    QTest::addColumn<QString>("qualityText");
    QTest::addColumn<int>("threshold");
    QTest::addColumn<bool>("shown");

    QTest::newRow("above") << "80" << 50 << true;
    QTest::newRow("equal") << "50" << 50 << true;
    QTest::newRow("below") << "49" << 50 << false;
    QTest::newRow("nearly") << "49.9" << 50 << false;
    QTest::newRow("a fraction is cut off") << "50.9" << 50 << true;
    QTest::newRow("never rounded up") << "50.9" << 51 << false;
    QTest::newRow("cut off towards zero") << "-0.9" << 0 << true;
    QTest::newRow("decimal comma") << "50,5" << 50 << true;
    QTest::newRow("blanks around") << " 50 " << 50 << true;
    QTest::newRow("unreadable counts as 0") << "good" << 1 << false;
    QTest::newRow("unreadable counts as 0, which suffices") << "good" << 0 << true;
    QTest::newRow("empty counts as 0") << "" << 1 << false;
    QTest::newRow("beyond every integer") << "99999999999" << 2147483647 << true;
    QTest::newRow("below every integer") << "-99999999999" << (-2147483647 - 1) << false;
}

void TestDFDetailToolbar::bearingAndQualityNeedTheThreshold()
{
    QFETCH(QString, qualityText);
    QFETCH(int, threshold);
    QFETCH(bool, shown);
    const DriverValues driver;
    const Results results;
    driver.qualityThreshold->SetValue(threshold, nullptr);
    setNorth(driver.quality, qualityText);
    driver.quality->HasChanged(ChangeContent, nullptr);
    QCOMPARE(results.bearing(), shown ? QStringLiteral("12.5") + degrees : nothing);
    QCOMPARE(results.quality(), shown ? qualityText + QLatin1Char('%') : nothing);

    const Results madeLater;
    QCOMPARE(madeLater.bearing(), results.bearing());
    QCOMPARE(madeLater.quality(), results.quality());
}

void TestDFDetailToolbar::aMissingAzimuthLeavesTheQuality()
{
    const DriverValues driver({"Values/Result/Azimuth"});
    const Results results;
    QCOMPARE(results.bearing(), nothing);
    QCOMPARE(results.quality(), QStringLiteral("80%"));
}

void TestDFDetailToolbar::aMissingQualityOrThresholdLeavesTheLabels_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("quality") << QByteArray("Values/Result/Quality");
    QTest::newRow("threshold") << QByteArray("Values/Result/QualityThreshold");
}

void TestDFDetailToolbar::aMissingQualityOrThresholdLeavesTheLabels()
{
    QFETCH(QByteArray, name);
    DriverValues driver;
    const Results results;
    QVERIFY(driver.remove(name));
    driver.selectedDf->Select(DriverValues::South); // whose quality is below the threshold
    QCOMPARE(results.bearing(), QStringLiteral("12.5") + degrees);
    QCOMPARE(results.quality(), QStringLiteral("80%"));

    const Results madeLater;
    QCOMPARE(madeLater.bearing(), nothing);
    QCOMPARE(madeLater.quality(), nothing);
}

void TestDFDetailToolbar::aSelectionWithoutACurrentItemShowsNothing()
{
    const DriverValues driver;
    const Results results;
    driver.qualityThreshold->SetValue(0, nullptr);
    driver.azimuth->DeleteItems();
    driver.quality->HasChanged(ChangeContent, nullptr);
    QCOMPARE(results.bearing(), nothing);
    QCOMPARE(results.quality(), QStringLiteral("80%"));
    driver.quality->DeleteItems();
    QCOMPARE(results.quality(), nothing);
}

void TestDFDetailToolbar::onlyTheQualityRefreshesTheNumbers()
{
    const DriverValues driver;
    const Results results;
    setNorth(driver.azimuth, QStringLiteral("99.0"));
    driver.azimuth->HasChanged(ChangeContent, nullptr);
    driver.qualityThreshold->SetValue(90, nullptr);
    driver.frequency->SetValue("1", nullptr);
    driver.longitude->HasChanged(ChangeContent, nullptr);
    driver.latitude->HasChanged(ChangeContent, nullptr);
    QCOMPARE(results.bearing(), QStringLiteral("12.5") + degrees);
    driver.qualityThreshold->SetValue(50, nullptr);
    driver.quality->HasChanged(ChangeContent, nullptr);
    QCOMPARE(results.bearing(), QStringLiteral("99.0") + degrees);
}

// ---- Station ----

void TestDFDetailToolbar::choosingAStationShowsItsResult()
{
    const DriverValues driver;
    driver.resultTime->SetValue(winterNoon, nullptr);
    const Results results;
    driver.qualityThreshold->SetValue(40, nullptr);
    driver.selectedDf->Select(DriverValues::South);
    QCOMPARE(results.bearing(), QStringLiteral("271.0") + degrees);
    QCOMPARE(results.quality(), QStringLiteral("40%"));
    QCOMPARE(results.time(), QStringLiteral("Timeout"));
    // Back again: there is no error, but the time has been written over.
    driver.selectedDf->Select(DriverValues::North);
    QCOMPARE(results.bearing(), QStringLiteral("12.5") + degrees);
    QCOMPARE(results.time(), QStringLiteral("Timeout"));
}

void TestDFDetailToolbar::theKeyIsCopiedToAzimuthQualityAndErrorsOnly()
{
    const DriverValues driver;
    const Results results;
    driver.selectedDf->Select(DriverValues::South);
    QCOMPARE(driver.azimuth->GetCurrentKey(), DriverValues::South);
    QCOMPARE(driver.quality->GetCurrentKey(), DriverValues::South);
    QCOMPARE(driver.errors->GetCurrentKey(), DriverValues::South);
    QCOMPARE(driver.longitude->GetCurrentKey(), DriverValues::North);
    QCOMPARE(driver.latitude->GetCurrentKey(), DriverValues::North);
}

namespace {

/// Notes which sources it is told of.
class ListeningDetail : public DFDetailToolbar
{
public:
    using DFDetailToolbar::DFDetailToolbar;
    void Update(Observable* source, TChangeCode code) override
    {
        heard.emplace_back(source, code);
        DFDetailToolbar::Update(source, code);
    }
    [[nodiscard]] bool hasHeard(Observable* source) const
    {
        return std::any_of(heard.begin(), heard.end(), [source](const auto& entry) { return entry.first == source; });
    }

    std::vector<std::pair<Observable*, TChangeCode>> heard;
};

} // namespace

void TestDFDetailToolbar::theErrorsAreWrittenAsOnesOwn()
{
    const DriverValues driver;
    QToolBar bar;
    const auto* const detail = new ListeningDetail(&bar, toolbarPath);
    RecordingObserver outside;
    values::ValueObservingPtr<values::ValueSelection> binding(&outside);
    binding.Assign(driver.errors);
    driver.selectedDf->Select(DriverValues::South);
    QVERIFY(detail->hasHeard(driver.azimuth));
    QVERIFY(detail->hasHeard(driver.quality));
    QVERIFY(!detail->hasHeard(driver.errors));
    QCOMPARE(outside.count(ChangeContent), 1);
}

void TestDFDetailToolbar::aKeyThatAnotherSelectionLacksLeavesThatOneAlone()
{
    const DriverValues driver;
    const Results results;
    driver.azimuth->DeleteItem(DriverValues::South);
    driver.selectedDf->Select(DriverValues::South);
    QCOMPARE(driver.azimuth->GetCurrentKey(), DriverValues::North);
    QCOMPARE(driver.quality->GetCurrentKey(), DriverValues::South);
}

void TestDFDetailToolbar::aStationWithoutAQualityRefreshesTheNumbersToo()
{
    const DriverValues driver;
    const Results results;
    driver.quality->DeleteItem(DriverValues::South);
    driver.selectedDf->Select(DriverValues::South);
    QCOMPARE(results.bearing(), QStringLiteral("271.0") + degrees);
    QCOMPARE(results.quality(), QStringLiteral("80%"));
}

void TestDFDetailToolbar::aStationChosenWhileTheKeyIsCopiedWins()
{
    const DriverValues driver;
    const Results results;
    RecordingObserver contradicting([&driver](Observable*, TChangeCode code) {
        if (code == ChangeContent)
            driver.selectedDf->Select(DriverValues::North);
    });
    values::ValueObservingPtr<values::ValueSelection> binding(&contradicting);
    binding.Assign(driver.azimuth);
    driver.selectedDf->Select(DriverValues::South);
    for (const values::ValueSelection* selection : {driver.selectedDf, driver.azimuth, driver.quality, driver.errors})
        QCOMPARE(selection->GetCurrentKey(), DriverValues::North);
    QCOMPARE(results.quality(), QStringLiteral("80%"));
}

void TestDFDetailToolbar::aNewStationListCopiesTheKeyToo()
{
    const DriverValues driver;
    const Results results;
    driver.qualityThreshold->SetValue(40, nullptr);
    {
        // As a driver does it: one transaction for the whole list.
        const values::ValueTransaction change = driver.selectedDf->CreateTransaction({ChangeItems}, nullptr);
        driver.selectedDf->DeleteItems();
        driver.selectedDf->AddItem("South", 0.0, DriverValues::South);
        driver.selectedDf->Select(DriverValues::South);
    }
    QCOMPARE(driver.azimuth->GetCurrentKey(), DriverValues::South);
    QCOMPARE(driver.quality->GetCurrentKey(), DriverValues::South);
    QCOMPARE(driver.errors->GetCurrentKey(), DriverValues::South);
    QCOMPARE(results.bearing(), QStringLiteral("271.0") + degrees);
    QCOMPARE(results.time(), QStringLiteral("Timeout"));
}

void TestDFDetailToolbar::noCurrentStationCopiesNothing()
{
    const DriverValues driver;
    const Results results;
    driver.selectedDf->DeleteItems();
    QCOMPARE(driver.azimuth->GetCurrentKey(), DriverValues::North);
    QCOMPARE(driver.errors->GetCurrentKey(), DriverValues::North);
}

void TestDFDetailToolbar::theOperatorsChoiceCountsAsAChange()
{
    const DriverValues driver;
    const Results results;
    results.combo()->setFocus();
    QTest::keyClick(results.combo(), Qt::Key_Down);
    QCOMPARE(driver.selectedDf->GetCurrentKey(), DriverValues::South);
    QCOMPARE(driver.azimuth->GetCurrentKey(), DriverValues::South);
    QCOMPARE(results.time(), QStringLiteral("Timeout"));
}

// ---- Time and errors ----

void TestDFDetailToolbar::aResultTimeIsShownInLocalTime()
{
    const DriverValues driver;
    const Results results;
    driver.resultTime->SetValue("2026-01-15 10:20:30", nullptr);
    QCOMPARE(results.time(), QStringLiteral("11:20:30"));
    driver.resultTime->SetValue("2026-07-15 10:20:30", nullptr);
    QCOMPARE(results.time(), QStringLiteral("12:20:30"));
}

void TestDFDetailToolbar::aResultTimeOfNoResultKeepsTheText()
{
    const DriverValues driver;
    const Results results;
    driver.resultTime->SetValue("1970-01-01 00:00:00", nullptr);
    QCOMPARE(results.time(), nothing);
    driver.resultTime->SetValue(winterNoon, nullptr);
    driver.resultTime->SetValue("1970-01-01 00:00:00", nullptr);
    QCOMPARE(results.time(), QStringLiteral("12:00:00"));
    driver.resultTime->SetValue(QString(), nullptr);
    QCOMPARE(results.time(), QStringLiteral("12:00:00"));
}

void TestDFDetailToolbar::aTimeThatCannotBeReadClearsTheLabel()
{
    const DriverValues driver;
    const Results results;
    driver.resultTime->SetValue("yesterday", nullptr);
    QCOMPARE(results.time(), QString());
}

void TestDFDetailToolbar::anErrorIsShownInPlaceOfTheTime_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("text");

    QTest::newRow("no signal") << "-17"
                               << "No signal";
    QTest::newRow("timeout") << "-14"
                             << "Timeout";
    QTest::newRow("time range") << "-3"
                                << "Not in time range";
    QTest::newRow("scan range undefined") << "-2"
                                          << "Scan range undefined";
    QTest::newRow("scan range") << "-1"
                                << "Not in scan range";
    QTest::newRow("another") << "5"
                             << "5";
    QTest::newRow("another, negative") << "-99"
                                       << "-99";
    QTest::newRow("zero") << "0"
                          << "0";
    QTest::newRow("leading zeros") << "007"
                                   << "7";
    QTest::newRow("unreadable") << "lost"
                                << "0";
}

void TestDFDetailToolbar::anErrorIsShownInPlaceOfTheTime()
{
    QFETCH(QString, code);
    QFETCH(QString, text);
    const DriverValues driver;
    const Results results;
    setNorth(driver.errors, code);
    driver.errors->HasChanged(ChangeContent, nullptr);
    QCOMPARE(results.time(), text);
}

void TestDFDetailToolbar::anErrorStaysUntilTheNextTime()
{
    const DriverValues driver;
    const Results results;
    driver.resultTime->SetValue(winterNoon, nullptr);
    setNorth(driver.errors, "-14");
    driver.errors->HasChanged(ChangeContent, nullptr);
    driver.quality->HasChanged(ChangeContent, nullptr);
    setNorth(driver.errors, QString());
    driver.errors->HasChanged(ChangeContent, nullptr);
    QCOMPARE(results.time(), QStringLiteral("Timeout"));
    driver.resultTime->SetValue("2026-01-15 11:00:01", nullptr);
    QCOMPARE(results.time(), QStringLiteral("12:00:01"));
}

void TestDFDetailToolbar::noErrorKeepsTheTime()
{
    const DriverValues driver;
    const Results results;
    driver.resultTime->SetValue(winterNoon, nullptr);
    driver.errors->HasChanged(ChangeContent, nullptr);
    QCOMPARE(results.time(), QStringLiteral("12:00:00"));
    driver.errors->DeleteItems();
    QCOMPARE(results.time(), QStringLiteral("12:00:00"));
}

void TestDFDetailToolbar::errorsNeedTheFrequency()
{
    DriverValues driver({"Values/Result/Frequency"});
    const Results results;
    driver.selectedDf->Select(DriverValues::South);
    driver.errors->HasChanged(ChangeContent, nullptr);
    QCOMPARE(results.time(), nothing);
}

// ---- Signal and button ----

void TestDFDetailToolbar::aResultTimeAnnouncesTheResult()
{
    const DriverValues driver;
    const Results results;
    QSignalSpy arrived(
        results.detail.data(),
        SIGNAL(LocateResultArrived(values::ValueSelection*, values::ValueSelection*, values::ValueSelection*, QString,
                                   values::ValueSelection*, values::ValueSelection*)));
    QVERIFY(arrived.isValid());
    driver.quality->HasChanged(ChangeContent, nullptr);
    driver.errors->HasChanged(ChangeContent, nullptr);
    driver.selectedDf->HasChanged(ChangeContent, nullptr);
    QCOMPARE(arrived.count(), 0);
    driver.resultTime->SetValue(winterNoon, nullptr);
    QCOMPARE(arrived.count(), 1);
    const QVariantList arguments = arrived.first();
    const auto selection = [&arguments](int index) { return arguments.at(index).value<values::ValueSelection*>(); };
    QCOMPARE(selection(0), driver.selectedDf);
    QCOMPARE(selection(1), driver.azimuth);
    QCOMPARE(selection(2), driver.quality);
    QCOMPARE(arguments.at(3).toString(), QStringLiteral("12:00:00"));
    QCOMPARE(selection(4), driver.longitude);
    QCOMPARE(selection(5), driver.latitude);
    driver.resultTime->HasChanged(ChangeContent, nullptr);
    QCOMPARE(arrived.count(), 2);
}

void TestDFDetailToolbar::missingSelectionsAreAnnouncedAsNull()
{
    const DriverValues driver({"Values/Result/SelectedDF", "Values/Result/Azimuth", "Values/Result/Quality",
                               "Values/Result/DFLongitude", "Values/Result/DFLatitude"});
    const Results results;
    QSignalSpy arrived(results.detail.data(), &DFDetailToolbar::LocateResultArrived);
    driver.resultTime->SetValue(winterNoon, nullptr);
    QCOMPARE(arrived.count(), 1);
    for (const int index : {0, 1, 2, 4, 5})
        QVERIFY(arrived.first().at(index).value<values::ValueSelection*>() == nullptr);
}

void TestDFDetailToolbar::aTimeOfNoResultIsAnnouncedToo()
{
    const DriverValues driver;
    const Results results;
    driver.selectedDf->Select(DriverValues::South);
    QSignalSpy arrived(results.detail.data(), &DFDetailToolbar::LocateResultArrived);
    driver.resultTime->SetValue("1970-01-01 00:00:00", nullptr);
    QCOMPARE(arrived.count(), 1);
    QCOMPARE(arrived.first().at(3).toString(), QStringLiteral("Timeout"));
}

void TestDFDetailToolbar::theButtonIsGreenWithMoreThanOneStation_data()
{
    QTest::addColumn<int>("stations");
    QTest::addColumn<bool>("green");
    QTest::newRow("none") << 0 << false;
    QTest::newRow("one") << 1 << false;
    QTest::newRow("two") << 2 << true;
    QTest::newRow("five") << 5 << true;
}

void TestDFDetailToolbar::theButtonIsGreenWithMoreThanOneStation()
{
    QFETCH(int, stations);
    QFETCH(bool, green);
    const DriverValues driver;
    const QColor normal = QToolButton().palette().color(QPalette::Window);
    const auto setStations = [&driver](int count) {
        driver.selectedDf->DeleteItems();
        for (int key = 1; key <= count; ++key)
            driver.selectedDf->AddItem(QString::number(key), 0.0, key);
    };
    setStations(stations);
    const Results atStart;
    QCOMPARE(atStart.isGreen(), green);

    setStations(green ? 1 : 2);
    const Results changed;
    setStations(stations);
    driver.resultTime->SetValue(winterNoon, nullptr);
    QCOMPARE(changed.isGreen(), green);
    if (!green)
        QCOMPARE(atStart.ground().color(), normal);
}

void TestDFDetailToolbar::theColourChangesWithTheResultTimeOnly()
{
    const DriverValues driver;
    const Results results;
    QVERIFY(results.isGreen());
    driver.selectedDf->DeleteItem(DriverValues::South);
    driver.selectedDf->HasChanged(ChangeContent, nullptr);
    driver.quality->HasChanged(ChangeContent, nullptr);
    QVERIFY(results.isGreen());
    driver.resultTime->SetValue(QString(), nullptr); // the same content: no change
    QVERIFY(results.isGreen());
    driver.resultTime->HasChanged(ChangeContent, nullptr);
    QVERIFY(!results.isGreen());
}

void TestDFDetailToolbar::withoutStationsTheColourStays()
{
    DriverValues driver;
    const Results results;
    QVERIFY(driver.remove("Values/Result/SelectedDF"));
    driver.resultTime->SetValue(winterNoon, nullptr);
    QVERIFY(results.isGreen());
}

void TestDFDetailToolbar::theGreenFillsAllColourGroups()
{
    const DriverValues driver;
    const Results results;
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
        QCOMPARE(results.ground(group).color(), QColor(Qt::green));
        QCOMPARE(results.ground(group).style(), Qt::SolidPattern);
    }
    // It is seen: the button paints its ground.
    results.bar->show();
    QVERIFY(QTest::qWaitForWindowExposed(results.bar.get()));
    const QImage shown = results.button()->grab().toImage();
    QCOMPARE(shown.pixelColor(shown.width() - 2, shown.height() / 2), QColor(Qt::green));
}

void TestDFDetailToolbar::otherCodesAreIgnored()
{
    const DriverValues driver;
    driver.resultTime->SetValue(winterNoon, nullptr);
    const Results results;
    QSignalSpy arrived(results.detail.data(), &DFDetailToolbar::LocateResultArrived);
    {
        // Another content that nobody is told of as such.
        driver.quality->StartTransaction(nullptr);
        driver.quality->Select(DriverValues::South);
        driver.quality->EndTransaction(ChangeLimits);
        driver.errors->StartTransaction(nullptr);
        driver.errors->Select(DriverValues::South);
        driver.errors->EndTransaction(ChangeLimits);
    }
    for (const TChangeCode code : {ChangeState, ChangeLimits, ChangeItems, ChangeExternal}) {
        for (values::ValueBase* value : values::Tree::Instance()->ValuesBelow(toolbarPath + "Values/Result")) {
            if (value != driver.selectedDf || code != ChangeItems)
                value->HasChanged(code, nullptr);
        }
    }
    QCOMPARE(results.quality(), QStringLiteral("80%"));
    QCOMPARE(results.time(), QStringLiteral("12:00:00"));
    QCOMPARE(driver.quality->GetCurrentKey(), DriverValues::South);
    QCOMPARE(arrived.count(), 0);
}

void TestDFDetailToolbar::aNullNotificationMatchesNoUnboundValue()
{
    const testsupport::FreshTree tree;
    const Results results;
    QSignalSpy arrived(results.detail.data(), &DFDetailToolbar::LocateResultArrived);
    const Traces traces;
    results.detail->Update(nullptr, ChangeContent);
    results.detail->Update(nullptr, ChangeItems);
    QCOMPARE(arrived.count(), 0);
    QVERIFY(traces.records.empty());
}

void TestDFDetailToolbar::oneWholeResultIsShownAndThenItsError()
{
    const DriverValues driver;
    const Results results;
    const auto sendResult = [&driver](const QString& bearing, const QString& quality, const QString& error) {
        setNorth(driver.azimuth, bearing);
        {
            const values::ValueTransaction change = driver.errors->CreateTransaction({ChangeItems}, nullptr);
            setNorth(driver.errors, error);
        }
        setNorth(driver.quality, quality);
        driver.quality->HasChanged(ChangeContent, nullptr);
        driver.resultTime->SetValue(winterNoon, nullptr);
        driver.errors->HasChanged(ChangeContent, nullptr);
    };
    sendResult("44.0", "91", QString());
    QCOMPARE(results.bearing(), QStringLiteral("44.0") + degrees);
    QCOMPARE(results.quality(), QStringLiteral("91%"));
    QCOMPARE(results.time(), QStringLiteral("12:00:00"));
    sendResult("0.0", "0", "-17");
    QCOMPARE(results.bearing(), nothing);
    QCOMPARE(results.quality(), nothing);
    QCOMPARE(results.time(), QStringLiteral("No signal"));
}

// ---- Pressing the button ----

void TestDFDetailToolbar::pressingWithoutResultValuesOpensNothing()
{
    const testsupport::FreshTree tree;
    const Results results;
    const int windows = QApplication::topLevelWidgets().size();
    results.press();
    QCOMPARE(QApplication::topLevelWidgets().size(), windows);
    QCOMPARE(results.bearing(), nothing);
}

void TestDFDetailToolbar::pressingLinksWhatHasAppeared()
{
    const testsupport::FreshTree tree;
    const Results results;
    const DriverValues driver;
    driver.resultTime->SetValue(winterNoon, nullptr);
    QCOMPARE(results.bearing(), nothing);
    results.press();
    QCOMPARE(results.combo()->GetValueSelection(), driver.selectedDf);
    QCOMPARE(results.bearing(), QStringLiteral("12.5") + degrees);
    QCOMPARE(results.quality(), QStringLiteral("80%"));
    QCOMPARE(results.time(), QStringLiteral("12:00:00"));
    QVERIFY(results.isGreen());
    for (const values::ValueBase* value : values::Tree::Instance()->ValuesBelow(toolbarPath + "Values/Result")) {
        if (value->GetName() != QLatin1String("CyclicLocateStarted"))
            QVERIFY2(value->IsObservedBy(results.detail), qPrintable(value->GetPathName()));
    }
    driver.selectedDf->Select(DriverValues::South);
    QCOMPARE(results.time(), QStringLiteral("Timeout"));
}

void TestDFDetailToolbar::pressingUpdatesOnlyWhatIsNew()
{
    DriverValues driver({"Values/Result/DFLongitude"});
    driver.resultTime->SetValue(winterNoon, nullptr);
    const Results results;
    setNorth(driver.errors, "-14");
    driver.errors->HasChanged(ChangeContent, nullptr);
    // Other contents that nobody has been told of yet.
    setNorth(driver.errors, "-17");
    setNorth(driver.azimuth, "99.0");
    auto* const longitude = driver.tree.add<values::ValueSelection>(toolbarPath + "Values/Result/DFLongitude");
    results.press();
    QVERIFY(longitude->IsObservedBy(results.detail));
    QCOMPARE(results.time(), QStringLiteral("Timeout"));
    QCOMPARE(results.bearing(), QStringLiteral("12.5") + degrees);
}

void TestDFDetailToolbar::pressingShowsAnErrorThatHasAppeared()
{
    DriverValues driver({"Values/Result/Frequency"});
    setNorth(driver.errors, "-3");
    driver.resultTime->SetValue(winterNoon, nullptr);
    const Results results;
    QCOMPARE(results.time(), QStringLiteral("12:00:00"));
    driver.tree.add<values::StringValue>(toolbarPath + "Values/Result/Frequency");
    results.press();
    QCOMPARE(results.time(), QStringLiteral("Not in time range"));
}

void TestDFDetailToolbar::pressingActsOnThePressAndNotOnTheRelease()
{
    const testsupport::FreshTree tree;
    const Results results;
    results.press();
    const DriverValues driver;
    QTest::mouseRelease(results.button(), Qt::LeftButton);
    QVERIFY(results.combo()->GetValueSelection() == nullptr);
    results.press();
    QCOMPARE(results.combo()->GetValueSelection(), driver.selectedDf);
}

void TestDFDetailToolbar::pressingFindsAValueThatCameBack()
{
    DriverValues driver;
    const Results results;
    QVERIFY(driver.remove("Values/Result/SelectedDF"));
    QVERIFY(results.combo()->GetValueSelection() == nullptr);
    auto* const again = driver.tree.add<values::ValueSelection>(toolbarPath + "Values/Result/SelectedDF");
    again->AddItem("South", 0.0, DriverValues::South);
    results.press();
    QCOMPARE(results.combo()->GetValueSelection(), again);
    again->Select(DriverValues::South);
    QCOMPARE(driver.azimuth->GetCurrentKey(), DriverValues::South);
}

// ---- The window of detailed results ----

void TestDFDetailToolbar::pressingOpensTheWindow()
{
    const DriverValues driver;
    const Results results;
    QCOMPARE(resultWindows().size(), 0);
    results.press();
    QCOMPARE(resultWindows().size(), 1);
    const DFDetailedResults* const window = resultWindows().first();
    QVERIFY(window->isVisible());
    QVERIFY(window->parent() == nullptr);
    QCOMPARE(window->windowTitle(), QStringLiteral("DF/Locate detailed results"));
    QCOMPARE(window->m_pTable->rowCount(), 2);
    QCOMPARE(window->m_pTable->item(0, 2)->text(), QStringLiteral("12.5") + degrees);
}

void TestDFDetailToolbar::pressingAgainShowsAndActivatesTheWindow()
{
    const DriverValues driver;
    const Results results;
    results.press();
    DFDetailedResults* const window = resultWindows().first();
    window->close();
    QVERIFY(!window->isVisible());
    results.press();
    QCOMPARE(resultWindows(), QList<DFDetailedResults*>{window});
    QVERIFY(window->isVisible());

    QWidget inFront;
    inFront.show();
    inFront.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&inFront));
    results.press();
    QTRY_COMPARE(QApplication::activeWindow(), window);
}

void TestDFDetailToolbar::theWindowNeedsStationsAzimuthAndQuality_data()
{
    QTest::addColumn<QString>("missing");
    QTest::addColumn<bool>("opens");

    QTest::newRow("stations") << "SelectedDF" << false;
    QTest::newRow("azimuth") << "Azimuth" << false;
    QTest::newRow("quality") << "Quality" << false;
    for (const char* name : {"Errors", "DFLongitude", "DFLatitude", "QualityThreshold", "ResultTime", "Frequency"})
        QTest::newRow(name) << name << true;
}

void TestDFDetailToolbar::theWindowNeedsStationsAzimuthAndQuality()
{
    QFETCH(QString, missing);
    QFETCH(bool, opens);
    const DriverValues driver({"Values/Result/" + missing});
    const Results results;
    results.press();
    QCOMPARE(resultWindows().size(), opens ? 1 : 0);
}

void TestDFDetailToolbar::pressingOnceMoreOpensTheWindowWhenTheValuesHaveCome()
{
    const testsupport::FreshTree tree;
    const Results results;
    results.press();
    QCOMPARE(resultWindows().size(), 0);
    const DriverValues driver;
    results.press();
    QCOMPARE(resultWindows().size(), 1);
    QCOMPARE(resultWindows().first()->m_pTable->rowCount(), 2);
}

void TestDFDetailToolbar::aNewStationListRefreshesTheWindow()
{
    const DriverValues driver;
    const Results results;
    results.press();
    const QTableWidget* const table = resultWindows().first()->m_pTable;
    driver.azimuth->AddItem("99.0", 0.0, 9);
    driver.quality->AddItem("99", 0.0, 9);
    driver.selectedDf->AddItem("West", 0.0, 9);
    QCOMPARE(table->rowCount(), 3);
    QCOMPARE(table->item(2, 0)->text(), QStringLiteral("West"));
    QCOMPARE(table->item(2, 2)->text(), QStringLiteral("99.0") + degrees);
    driver.selectedDf->DeleteItem(DriverValues::North);
    QCOMPARE(table->rowCount(), 2);
    QCOMPARE(table->item(0, 0)->text(), QStringLiteral("South"));
    resultWindows().first()->close();
    driver.selectedDf->DeleteItems();
    QCOMPARE(table->rowCount(), 0);
}

void TestDFDetailToolbar::aNewStationListIsRefreshedAfterTheKeyIsCopied()
{
    int rowsWhenCopied = -1;
    RecordingObserver noting([&rowsWhenCopied](Observable*, TChangeCode code) {
        if (code == ChangeContent)
            rowsWhenCopied = resultWindows().first()->m_pTable->rowCount();
    });
    const DriverValues driver;
    const Results results;
    results.press();
    driver.errors->AddObserver(&noting);
    {
        // Another choice that is told with the new list, not before it.
        const values::ValueTransaction change = driver.selectedDf->CreateTransaction({ChangeItems}, nullptr);
        driver.selectedDf->AddItem("West", 0.0, 9);
        driver.selectedDf->Select(DriverValues::South);
    }
    QCOMPARE(rowsWhenCopied, 2);
    QCOMPARE(resultWindows().first()->m_pTable->rowCount(), 3);
    QCOMPARE(results.time(), QStringLiteral("Timeout"));
}

void TestDFDetailToolbar::anotherStationDoesNotRefreshTheWindow()
{
    const DriverValues driver;
    const Results results;
    results.press();
    const QTableWidget* const table = resultWindows().first()->m_pTable;
    setNorth(driver.azimuth, "99.0");
    driver.selectedDf->Select(DriverValues::South);
    driver.quality->HasChanged(ChangeContent, nullptr);
    driver.errors->HasChanged(ChangeContent, nullptr);
    QCOMPARE(table->item(0, 2)->text(), QStringLiteral("12.5") + degrees);
    driver.selectedDf->HasChanged(ChangeItems, nullptr);
    QCOMPARE(table->item(0, 2)->text(), QStringLiteral("99.0") + degrees);
}

void TestDFDetailToolbar::aNewStationListOpensNoWindow()
{
    const DriverValues driver;
    const Results results;
    driver.selectedDf->AddItem("West", 0.0, 9);
    driver.resultTime->SetValue(winterNoon, nullptr);
    QCOMPARE(resultWindows().size(), 0);
}

void TestDFDetailToolbar::aWholeResultIsShownInTheWindow()
{
    const DriverValues driver;
    const Results results;
    results.press();
    const DFDetailedResults* const window = resultWindows().first();
    {
        const values::ValueTransaction change = driver.selectedDf->CreateTransaction({ChangeItems}, nullptr);
        driver.selectedDf->DeleteItem(DriverValues::South);
        driver.selectedDf->AddItem("West", 0.0, 9);
    }
    driver.azimuth->AddItem("99.0", 0.0, 9);
    {
        const values::ValueTransaction change = driver.errors->CreateTransaction({ChangeItems}, nullptr);
        driver.errors->AddItem("-3", 0.0, 9);
    }
    driver.quality->AddItem("75", 0.0, 9);
    driver.quality->HasChanged(ChangeContent, nullptr);
    driver.resultTime->SetValue(winterNoon, nullptr);
    driver.errors->HasChanged(ChangeContent, nullptr);
    QCOMPARE(window->m_pDateTimeLabel->text(), QStringLiteral("2026-01-15 12:00:00"));
    QStringList west;
    for (int column = 0; column < 8; ++column)
        west << window->m_pTable->item(1, column)->text();
    QCOMPARE(west, (QStringList{"West", "433.92 MHz", "99.0" + degrees, nothing, "75%", nothing, nothing,
                                "Not in time range"}));
}

namespace {

/// Fails in the texts of the window.
class FailingTranslator : public QTranslator
{
public:
    FailingTranslator() { QCoreApplication::installTranslator(this); }
    ~FailingTranslator() override { QCoreApplication::removeTranslator(this); }
    FailingTranslator(const FailingTranslator&) = delete;
    FailingTranslator& operator=(const FailingTranslator&) = delete;

    [[nodiscard]] bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* sourceText, const char*, int) const override
    {
        if (QLatin1String(context) == QLatin1String("DFLocateDetailedResultsWidget"))
            throw std::runtime_error("out of words");
        return QString::fromUtf8(sourceText);
    }
};

} // namespace

void TestDFDetailToolbar::aWindowThatCannotBeMadeIsTraced()
{
    const DriverValues driver;
    const Results results;
    {
        const FailingTranslator failing;
        const Traces traces;
        results.press();
        QCOMPARE(traces.records.size(), std::size_t(1));
        QCOMPARE(traces.records[0].text, QStringLiteral("Exception in DFDetailToolbar::SlotDetailedResults"));
    }
    QCOMPARE(resultWindows().size(), 0);
    results.press();
    QCOMPARE(resultWindows().size(), 1);
}

void TestDFDetailToolbar::theWindowGoesWithTheToolbar()
{
    const DriverValues driver;
    const std::size_t before = driver.resultTime->GetObserverCount();
    {
        const Results results;
        results.press();
        QCOMPARE(resultWindows().size(), 1);
    }
    QCOMPARE(resultWindows().size(), 0);
    QCOMPARE(driver.resultTime->GetObserverCount(), before);
}

void TestDFDetailToolbar::theToolbarMayGoAfterTheWindow()
{
    const DriverValues driver;
    Results results;
    results.press();
    delete resultWindows().first();
    driver.selectedDf->AddItem("West", 0.0, 9);
    results.bar.reset();
    QVERIFY(results.detail == nullptr);
}

void TestDFDetailToolbar::aWindowThatWasDeletedIsMadeAnew()
{
    const DriverValues driver;
    const Results results;
    results.press();
    delete resultWindows().first();
    results.press();
    QCOMPARE(resultWindows().size(), 1);
    QVERIFY(resultWindows().first()->isVisible());
}

void TestDFDetailToolbar::aWindowThatIsDeletedWhenClosedIsMadeAnew()
{
    const DriverValues driver;
    const Results results;
    results.press();
    resultWindows().first()->setAttribute(Qt::WA_DeleteOnClose);
    resultWindows().first()->close();
    QTRY_COMPARE(resultWindows().size(), 0);
    driver.selectedDf->AddItem("West", 0.0, 9);
    results.press();
    QCOMPARE(resultWindows().size(), 1);
    QCOMPARE(resultWindows().first()->m_pTable->rowCount(), 3);
}

void TestDFDetailToolbar::theWindowMayGoWhileTheKeyIsCopied()
{
    RecordingObserver deleting([](Observable*, TChangeCode) { qDeleteAll(resultWindows()); });
    const DriverValues driver;
    const Results results;
    results.press();
    driver.errors->AddObserver(&deleting);
    driver.selectedDf->AddItem("West", 0.0, 9);
    QCOMPARE(resultWindows().size(), 0);
}

// ---- Lives and deaths ----

void TestDFDetailToolbar::eachResultValueMayGo_data()
{
    everyResultValueIsBound_data();
}

void TestDFDetailToolbar::eachResultValueMayGo()
{
    QFETCH(QString, name);
    const DriverValues driver;
    const Results results;
    const QString path = toolbarPath + QLatin1String("Values/Result/");
    QVERIFY(values::Tree::Instance()->DeleteValue(path + name));
    for (const values::ValueBase* value : values::Tree::Instance()->ValuesBelow(path)) {
        const_cast<values::ValueBase*>(value)->HasChanged(ChangeContent, nullptr);
        const_cast<values::ValueBase*>(value)->HasChanged(ChangeItems, nullptr);
    }
    results.press();
    QVERIFY(results.detail != nullptr);
}

void TestDFDetailToolbar::valuesMayGoWhileTheKeyIsCopied()
{
    const DriverValues driver;
    const Results results;
    RecordingObserver deleting([](Observable*, TChangeCode code) {
        if (code == ChangeContent)
            values::Tree::Instance()->Clear();
    });
    values::ValueObservingPtr<values::ValueSelection> binding(&deleting);
    binding.Assign(driver.azimuth);
    driver.selectedDf->Select(DriverValues::South);
    QVERIFY(results.combo()->GetValueSelection() == nullptr);
    QCOMPARE(results.time(), nothing);
}

void TestDFDetailToolbar::theToolbarMayGoWhileTheKeyIsCopied_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : {"Azimuth", "Quality", "Errors"})
        QTest::newRow(name) << name;
}

void TestDFDetailToolbar::theToolbarMayGoWhileTheKeyIsCopied()
{
    QFETCH(QString, name);
    const DriverValues driver;
    Results results;
    RecordingObserver deleting([&](Observable*, TChangeCode) { results.bar.reset(); });
    values::ValueObservingPtr<values::ValueSelection> binding(&deleting);
    QVERIFY(values::LinkByPath(binding, toolbarPath + QLatin1String("Values/Result/") + name));
    driver.selectedDf->Select(DriverValues::South);
    QVERIFY(results.detail == nullptr);
}

void TestDFDetailToolbar::theToolbarMayGoInTheSignal()
{
    const DriverValues driver;
    Results results;
    connect(results.detail.data(), &DFDetailToolbar::LocateResultArrived, this, [&] { results.bar.reset(); });
    driver.resultTime->SetValue(winterNoon, nullptr);
    QVERIFY(results.detail == nullptr);
}

void TestDFDetailToolbar::theObjectMayGoBeforeItsToolbar()
{
    const DriverValues driver;
    const Results results;
    delete results.detail.data();
    driver.selectedDf->Select(DriverValues::South);
    QCOMPARE(driver.azimuth->GetCurrentKey(), DriverValues::North);
    results.press();
    QCOMPARE(results.combo()->currentText(), QStringLiteral("South"));
}

void TestDFDetailToolbar::theTreeMayGoBeforeTheToolbar()
{
    std::unique_ptr<Results> results;
    {
        const DriverValues driver;
        results = std::make_unique<Results>();
    }
    results->press();
    QVERIFY(results->combo()->GetValueSelection() == nullptr);
}

void TestDFDetailToolbar::twoToolbarsShowTheSameResult()
{
    const DriverValues driver;
    const Results first;
    auto second = std::make_unique<Results>();
    driver.qualityThreshold->SetValue(40, nullptr);
    driver.selectedDf->Select(DriverValues::South);
    QCOMPARE(first.bearing(), QStringLiteral("271.0") + degrees);
    QCOMPARE(second->bearing(), first.bearing());
    second.reset();
    driver.selectedDf->Select(DriverValues::North);
    QCOMPARE(first.bearing(), QStringLiteral("12.5") + degrees);
}

void TestDFDetailToolbar::anExceptionIsTracedAndGoesNoFurther()
{
    const DriverValues driver;
    const Results results;
    RecordingObserver failing([](Observable*, TChangeCode) { throw std::runtime_error("out of order"); });
    values::ValueObservingPtr<values::ValueSelection> binding(&failing);
    binding.Assign(driver.azimuth);
    const Traces traces;
    driver.selectedDf->Select(DriverValues::South);
    QCOMPARE(traces.records.size(), std::size_t(1));
    QCOMPARE(traces.records[0].text, QStringLiteral("Exception in DFDetailToolbar::Update"));
    QCOMPARE(traces.records[0].sourceFile,
             QStringLiteral("userinterface/guicomponents/dflocatecomponent/dfdetailtoolbar"));
}

DFL_TEST_MAIN(TestDFDetailToolbar)
#include "tst_dfdetailtoolbar.moc"
