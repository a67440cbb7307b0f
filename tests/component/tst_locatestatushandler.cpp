#include "locatestatushandler.h"

#include "boxwatchdog.h"
#include "clicklabel.h"
#include "devicecontrol/guicentral.h"
#include "guicomponentbase/guicomponentcommon.h"

#include "support/freshtree.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "support/traces.h"

#include <QSignalSpy>
#include <QTranslator>
#include <QVector>

#include <memory>
#include <stdexcept>

using namespace VelmarGui;
using testsupport::BoxWatchdog;
using testsupport::FreshTree;
using testsupport::RecordingObserver;
using testsupport::SeenBox;
using testsupport::Traces;

namespace {

const QString componentRoot = QStringLiteral("/GUI/DFLocateComponent/");
const QString handlerRoot = QStringLiteral("/GUI/DFLocateHandler/");
const QString dfStatusPath = handlerRoot + QStringLiteral("Values/Status/LocateStatus");
const QString hriStatusPath = QStringLiteral("/DRV/DRIVER/DFLOCATE/LocateHRIStatus");
const QString frequencyPath = QStringLiteral("/GLOBAL/Frequency");

const QString availableStation = QStringLiteral("DFID3#N_North#ST1#FB20000000#FE3000000000");

const QStringList indicatorNames{
    QStringLiteral("LocateDFConnectedIndicator"),
    QStringLiteral("LocateHRIConnectedIndicator"),
    QStringLiteral("LocateDFUsableIndicator"),
    QStringLiteral("LocateHRIUsableIndicator"),
};

template <typename T>
T* find(const QString& path)
{
    return dynamic_cast<T*>(values::Tree::Instance()->FindValue(path));
}

values::BoolValue* indicator(const QString& name)
{
    return find<values::BoolValue>(componentRoot + name);
}

bool reads(const char* name)
{
    return indicator(QLatin1String(name))->GetValue();
}

QImage icon(const char* path)
{
    return QPixmap(QLatin1String(path)).toImage();
}

QImage lampImage(const char* path)
{
    return QPixmap(QLatin1String(path)).scaled(20, 20, Qt::IgnoreAspectRatio, Qt::SmoothTransformation).toImage();
}

/// The driver's side: the status texts and the frequency.
struct Driver
{
    const FreshTree& tree;
    values::StringValue* df = tree.add<values::StringValue>(dfStatusPath);
    values::StringValue* hri = tree.add<values::StringValue>(hriStatusPath);
    values::DoubleValue* frequency = tree.add<values::DoubleValue>(frequencyPath);

    explicit Driver(const FreshTree& freshTree)
        : tree(freshTree)
    {
        frequency->SetValue(100e6, nullptr);
    }
};

/// A status display in a window of its own.
struct Display
{
    QWidget window;
    LocateStatusHandler handler;
    QSignalSpy usable{&handler, SIGNAL(si_locateUsable(bool, bool))};

    explicit Display(GuiComponentCommon& common)
        : handler(&window, &common, componentRoot, handlerRoot)
    {
    }

    [[nodiscard]] QLabel* Lamp() const { return window.findChild<QLabel*>(QStringLiteral("Led Label")); }
    [[nodiscard]] QImage LampImage() const { return Lamp()->pixmap(Qt::ReturnByValue).toImage(); }
    void Click() const { QTest::mouseClick(Lamp(), Qt::LeftButton); }
};

/// How often a widget is painted.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget* widget) { widget->installEventFilter(this); }
    [[nodiscard]] int count() const { return m_count; }
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        m_count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }

private:
    int m_count = 0;
};

} // namespace

class TestLocateStatusHandler : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // Construction
    void isMadeWithADarkLampAndTouchesNoValue();
    void offersOneSignalThenOneSlot();
    void castsToItsNamedBases();

    // Set-up
    void setUpCreatesAndPublishesTheIndicatorsInOrder();
    void indicatorsThatExistAreUsed();
    void anIndicatorPathTakenByAnotherKindGetsAValueOutsideTheTree();
    void missingValuesAreTraced();
    void tracesNeedTheirBitInTheMask();
    void withAllValuesNothingIsTraced();
    void valuesOfAnotherKindCountAsMissing();
    void theFrequencyIsFoundThroughItsGlobalName();
    void setUpEvaluatesOnce();
    void setUpTwiceChangesNothing();
    void valuesThatAppearLaterAreBoundByTheNextSetUp();

    // Evaluation
    void connectedMeansANonEmptyText();
    void dfUsableIgnoresTheFrequency();
    void hriUsableNeedsAnAvailableStationAndTheFrequencyInARange_data();
    void hriUsableNeedsAnAvailableStationAndTheFrequencyInARange();
    void theRangeOfAnUnavailableStationCountsToo();
    void hriIsNotUsableWithoutAFrequency();
    void theLampIsLitWhenAnythingIsUsable_data();
    void theLampIsLitWhenAnythingIsUsable();
    void everyEvaluationTellsWhatIsUsable();
    void aChangeOfFrequencyReadsNoText();
    void theLampIsDrawnAnewOnlyWhenItChanges();
    void withoutOneStatusTextUsabilityIsLeftAlone_data();
    void withoutOneStatusTextUsabilityIsLeftAlone();

    // Notifications
    void everyObservedValueLeadsToAnEvaluation();
    void onlyContentChangesCount();
    void otherSourcesAreIgnored();
    void aNotificationWithoutSourceMatchesNoMissingValue();
    void aStatusTextThatVanishesIsUnboundAndNoLongerConnected();
    void aVanishedFrequencyMakesHriUnusableAtTheNextChange();
    void aVanishedIndicatorReadsFalseUntilTheNextSetUp();
    void anObserverMayChangeAStatusTextInsideTheEvaluation();
    void anObserverMaySilenceTheDriverInsideTheEvaluation();
    void anObserverMayDeleteTheDisplayInsideTheEvaluation_data();
    void anObserverMayDeleteTheDisplayInsideTheEvaluation();
    void anObserverThatThrowsIsTracedAndDoesNotReachTheDriver();

    // Report
    void withoutAFrequencyTheReportSaysNotYetConnected();
    void theReportShowsBothServices();
    void theReportPictureFollowsUsability_data();
    void theReportPictureFollowsUsability();
    void withoutUsableIndicatorsTheReportHasNoPicture_data();
    void withoutUsableIndicatorsTheReportHasNoPicture();
    void anEmptiedTextIsReportedAsNotConnected();
    void aVanishedStationStaysInTheReport();
    void theReportShowsWhatItWasOpenedWith();
    void anyButtonOpensTheReport();
    void theDisplayMayBeDeletedWhileItsReportIsOpen_data();
    void theDisplayMayBeDeletedWhileItsReportIsOpen();
    void theMainWindowMayBeDeletedWhileItsBoxIsOpen();
    void textsAreTranslatedInTheClassContext();

    // Life
    void theLampMayGoFirst();
    void theDisplayMayGoFirst();
    void theIndicatorsOutliveTheDisplay();
    void theTreeMayGoFirst();
    void twoDisplaysShareTheIndicators();

