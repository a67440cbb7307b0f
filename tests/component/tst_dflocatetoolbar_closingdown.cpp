#include "dflocatetoolbar.h"

#include "drivervalues.h"
#include "support/testmain.h"

#include "guicomponentbase/guicomponentcommon.h"

#include <QToolButton>

#include <memory>

using testsupport::CommandLog;
using testsupport::DriverValues;

namespace {

/// A toolbar whose locate type cannot be served.
struct Scene
{
    Scene() { driver.locateType->Select(2); }

    DriverValues driver;
    VelmarGui::GuiComponentCommon common;
    VelmarGui::DFLocateToolBar toolbar{&common, QStringLiteral("/GUI/DFLocateComponent/")};
};

std::unique_ptr<Scene> scene;

} // namespace

/// Runs when the application object has gone and no box could be shown any more: showing one would end the program.
class TestDFLocateToolBarClosingDown : public QObject
{
    Q_OBJECT

private slots:
    void theApplicationIsClosingDown();
    void aSingleShotIsRequestedWithoutAWarning();
    void cyclicDfIsSwitchedWithoutAWarning();
    void theToolbarMayOutliveTheApplication();
};

void TestDFLocateToolBarClosingDown::theApplicationIsClosingDown()
{
    QVERIFY(QCoreApplication::closingDown());
    QVERIFY(QCoreApplication::instance() == nullptr);
}

void TestDFLocateToolBarClosingDown::aSingleShotIsRequestedWithoutAWarning()
{
    const CommandLog log(scene->driver.commands);
    QVERIFY(QMetaObject::invokeMethod(&scene->toolbar, "SlotSingleShot", Qt::DirectConnection));
    QCOMPARE(log.keys, std::vector<int>{9});
}

void TestDFLocateToolBarClosingDown::cyclicDfIsSwitchedWithoutAWarning()
{
    const CommandLog log(scene->driver.commands);
    for (const bool on : {true, false})
        QVERIFY(QMetaObject::invokeMethod(&scene->toolbar, "SlotCyclicToggle", Qt::DirectConnection, Q_ARG(bool, on)));
    QCOMPARE(log.keys, (std::vector<int>{10, 11}));
}

void TestDFLocateToolBarClosingDown::theToolbarMayOutliveTheApplication()
{
    scene.reset();
    QVERIFY(scene == nullptr);
}

int main(int argc, char** argv)
{
    testsupport::prepareProcess(150);
    {
        QApplication app(argc, argv);
        scene = std::make_unique<Scene>();
    }
    TestDFLocateToolBarClosingDown test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_dflocatetoolbar_closingdown.moc"
