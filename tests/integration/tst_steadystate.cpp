// What component and driver ask of the host while nothing new comes about: once bound, no value is looked
// for again, and settings that are as they were move nothing.

#include "dflocatecomponent.h"
#include "dflocatetoolbar.h"
#include "drivers/providedvalues.h"
#include "drivers/resultvalues.h"
#include "faultpoints/faultpoint.h"
#include "guicomponentbase/guicomponentcommon.h"
#include "settingstable.h"
#include "support/detailedresults.h"
#include "support/freshtree.h"
#include "support/networkresult.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "support/treevalue.h"

#include <QLabel>
#include <QMap>

using namespace workbench;
using testsupport::at;
using testsupport::FreshTree;
using testsupport::RecordingObserver;

namespace {

const QString componentRoot = QStringLiteral("/GUI/DFLocateComponent/");
const QString handlerRoot = QStringLiteral("/GUI/DFLocateHandler/");
const QString parameterRoot = componentRoot + QStringLiteral("Parameters/");

/// Counts the host's operations by their names while it lives.
class Operations
{
public:
    Operations()
    {
        s_counts.clear();
        faults::hook = [](const char* operation, faults::Ways, const void*) {
            ++s_counts[QByteArray(operation)];
            return false;
        };
    }
    ~Operations() { faults::hook = nullptr; }
    Operations(const Operations&) = delete;
    Operations& operator=(const Operations&) = delete;

    [[nodiscard]] static int count(const char* operation) { return s_counts.value(operation); }

private:
    inline static QMap<QByteArray, int> s_counts;
};

/// The component's toolbar, which shows the results of a driver.
class Screen
{
public:
    explicit Screen(int stations)
        : m_stations(stations)
        , m_results(m_provided, handlerRoot + QStringLiteral("Values/Result/"), {})
    {
        write(0);
        m_toolbar = std::make_unique<VelmarGui::DFLocateToolBar>(&m_common, componentRoot);
    }

    void openWindow() { testsupport::openDetailedResults(*m_toolbar); }
    void writeSecondResult()
    {
        write(1);
        QCoreApplication::processEvents();
    }
    [[nodiscard]] QString bearing() const
    {
        return m_toolbar->findChild<QLabel*>(QStringLiteral("average bearing"))->text();
    }

private:
    void write(int turn)
    {
        constexpr int threshold = 40; // percent; every station measures as well as that
        (void)m_results.write(testsupport::networkResult(m_stations, turn), threshold, GeoPosition{48.1 + turn, 11.6});
    }

    int m_stations;
    ProvidedValues m_provided;
    ResultValues m_results;
    VelmarGui::GuiComponentCommon m_common;
    std::unique_ptr<VelmarGui::DFLocateToolBar> m_toolbar;
};

/// The component's settings panel, connected to the values of a driver that only listens.
class Panel
{
public:
    Panel()
    {
        for (const VelmarGui::ConfigEntry& entry : VelmarGui::ConfigTable)
            VelmarGui::createConfigValue(entry, handlerRoot);
        fromDriver = m_tree.add<values::StringValue>(parameterRoot + QStringLiteral("DF_Settings"));
        toDriver = m_tree.add<values::StringValue>(parameterRoot + QStringLiteral("DFLOCATE/ToDriver"));
        m_common.SetFormFolder(QStringLiteral(FORM_FOLDER));
        m_component = std::make_unique<VelmarGui::DFLocateComponent>(QStringLiteral("DFLocateComponent"));
        m_panel.reset(m_component->CreateWidget(&m_common, componentRoot));
        m_component->ConnectInterfaceValues();
        bandwidth = at<values::ValueSelection>(handlerRoot + QStringLiteral("Config/Bandwidth"));
        mode = at<values::ValueSelection>(handlerRoot + QStringLiteral("Config/Mode"));
        toDriver->AddObserver(&sent);
    }
    ~Panel() { toDriver->RemoveObserver(&sent); }