private:
    std::unique_ptr<FreshTree> m_tree;
    std::unique_ptr<GuiComponentCommon> m_common;
};

void TestLocateStatusHandler::init()
{
    m_tree = std::make_unique<FreshTree>();
    m_common = std::make_unique<GuiComponentCommon>();
}

void TestLocateStatusHandler::cleanup()
{
    m_common.reset();
    m_tree.reset();
}

void TestLocateStatusHandler::isMadeWithADarkLampAndTouchesNoValue()
{
    const Traces traces;
    const Driver driver(*m_tree);
    const Display display(*m_common);
    QVERIFY(qobject_cast<ClickLabel*>(display.Lamp()));
    QCOMPARE(display.handler.GetLamp(), display.Lamp());
    QCOMPARE(display.Lamp()->parentWidget(), &display.window);
    QCOMPARE(display.Lamp()->toolTip(), QStringLiteral("Locate states"));
    QCOMPARE(display.LampImage().size(), QSize(20, 20));
    QCOMPARE(display.LampImage(), lampImage(":/icons/Off"));
    for (const QString& name : indicatorNames)
        QVERIFY(!indicator(name));
    QVERIFY(!driver.df->IsObservedBy(&display.handler));
    QVERIFY(traces.records.empty());
}

void TestLocateStatusHandler::offersOneSignalThenOneSlot()
{
    const QMetaObject& meta = LocateStatusHandler::staticMetaObject;
    QCOMPARE(meta.className(), "VelmarGui::LocateStatusHandler");
    QCOMPARE(meta.superClass(), &QObject::staticMetaObject);
    const int first = meta.methodOffset();
    QCOMPARE(meta.methodCount() - first, 2);
    QCOMPARE(meta.method(first).methodType(), QMetaMethod::Signal);
    QCOMPARE(meta.method(first).methodSignature(), QByteArray("si_locateUsable(bool,bool)"));
    QCOMPARE(meta.method(first).parameterNames(), (QList<QByteArray>{QByteArray(), QByteArray()}));
    QCOMPARE(meta.method(first + 1).methodType(), QMetaMethod::Slot);
    QCOMPARE(meta.method(first + 1).methodSignature(), QByteArray("slot_open()"));
}

void TestLocateStatusHandler::castsToItsNamedBases()
{
    Display display(*m_common);
    LocateStatusHandler& handler = display.handler;
    QCOMPARE(handler.qt_metacast("VelmarGui::LocateStatusHandler"), static_cast<void*>(&handler));
    QCOMPARE(handler.qt_metacast("GuiComponentTools"), static_cast<void*>(static_cast<GuiComponentTools*>(&handler)));
    QCOMPARE(handler.qt_metacast("IObserver"), static_cast<void*>(static_cast<IObserver*>(&handler)));
}

void TestLocateStatusHandler::setUpCreatesAndPublishesTheIndicatorsInOrder()
{
    class InsertionListener : public values::ITreeListener
    {
    public:
        InsertionListener() { values::Tree::Instance()->AddListener(this); }
        ~InsertionListener() override { values::Tree::Instance()->RemoveListener(this); }
        void ValueInserted(values::ValueBase* value) override { paths.append(value->GetPathName()); }
        void ValueRemoved(const QString& /*path*/) override {}
        QStringList paths;
    };
    const InsertionListener listener;
    Display display(*m_common);
    display.handler.SetUpValues();
    QStringList expected;
    for (const QString& name : indicatorNames)
        expected.append(componentRoot + name);
    QCOMPARE(listener.paths, expected);
    for (const QString& name : indicatorNames) {
        QVERIFY(indicator(name));
        QCOMPARE(display.handler.GetGlobalValue(name), indicator(name));
        QCOMPARE(indicator(name)->GetValue(), false);
    }
}

void TestLocateStatusHandler::indicatorsThatExistAreUsed()
{
    Driver driver(*m_tree);
    auto* const existing = m_tree->add<values::BoolValue>(componentRoot + indicatorNames.at(0));
    driver.df->SetValue(availableStation, nullptr);
    Display display(*m_common);
    display.handler.SetUpValues();
    QCOMPARE(indicator(indicatorNames.at(0)), existing);
    QCOMPARE(existing->GetValue(), true);
    QCOMPARE(display.handler.GetGlobalValue(indicatorNames.at(0)), existing);
}

void TestLocateStatusHandler::anIndicatorPathTakenByAnotherKindGetsAValueOutsideTheTree()
{
    const Traces traces;
    Driver driver(*m_tree);
    driver.df->SetValue(availableStation, nullptr);
    auto* const other = m_tree->add<values::IntValue>(componentRoot + indicatorNames.at(2));
    std::unique_ptr<values::ValueBase> outside;
    {
        Display display(*m_common);
        display.handler.SetUpValues();
        outside.reset(display.handler.GetGlobalValue(indicatorNames.at(2)));
        auto* const usable = dynamic_cast<values::BoolValue*>(outside.get());
        QVERIFY(usable);
        QVERIFY(!usable->IsInTree());
        QCOMPARE(usable->GetValue(), true);
        QCOMPARE(display.usable.takeLast(), (QVariantList{false, true}));
    }
    QCOMPARE(find<values::IntValue>(componentRoot + indicatorNames.at(2)), other);
    QCOMPARE(other->GetValue(), 0);
    QVERIFY(traces.records.empty());
}

void TestLocateStatusHandler::missingValuesAreTraced()
{
    const Traces traces;
    Display display(*m_common);
    display.handler.SetUpValues();
    QCOMPARE(traces.records.size(), std::size_t(3));
    QCOMPARE(traces.records[0].text, QStringLiteral("Missing DF Value LocateStatus"));
    QCOMPARE(traces.records[1].text, QStringLiteral("Missing DF Value LocateHRIStatus"));
    QCOMPARE(traces.records[2].text, QStringLiteral("Missing DF Value Frequency"));
    unsigned short lastLine = 0;
    for (const TraceRecord& record : traces.records) {
        QCOMPARE(record.sourceFile,
                 QStringLiteral("userinterface/guicomponents/dflocatecomponent/locatestatushandler "));
        QVERIFY(record.line > lastLine);
        lastLine = record.line;
    }
}

void TestLocateStatusHandler::tracesNeedTheirBitInTheMask()
{
    const Traces traces(~ErrorHandler::ComponentTraces);
    Display display(*m_common);
    display.handler.SetUpValues();
    QVERIFY(traces.records.empty());
}

void TestLocateStatusHandler::withAllValuesNothingIsTraced()
{
    const Traces traces;
    const Driver driver(*m_tree);
    Display display(*m_common);
    display.handler.SetUpValues();
    QVERIFY(traces.records.empty());
}

void TestLocateStatusHandler::valuesOfAnotherKindCountAsMissing()
{
    const Traces traces;
    m_tree->add<values::IntValue>(dfStatusPath);
    m_tree->add<values::ValueSelection>(hriStatusPath);
    m_tree->add<values::IntValue>(frequencyPath);
    Display display(*m_common);
    display.handler.SetUpValues();
    QCOMPARE(traces.records.size(), std::size_t(3));
    QCOMPARE(display.usable.count(), 0);
}

void TestLocateStatusHandler::theFrequencyIsFoundThroughItsGlobalName()
{
    const Traces traces;
    Driver driver(*m_tree);
    auto* const published = m_tree->add<values::DoubleValue>(QStringLiteral("/DRV/Receiver/Tuned"));
    published->SetValue(25e6, nullptr);
    Display display(*m_common);
    display.handler.AddGlobalValue(published, QStringLiteral("Frequency"), nullptr, nullptr);
    driver.hri->SetValue(QStringLiteral("DFID1#ST1#FB20000000#FE30000000"), nullptr);
    display.handler.SetUpValues();
    QVERIFY(traces.records.empty());
    QVERIFY(reads("LocateHRIUsableIndicator"));
    QVERIFY(published->IsObservedBy(&display.handler));
    QVERIFY(!driver.frequency->IsObservedBy(&display.handler));
}

void TestLocateStatusHandler::setUpEvaluatesOnce()
{
    Driver driver(*m_tree);
    driver.df->SetValue(availableStation, nullptr);
    driver.hri->SetValue(availableStation, nullptr);
    Display display(*m_common);
    display.handler.SetUpValues();
    QCOMPARE(display.usable.count(), 1);
    QCOMPARE(display.usable.takeFirst(), (QVariantList{true, true}));
    for (const QString& name : indicatorNames)
        QVERIFY2(indicator(name)->GetValue(), qPrintable(name));
}

void TestLocateStatusHandler::setUpTwiceChangesNothing()
{
    const Traces traces;
    Driver driver(*m_tree);
    driver.df->SetValue(availableStation, nullptr);
    Display display(*m_common);
    display.handler.SetUpValues();
    std::vector<std::size_t> observers;
    for (const QString& name : indicatorNames)
        observers.push_back(indicator(name)->GetObserverCount());
    const std::size_t statusObservers = driver.df->GetObserverCount();
    display.handler.SetUpValues();
    QCOMPARE(display.usable.count(), 2);
    QCOMPARE(display.usable.at(0), display.usable.at(1));
    QCOMPARE(driver.df->GetObserverCount(), statusObservers);
    for (int i = 0; i < indicatorNames.size(); ++i)
        QCOMPARE(indicator(indicatorNames.at(i))->GetObserverCount(), observers[static_cast<std::size_t>(i)]);
    driver.df->SetValue(QString(), nullptr);
    QCOMPARE(display.usable.count(), 3);
    QVERIFY(traces.records.empty());
}

void TestLocateStatusHandler::valuesThatAppearLaterAreBoundByTheNextSetUp()
{
    Display display(*m_common);
    display.handler.SetUpValues();
    Driver driver(*m_tree);
    driver.df->SetValue(availableStation, nullptr);
    QCOMPARE(display.usable.count(), 0);
    QVERIFY(!reads("LocateDFConnectedIndicator"));
    display.handler.SetUpValues();
    QCOMPARE(display.usable.count(), 1);
    QVERIFY(reads("LocateDFConnectedIndicator"));
    QVERIFY(reads("LocateDFUsableIndicator"));
}

void TestLocateStatusHandler::connectedMeansANonEmptyText()
{
    Driver driver(*m_tree);
    Display display(*m_common);
    display.handler.SetUpValues();
    QVERIFY(!reads("LocateDFConnectedIndicator"));
    QVERIFY(!reads("LocateHRIConnectedIndicator"));
    driver.df->SetValue(QStringLiteral(" "), nullptr);
    QVERIFY(reads("LocateDFConnectedIndicator"));
    QVERIFY(!reads("LocateHRIConnectedIndicator"));
    driver.hri->SetValue(QStringLiteral("#"), nullptr);
    QVERIFY(reads("LocateHRIConnectedIndicator"));
    driver.df->SetValue(QString(), nullptr);
    QVERIFY(!reads("LocateDFConnectedIndicator"));
    QVERIFY(reads("LocateHRIConnectedIndicator"));
}