    RecordingObserver sent;
    values::StringValue* fromDriver = nullptr;
    values::StringValue* toDriver = nullptr;
    values::ValueSelection* bandwidth = nullptr;
    values::ValueSelection* mode = nullptr;

private:
    FreshTree m_tree;
    VelmarGui::GuiComponentCommon m_common;
    std::unique_ptr<VelmarGui::DFLocateComponent> m_component;
    std::unique_ptr<QWidget> m_panel;
};

} // namespace

class TestSteadyState : public QObject
{
    Q_OBJECT

private slots:
    void operationsAreCounted()
    {
        const Operations operations;
        QVERIFY(values::Tree::Instance()->FindValue(QStringLiteral("/Nothing")) == nullptr);
        QCOMPARE(Operations::count("Tree::FindValue"), 1);
    }

    void aResultOnItsWayToTheToolbarLooksNoPathUp()
    {
        const FreshTree fresh;
        Screen screen(5);
        const QString before = screen.bearing();
        const Operations operations;
        screen.writeSecondResult();
        QVERIFY(screen.bearing() != before);
        QCOMPARE(Operations::count("Tree::FindValue"), 0);
    }

    // The window binds no more than it must be told of; the rest may appear at any time and is looked for when it is
    // filled.
    void aResultOnItsWayToTheWindowLooksUpNoMoreForMoreStations()
    {
        const auto lookUpsWith = [](int stations) {
            const FreshTree fresh;
            Screen screen(stations);
            screen.openWindow();
            const QString before = screen.bearing();
            const Operations operations;
            screen.writeSecondResult();
            return screen.bearing() != before ? Operations::count("Tree::FindValue") : -1;
        };
        const int lookUps = lookUpsWith(5);
        QVERIFY(lookUps > 0);
        QCOMPARE(lookUpsWith(50), lookUps);
    }

    // Whether the driver has the settings already, and where to hand them over: neither value is ever bound.
    void aSettingOnItsWayToTheDriverLooksTwoPathsUp()
    {
        Panel panel;
        const Operations operations;
        panel.mode->SelectIndex(2);
        QCOMPARE(panel.sent.count(ChangeContent), 1);
        QCOMPARE(Operations::count("Tree::FindValue"), 2);
    }

    void settingsSetToWhatTheyAreAreNotSentWrittenOrRead()
    {
        Panel panel;
        panel.mode->SelectIndex(2);
        panel.bandwidth->SelectIndex(3);
        const int sentBefore = panel.sent.count(ChangeContent);
        QVERIFY(sentBefore > 0);
        const int announcedBefore = static_cast<int>(panel.sent.codes.size());

        const Operations operations;
        panel.mode->SelectIndex(2);
        panel.bandwidth->SelectIndex(3);
        QCOMPARE(static_cast<int>(panel.sent.codes.size()), announcedBefore);
        QCOMPARE(Operations::count("DF_Settings::GetXmlString"), 0);
        QCOMPARE(Operations::count("DF_Settings::SetXmlString"), 0);
        QCOMPARE(Operations::count("PgXmlFormular::SetXmlString"), 0);
        QCOMPARE(Operations::count("GuiComponentTools::UpdateParameterSet"), 0);
        QCOMPARE(Operations::count("Tree::FindValue"), 0);
    }

    void anAnswerOfTheDriverThatIsTheSameAsBeforeIsNotRead()
    {
        Panel panel;
        panel.mode->SelectIndex(2);
        panel.fromDriver->SetValue(panel.toDriver->GetValue(), nullptr);
        const int announcedBefore = static_cast<int>(panel.sent.codes.size());

        const Operations operations;
        panel.fromDriver->SetValue(panel.toDriver->GetValue(), nullptr);
        QCOMPARE(static_cast<int>(panel.sent.codes.size()), announcedBefore);
        QCOMPARE(Operations::count("DF_Settings::SetXmlString"), 0);
        QCOMPARE(Operations::count("DF_Settings::GetXmlString"), 0);
        QCOMPARE(Operations::count("PgXmlFormular::SetXmlString"), 0);
    }
};

DFL_TEST_MAIN(TestSteadyState)
#include "tst_steadystate.moc"