void TestLocateStatusHandler::dfUsableIgnoresTheFrequency()
{
    Driver driver(*m_tree);
    driver.frequency->SetValue(1, nullptr);
    driver.df->SetValue(availableStation, nullptr);
    Display display(*m_common);
    display.handler.SetUpValues();
    QVERIFY(reads("LocateDFUsableIndicator"));
    driver.df->SetValue(QStringLiteral("DFID3#ST48"), nullptr);
    QVERIFY(!reads("LocateDFUsableIndicator"));
}

void TestLocateStatusHandler::hriUsableNeedsAnAvailableStationAndTheFrequencyInARange_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("frequency");
    QTest::addColumn<bool>("usable");
    QTest::newRow("inside") << availableStation << 100e6 << true;
    QTest::newRow("at the lower end") << availableStation << 20e6 << true;
    QTest::newRow("at the upper end") << availableStation << 3000e6 << true;
    QTest::newRow("below") << availableStation << 19999999.0 << false;
    QTest::newRow("above") << availableStation << 3000000001.0 << false;
    QTest::newRow("in range, not available") << "DFID3#ST48#FB20000000#FE3000000000" << 100e6 << false;
    QTest::newRow("no text") << "" << 100e6 << false;
    QTest::newRow("available without range") << "DFID3#ST1" << 100e6 << false;
}

void TestLocateStatusHandler::hriUsableNeedsAnAvailableStationAndTheFrequencyInARange()
{
    QFETCH(QString, text);
    QFETCH(double, frequency);
    QFETCH(bool, usable);
    Driver driver(*m_tree);
    Display display(*m_common);
    display.handler.SetUpValues();
    driver.hri->SetValue(text, nullptr);
    driver.frequency->SetValue(frequency, nullptr);
    QCOMPARE(reads("LocateHRIUsableIndicator"), usable);
    QCOMPARE(reads("LocateDFUsableIndicator"), false);
}

void TestLocateStatusHandler::theRangeOfAnUnavailableStationCountsToo()
{
    Driver driver(*m_tree);
    driver.hri->SetValue(QStringLiteral("DFID1#ST1#FB1#FE2#DFID2#ST0#FB20000000#FE3000000000"), nullptr);
    Display display(*m_common);
    display.handler.SetUpValues();
    QVERIFY(reads("LocateHRIUsableIndicator"));
}

void TestLocateStatusHandler::hriIsNotUsableWithoutAFrequency()
{
    Driver driver(*m_tree);
    driver.hri->SetValue(QStringLiteral("DFID1#ST1#FB0#FE3000000000"), nullptr);
    values::Tree::Instance()->DeleteValue(frequencyPath);
    Display display(*m_common);
    display.handler.SetUpValues();
    QVERIFY(reads("LocateHRIConnectedIndicator"));
    QVERIFY(!reads("LocateHRIUsableIndicator"));
    QCOMPARE(display.usable.takeLast(), (QVariantList{false, false}));
}

void TestLocateStatusHandler::theLampIsLitWhenAnythingIsUsable_data()
{
    QTest::addColumn<QString>("df");
    QTest::addColumn<QString>("hri");
    QTest::addColumn<QString>("icon");
    QTest::newRow("nothing") << ""
                             << ""
                             << ":/icons/Off";
    QTest::newRow("connected only") << "DFID1"
                                    << "DFID1"
                                    << ":/icons/Off";
    QTest::newRow("DF") << availableStation << ""
                        << ":/icons/On";
    QTest::newRow("HRI") << "" << availableStation << ":/icons/On";
    QTest::newRow("both") << availableStation << availableStation << ":/icons/On";
}

void TestLocateStatusHandler::theLampIsLitWhenAnythingIsUsable()
{
    QFETCH(QString, df);
    QFETCH(QString, hri);
    QFETCH(QString, icon);
    QVERIFY(lampImage(":/icons/On") != lampImage(":/icons/Off"));
    Driver driver(*m_tree);
    Display display(*m_common);
    display.handler.SetUpValues();
    driver.df->SetValue(df, nullptr);
    driver.hri->SetValue(hri, nullptr);
    QCOMPARE(display.LampImage(), lampImage(icon.toLatin1()));
    driver.df->SetValue(QString(), nullptr);
    driver.hri->SetValue(QString(), nullptr);
    QCOMPARE(display.LampImage(), lampImage(":/icons/Off"));
}

void TestLocateStatusHandler::everyEvaluationTellsWhatIsUsable()
{
    Driver driver(*m_tree);
    Display display(*m_common);
    display.handler.SetUpValues();
    driver.df->SetValue(availableStation, nullptr);
    driver.hri->SetValue(availableStation, nullptr);
    driver.frequency->SetValue(1, nullptr);
    driver.df->SetValue(QString(), nullptr);
    QCOMPARE(display.usable.count(), 5);
    QCOMPARE(display.usable.at(0), (QVariantList{false, false}));
    QCOMPARE(display.usable.at(1), (QVariantList{false, true}));
    QCOMPARE(display.usable.at(2), (QVariantList{true, true}));
    QCOMPARE(display.usable.at(3), (QVariantList{false, true}));
    QCOMPARE(display.usable.at(4), (QVariantList{false, false}));
}

void TestLocateStatusHandler::aChangeOfFrequencyReadsNoText()
{
    // Texts whose characters can be changed behind the back of the values: whoever reads them again tells.
    QVector<QChar> characters(availableStation.begin(), availableStation.end());
    const QString text = QString::fromRawData(characters.constData(), characters.size());
    Driver driver(*m_tree);
    driver.df->SetValue(text, nullptr);
    driver.hri->SetValue(text, nullptr);
    Display display(*m_common);
    display.handler.SetUpValues();
    characters[availableStation.indexOf(QLatin1String("ST1")) + 2] = QLatin1Char('0');
    QVERIFY(driver.df->GetValue().contains(QLatin1String("ST0")));
    driver.frequency->SetValue(21e6, nullptr);
    QVERIFY(reads("LocateDFUsableIndicator"));
    QVERIFY(reads("LocateHRIUsableIndicator"));
    driver.frequency->SetValue(19e6, nullptr);
    QVERIFY(!reads("LocateHRIUsableIndicator"));
    QCOMPARE(display.usable.count(), 3);
    driver.df->SetValue(QStringLiteral("DFID3#ST0"), nullptr);
    QVERIFY(!reads("LocateDFUsableIndicator"));
}

void TestLocateStatusHandler::theLampIsDrawnAnewOnlyWhenItChanges()
{
    Driver driver(*m_tree);
    driver.df->SetValue(availableStation, nullptr);
    Display display(*m_common);
    display.handler.SetUpValues();
    PaintCounter paints(display.Lamp());
    display.window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&display.window));
    QTRY_VERIFY(paints.count() > 0);
    QCoreApplication::processEvents();
    const int before = paints.count();
    driver.frequency->SetValue(21e6, nullptr);
    driver.hri->SetValue(availableStation, nullptr);
    QCoreApplication::processEvents();
    QCOMPARE(paints.count(), before);
    driver.df->SetValue(QString(), nullptr);
    driver.hri->SetValue(QString(), nullptr);
    QTRY_COMPARE(paints.count(), before + 1);
    QCOMPARE(display.LampImage(), lampImage(":/icons/Off"));
}

void TestLocateStatusHandler::withoutOneStatusTextUsabilityIsLeftAlone_data()
{
    QTest::addColumn<QString>("missing");
    QTest::newRow("DF") << dfStatusPath;
    QTest::newRow("HRI") << hriStatusPath;
}

void TestLocateStatusHandler::withoutOneStatusTextUsabilityIsLeftAlone()
{
    QFETCH(QString, missing);
    Driver driver(*m_tree);
    driver.df->SetValue(availableStation, nullptr);
    driver.hri->SetValue(availableStation, nullptr);
    values::Tree::Instance()->DeleteValue(missing);
    for (const QString& name : indicatorNames)
        m_tree->add<values::BoolValue>(componentRoot + name)->SetValue(true, nullptr);
    Display display(*m_common);
    display.handler.SetUpValues();
    const bool dfMissing = missing == dfStatusPath;
    QCOMPARE(reads("LocateDFConnectedIndicator"), !dfMissing);
    QCOMPARE(reads("LocateHRIConnectedIndicator"), dfMissing);
    QVERIFY(reads("LocateDFUsableIndicator"));
    QVERIFY(reads("LocateHRIUsableIndicator"));
    QCOMPARE(display.LampImage(), lampImage(":/icons/Off"));
    QCOMPARE(display.usable.count(), 0);
}

void TestLocateStatusHandler::everyObservedValueLeadsToAnEvaluation()
{
    Driver driver(*m_tree);
    Display display(*m_common);
    display.handler.SetUpValues();
    for (values::ValueBase* const value :
         std::initializer_list<values::ValueBase*>{driver.df, driver.hri, driver.frequency}) {
        display.usable.clear();
        value->HasChanged(ChangeContent, nullptr);
        QCOMPARE(display.usable.count(), 1);
    }
}

void TestLocateStatusHandler::onlyContentChangesCount()
{
    Driver driver(*m_tree);
    Display display(*m_common);
    display.handler.SetUpValues();
    display.usable.clear();
    for (const TChangeCode code : {ChangeState, ChangeLimits, ChangeItems, ChangeExternal}) {
        driver.df->HasChanged(code, nullptr);
        driver.hri->HasChanged(code, nullptr);
        driver.frequency->HasChanged(code, nullptr);
    }
    driver.df->SetState(values::StateUnused, nullptr);
    QCOMPARE(display.usable.count(), 0);
    driver.df->SetValue(availableStation, nullptr);
    QCOMPARE(display.usable.count(), 1);
}

void TestLocateStatusHandler::otherSourcesAreIgnored()
{
    Driver driver(*m_tree);
    Display display(*m_common);
    display.handler.SetUpValues();
    display.usable.clear();
    values::StringValue stranger;
    display.handler.Update(&stranger, ChangeContent);
    for (const QString& name : indicatorNames)
        display.handler.Update(indicator(name), ChangeContent);
    QCOMPARE(display.usable.count(), 0);
}

void TestLocateStatusHandler::aNotificationWithoutSourceMatchesNoMissingValue()
{
    Driver driver(*m_tree);
    values::Tree::Instance()->DeleteValue(frequencyPath);
    Display display(*m_common);
    display.handler.SetUpValues();
    display.usable.clear();
    display.handler.Update(nullptr, ChangeContent);
    QCOMPARE(display.usable.count(), 0);
}

void TestLocateStatusHandler::aStatusTextThatVanishesIsUnboundAndNoLongerConnected()
{
    Driver driver(*m_tree);
    driver.df->SetValue(availableStation, nullptr);
    Display display(*m_common);
    display.handler.SetUpValues();
    display.usable.clear();
    values::Tree::Instance()->DeleteValue(dfStatusPath);
    QVERIFY(reads("LocateDFConnectedIndicator"));
    driver.frequency->SetValue(1, nullptr);
    QVERIFY(!reads("LocateDFConnectedIndicator"));
    QVERIFY(reads("LocateDFUsableIndicator"));
    QCOMPARE(display.LampImage(), lampImage(":/icons/On"));
    QCOMPARE(display.usable.count(), 0);
    // Only a set-up binds what has come back.
    auto* const back = m_tree->add<values::StringValue>(dfStatusPath);
    back->SetValue(QStringLiteral("DFID3#ST0"), nullptr);
    QCOMPARE(display.usable.count(), 0);
    display.handler.SetUpValues();
    QCOMPARE(display.usable.takeLast(), (QVariantList{false, false}));
    QVERIFY(reads("LocateDFConnectedIndicator"));
}

void TestLocateStatusHandler::aVanishedFrequencyMakesHriUnusableAtTheNextChange()
{
    Driver driver(*m_tree);
    driver.hri->SetValue(availableStation, nullptr);
    Display display(*m_common);
    display.handler.SetUpValues();
    values::Tree::Instance()->DeleteValue(frequencyPath);
    QVERIFY(reads("LocateHRIUsableIndicator"));
    driver.df->SetValue(QStringLiteral("DFID1"), nullptr);
    QVERIFY(!reads("LocateHRIUsableIndicator"));
    QCOMPARE(display.LampImage(), lampImage(":/icons/Off"));
}

void TestLocateStatusHandler::aVanishedIndicatorReadsFalseUntilTheNextSetUp()
{
    Driver driver(*m_tree);
    driver.df->SetValue(availableStation, nullptr);
    driver.hri->SetValue(availableStation, nullptr);
    Display display(*m_common);
    display.handler.SetUpValues();
    for (const QString& name : indicatorNames)
        values::Tree::Instance()->DeleteValue(componentRoot + name);
    driver.df->HasChanged(ChangeContent, nullptr);
    QCOMPARE(display.usable.takeLast(), (QVariantList{false, false}));
    QCOMPARE(display.LampImage(), lampImage(":/icons/Off"));
    display.handler.SetUpValues();
    QCOMPARE(display.usable.takeLast(), (QVariantList{true, true}));
    for (const QString& name : indicatorNames)
        QVERIFY2(indicator(name)->GetValue(), qPrintable(name));
}

void TestLocateStatusHandler::anObserverMayChangeAStatusTextInsideTheEvaluation()
{
    Driver driver(*m_tree);
    Display display(*m_common);
    display.handler.SetUpValues();
    // The usability indicators are written one after the other; a new text in between must not be overwritten by the
    // old.
    RecordingObserver nested([&](Observable*, TChangeCode code) {
        if (code == ChangeContent && !driver.df->GetValue().isEmpty())
            driver.df->SetValue(QString(), nullptr);
    });
    indicator(QStringLiteral("LocateHRIUsableIndicator"))->AddObserver(&nested);
    driver.df->SetValue(availableStation, nullptr);
    display.usable.clear();
    driver.hri->SetValue(availableStation, nullptr);
    QVERIFY(driver.df->GetValue().isEmpty());
    QVERIFY(!reads("LocateDFConnectedIndicator"));
    QVERIFY(!reads("LocateDFUsableIndicator"));
    QVERIFY(reads("LocateHRIUsableIndicator"));
    QCOMPARE(display.usable.takeLast(), (QVariantList{true, false}));
    indicator(QStringLiteral("LocateHRIUsableIndicator"))->RemoveObserver(&nested);
}

void TestLocateStatusHandler::anObserverMaySilenceTheDriverInsideTheEvaluation()
{
    Driver driver(*m_tree);
    Display display(*m_common);
    display.handler.SetUpValues();
    display.usable.clear();
    RecordingObserver nested([](Observable*, TChangeCode code) {
        if (code == ChangeContent)
            values::Tree::Instance()->DeleteValue(hriStatusPath);
    });
    indicator(QStringLiteral("LocateDFConnectedIndicator"))->AddObserver(&nested);
    driver.df->SetValue(availableStation, nullptr);
    QVERIFY(reads("LocateDFConnectedIndicator"));
    QVERIFY(!reads("LocateDFUsableIndicator"));
    QCOMPARE(display.usable.count(), 0);
    indicator(QStringLiteral("LocateDFConnectedIndicator"))->RemoveObserver(&nested);
}

void TestLocateStatusHandler::anObserverMayDeleteTheDisplayInsideTheEvaluation_data()
{
    QTest::addColumn<QString>("name");
    for (const QString& name : indicatorNames)
        QTest::newRow(qPrintable(name)) << name;
}

void TestLocateStatusHandler::anObserverMayDeleteTheDisplayInsideTheEvaluation()
{
    QFETCH(QString, name);
    Driver driver(*m_tree);
    auto display = std::make_unique<Display>(*m_common);
    display->handler.SetUpValues();
    RecordingObserver nested([&](Observable*, TChangeCode code) {
        if (code == ChangeContent)
            display.reset();
    });
    indicator(name)->AddObserver(&nested);
    driver.hri->SetValue(availableStation, nullptr);
    driver.df->SetValue(availableStation, nullptr);
    QVERIFY(display == nullptr);
    indicator(name)->RemoveObserver(&nested);
}

void TestLocateStatusHandler::anObserverThatThrowsIsTracedAndDoesNotReachTheDriver()
{
    Driver driver(*m_tree);
    Display display(*m_common);
    display.handler.SetUpValues();
    RecordingObserver throwing([](Observable*, TChangeCode) { throw std::runtime_error("another component"); });
    indicator(QStringLiteral("LocateDFConnectedIndicator"))->AddObserver(&throwing);
    const Traces traces;
    driver.df->SetValue(availableStation, nullptr);
    QCOMPARE(traces.records.size(), std::size_t(1));
    QCOMPARE(traces.records[0].text, QStringLiteral("Exception in LocateStatusHandler::Update"));
    QCOMPARE(traces.records[0].sourceFile,
             QStringLiteral("userinterface/guicomponents/dflocatecomponent/locatestatushandler "));
    indicator(QStringLiteral("LocateDFConnectedIndicator"))->RemoveObserver(&throwing);
}

void TestLocateStatusHandler::withoutAFrequencyTheReportSaysNotYetConnected()
{
    QWidget mainWidget;
    GuiCentral::Instance()->SetMainWidget(&mainWidget);
    Driver driver(*m_tree);
    values::Tree::Instance()->DeleteValue(frequencyPath);
    Display display(*m_common);
    BoxWatchdog shown;
    display.Click();
    display.handler.SetUpValues();
    display.Click();
    GuiCentral::Instance()->SetMainWidget(nullptr);
    QCOMPARE(shown.seen.size(), std::size_t(2));
    for (const SeenBox& box : shown.seen) {
        QCOMPARE(box.title, QStringLiteral("Locate states"));
        QCOMPARE(box.text, QStringLiteral("Not yet connected"));
        QCOMPARE(box.icon, QMessageBox::Information);
        QCOMPARE(box.buttons, QMessageBox::StandardButtons(QMessageBox::Ok));
        QCOMPARE(box.parent, &mainWidget);
        QVERIFY(box.isModal);
    }
}

void TestLocateStatusHandler::theReportShowsBothServices()
{
    Driver driver(*m_tree);
    driver.df->SetValue(availableStation, nullptr);
    driver.hri->SetValue(QStringLiteral("DFID7#N_South#ST17#FB20000000#FE30000000"), nullptr);
    Display display(*m_common);
    display.handler.SetUpValues();
    BoxWatchdog shown;
    display.Click();
    QCOMPARE(shown.seen.size(), std::size_t(1));
    const SeenBox& box = shown.seen.front();
    QCOMPARE(box.title, QStringLiteral("Locate states"));
    QCOMPARE(box.parent, nullptr);
    QVERIFY(box.isModal);
    QCOMPARE(box.text, buildReport({{{3, {3, QStringLiteral("North"), 1, 20e6, 3000e6}}}, true, true, {}},
                                   {{{7, {7, QStringLiteral("South"), 17, 20e6, 30e6}}}, true, true, {}}, 100e6));
    QVERIFY(box.text.contains(QStringLiteral("<TD> <i>20.000 MHz - 30.000 MHz</i></TABLE>")));
}

void TestLocateStatusHandler::theReportPictureFollowsUsability_data()
{
    QTest::addColumn<QString>("df");
    QTest::addColumn<QString>("hri");
    QTest::addColumn<QString>("picture");
    QTest::newRow("nothing") << ""
                             << ""
                             << ":/icons/Off";
    QTest::newRow("DF") << availableStation << ""
                        << ":/icons/On";
    QTest::newRow("HRI") << "" << availableStation << ":/icons/On";
}

void TestLocateStatusHandler::theReportPictureFollowsUsability()
{
    QFETCH(QString, df);
    QFETCH(QString, hri);
    QFETCH(QString, picture);
    Driver driver(*m_tree);
    driver.df->SetValue(df, nullptr);
    driver.hri->SetValue(hri, nullptr);
    Display display(*m_common);
    display.handler.SetUpValues();
    BoxWatchdog shown;
    display.Click();
    QCOMPARE(shown.seen.size(), std::size_t(1));
    QCOMPARE(shown.seen.front().picture, icon(picture.toLatin1()));
    QCOMPARE(shown.seen.front().picture.size(), QSize(64, 64));
}

void TestLocateStatusHandler::withoutUsableIndicatorsTheReportHasNoPicture_data()
{
    QTest::addColumn<QString>("gone");
    QTest::newRow("DF") << indicatorNames.at(2);
    QTest::newRow("HRI") << indicatorNames.at(3);
}

void TestLocateStatusHandler::withoutUsableIndicatorsTheReportHasNoPicture()
{
    QFETCH(QString, gone);
    Driver driver(*m_tree);
    driver.df->SetValue(availableStation, nullptr);
    Display display(*m_common);
    display.handler.SetUpValues();
    values::Tree::Instance()->DeleteValue(componentRoot + gone);
    BoxWatchdog shown;
    display.Click();
    QCOMPARE(shown.seen.size(), std::size_t(1));
    QVERIFY(shown.seen.front().picture.isNull());
    QCOMPARE(shown.seen.front().icon, QMessageBox::NoIcon);
}

void TestLocateStatusHandler::anEmptiedTextIsReportedAsNotConnected()
{
    Driver driver(*m_tree);
    driver.df->SetValue(availableStation, nullptr);
    Display display(*m_common);
    display.handler.SetUpValues();
    driver.df->SetValue(QString(), nullptr);
    QVERIFY(!reads("LocateDFConnectedIndicator"));
    BoxWatchdog shown;
    display.Click();
    QCOMPARE(shown.seen.size(), std::size_t(1));
    QCOMPARE(shown.seen.front().text,
             QStringLiteral("<B>Locate (Online) </B>is not connected<BR><BR><B>Locate (HRI) </B>is not connected"));
}

void TestLocateStatusHandler::aVanishedStationStaysInTheReport()
{
    Driver driver(*m_tree);
    driver.df->SetValue(availableStation, nullptr);
    Display display(*m_common);
    display.handler.SetUpValues();
    driver.df->SetValue(QStringLiteral("DFID4#N_South"), nullptr);
    BoxWatchdog shown;
    display.Click();
    QCOMPARE(shown.seen.size(), std::size_t(1));
    QVERIFY(shown.seen.front().text.contains(QStringLiteral(
        "<TR><TD> North<TD> <IMG src=\":/icons/OK\" width = 16 height = 16 ><TR><TD> South<TD>  </TABLE>")));
}

void TestLocateStatusHandler::theReportShowsWhatItWasOpenedWith()
{
    Driver driver(*m_tree);
    driver.df->SetValue(availableStation, nullptr);
    Display display(*m_common);
    display.handler.SetUpValues();
    QString afterwards;
    BoxWatchdog shown([&] {
        driver.df->SetValue(QString(), nullptr);
        afterwards = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())->text();
    });
    display.Click();
    QCOMPARE(shown.seen.size(), std::size_t(1));
    QCOMPARE(afterwards, shown.seen.front().text);
    QVERIFY(afterwards.contains(QStringLiteral("North")));
    QCOMPARE(display.LampImage(), lampImage(":/icons/Off"));
}

void TestLocateStatusHandler::anyButtonOpensTheReport()
{
    const Driver driver(*m_tree);
    Display display(*m_common);
    display.handler.SetUpValues();
    BoxWatchdog shown;
    QTest::mouseClick(display.Lamp(), Qt::RightButton);
    QVERIFY(QMetaObject::invokeMethod(&display.handler, "slot_open"));
    QCOMPARE(shown.seen.size(), std::size_t(2));
}

void TestLocateStatusHandler::theDisplayMayBeDeletedWhileItsReportIsOpen_data()
{
    QTest::addColumn<bool>("connected");
    QTest::addColumn<bool>("lampToo");
    QTest::newRow("report, display only") << true << false;
    QTest::newRow("report, display and lamp") << true << true;
    QTest::newRow("not yet connected, display only") << false << false;
    QTest::newRow("not yet connected, display and lamp") << false << true;
}

void TestLocateStatusHandler::theDisplayMayBeDeletedWhileItsReportIsOpen()
{
    QFETCH(bool, connected);
    QFETCH(bool, lampToo);
    const Driver driver(*m_tree);
    auto display = std::make_unique<QWidget>();
    auto handler = std::make_unique<LocateStatusHandler>(display.get(), m_common.get(), componentRoot, handlerRoot);
    if (connected)
        handler->SetUpValues();
    display->show();
    QVERIFY(QTest::qWaitForWindowExposed(display.get()));
    BoxWatchdog shown([&] {
        handler.reset();
        if (lampToo)
            display.reset();
    });
    QTest::mouseClick(display->windowHandle(), Qt::LeftButton, Qt::NoModifier, handler->GetLamp()->geometry().center());
    QCOMPARE(shown.seen.size(), std::size_t(1));
    QVERIFY(!handler);
}

void TestLocateStatusHandler::theMainWindowMayBeDeletedWhileItsBoxIsOpen()
{
    auto window = std::make_unique<QWidget>();
    GuiCentral::Instance()->SetMainWidget(window.get());
    Display display(*m_common);
    const QWidget* parentOfBox = nullptr;
    QTimer::singleShot(0, &display.window, [&] {
        parentOfBox = QApplication::activeModalWidget()->parentWidget();
        QCOMPARE(parentOfBox, window.get());
        window.reset();
    });
    QMetaObject::invokeMethod(&display.handler, "slot_open");
    QVERIFY(parentOfBox != nullptr);
    QVERIFY(window == nullptr);
}

void TestLocateStatusHandler::textsAreTranslatedInTheClassContext()
{
    class Marking : public QTranslator
    {
    public:
        bool isEmpty() const override { return false; }
        QString translate(const char* context, const char* source, const char*, int) const override
        {
            if (qstrcmp(context, "VelmarGui::LocateStatusHandler") != 0)
                return QString();
            return QLatin1Char('*') + QLatin1String(source);
        }
    } translator;
    const Driver driver(*m_tree);
    QCoreApplication::installTranslator(&translator);
    BoxWatchdog shown;
    Display display(*m_common);
    display.Click();
    display.handler.SetUpValues();
    display.Click();
    QCoreApplication::removeTranslator(&translator);
    QCOMPARE(display.Lamp()->toolTip(), QStringLiteral("*Locate states"));
    QCOMPARE(shown.seen.size(), std::size_t(2));
    QCOMPARE(shown.seen[0].title, QStringLiteral("*Locate states"));
    QCOMPARE(shown.seen[0].text, QStringLiteral("*Not yet connected"));
    QCOMPARE(shown.seen[1].title, QStringLiteral("*Locate states"));
    QVERIFY(shown.seen[1].text.startsWith(QStringLiteral("<B>*Locate (Online) </B>")));
}

void TestLocateStatusHandler::theLampMayGoFirst()
{
    Driver driver(*m_tree);
    auto window = std::make_unique<QWidget>();
    LocateStatusHandler handler(window.get(), m_common.get(), componentRoot, handlerRoot);
    handler.SetUpValues();
    QSignalSpy usable(&handler, SIGNAL(si_locateUsable(bool, bool)));
    window.reset();
    QCOMPARE(handler.GetLamp(), nullptr);
    driver.df->SetValue(availableStation, nullptr);
    QCOMPARE(usable.takeLast(), (QVariantList{false, true}));
}

void TestLocateStatusHandler::theDisplayMayGoFirst()
{
    Driver driver(*m_tree);
    QWidget window;
    auto handler = std::make_unique<LocateStatusHandler>(&window, m_common.get(), componentRoot, handlerRoot);
    handler->SetUpValues();
    QWidget* const lamp = handler->GetLamp();
    handler.reset();
    QCOMPARE(window.findChild<QLabel*>(QStringLiteral("Led Label")), lamp);
    BoxWatchdog shown;
    QTest::mouseClick(lamp, Qt::LeftButton);
    QVERIFY(shown.seen.empty());
    QCOMPARE(driver.hri->GetObserverCount(), std::size_t(0));
    driver.df->SetValue(availableStation, nullptr);
    QVERIFY(!reads("LocateDFConnectedIndicator"));
}

void TestLocateStatusHandler::theIndicatorsOutliveTheDisplay()
{
    Driver driver(*m_tree);
    driver.df->SetValue(availableStation, nullptr);
    {
        Display display(*m_common);
        display.handler.SetUpValues();
    }
    for (const QString& name : indicatorNames)
        QVERIFY2(indicator(name), qPrintable(name));
    QVERIFY(reads("LocateDFUsableIndicator"));
    Display next(*m_common);
    next.handler.SetUpValues();
    QCOMPARE(next.usable.takeLast(), (QVariantList{false, true}));
}

void TestLocateStatusHandler::theTreeMayGoFirst()
{
    const Driver driver(*m_tree);
    Display display(*m_common);
    display.handler.SetUpValues();
    m_tree.reset();
    BoxWatchdog shown;
    display.Click();
    QCOMPARE(shown.seen.size(), std::size_t(1));
    QCOMPARE(shown.seen.front().text, QStringLiteral("Not yet connected"));
}

void TestLocateStatusHandler::twoDisplaysShareTheIndicators()
{
    Driver driver(*m_tree);
    auto first = std::make_unique<Display>(*m_common);
    Display second(*m_common);
    first->handler.SetUpValues();
    second.handler.SetUpValues();
    driver.df->SetValue(availableStation, nullptr);
    QCOMPARE(first->usable.takeLast(), (QVariantList{false, true}));
    QCOMPARE(second.usable.takeLast(), (QVariantList{false, true}));
    first.reset();
    driver.df->SetValue(QString(), nullptr);
    QCOMPARE(second.usable.takeLast(), (QVariantList{false, false}));
    QVERIFY(!reads("LocateDFUsableIndicator"));
    QCOMPARE(second.handler.GetGlobalValue(indicatorNames.at(2)), indicator(indicatorNames.at(2)));
}

DFL_TEST_MAIN(TestLocateStatusHandler)
#include "tst_locatestatushandler.moc"
