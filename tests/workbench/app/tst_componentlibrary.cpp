#include "app/componentlibrary.h"

#include "guicomponentbase/iguicomponent.h"
#include "support/testmain.h"

using workbench::ComponentError;
using workbench::loadComponent;
using workbench::LoadedComponent;
using Kind = workbench::ComponentError::Kind;

Q_DECLARE_METATYPE(ComponentError::Kind)

namespace {

const QString componentName = QStringLiteral("DFLocateComponent");

QString fixture(const char* name)
{
    return QStringLiteral(FIXTURE_FOLDER "/%1.so").arg(QLatin1String(name));
}

} // namespace

class TestComponentLibrary : public QObject
{
    Q_OBJECT
private slots:
    void aWrongLibraryIsRefusedWithFileAndReason_data();
    void aWrongLibraryIsRefusedWithFileAndReason();
    void aFileThatIsNoLibraryIsRefused();
    void aFolderIsNoLibrary();
    void anObjectOfAWrongClassGoesBackToItsLibrary();
    void aGoodLibraryGivesAComponentWithTheName();
    void theComponentGoesBackOnce();
    void anExceptionOnTheWayBackIsReportedAndContained();
};

void TestComponentLibrary::aWrongLibraryIsRefusedWithFileAndReason_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char* name, Kind kind, const char* reason) {
        QTest::newRow(name) << fixture(name) << kind << QString(reason);
    };
    row("missing", Kind::FileMissing, "there is no such component library.");
    row("noexports", Kind::CreateMissing, "the library is no component: it does not export ZTCreate.");
    row("nodestroy", Kind::DestroyMissing, "the library is no component: it does not export ZTDestroy.");
    row("createsnull", Kind::CreateReturnedNull, "the component could not be created: ZTCreate returned nothing.");
    row("createthrows", Kind::CreateThrew,
        "the component could not be created: ZTCreate let an exception (out of order) out.");
    row("createthrowsint", Kind::CreateThrew,
        "the component could not be created: ZTCreate let an exception of an unknown kind out.");
    row("wrongclass", Kind::WrongClass, "ZTCreate returned an object that is no GUI component.");
}

void TestComponentLibrary::aWrongLibraryIsRefusedWithFileAndReason()
{
    QFETCH(QString, file);
    QFETCH(Kind, kind);
    QFETCH(QString, reason);
    const auto loaded = loadComponent(file, componentName);
    const auto* const error = std::get_if<ComponentError>(&loaded);
    QVERIFY(error != nullptr);
    QCOMPARE(error->kind, kind);
    QCOMPARE(error->text(), file + ": " + reason);
}

void TestComponentLibrary::aFileThatIsNoLibraryIsRefused()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("text.so");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("no library");
    file.close();
    const auto loaded = loadComponent(path, componentName);
    const auto* const error = std::get_if<ComponentError>(&loaded);
    QVERIFY(error != nullptr);
    QCOMPARE(error->kind, Kind::NotALibrary);
    QVERIFY(!error->detail.isEmpty());
    QCOMPARE(error->text(), path + ": the file cannot be loaded as a component library: " + error->detail);
}

void TestComponentLibrary::aFolderIsNoLibrary()
{
    const auto loaded = loadComponent(QDir::tempPath(), componentName);
    const auto* const error = std::get_if<ComponentError>(&loaded);
    QVERIFY(error != nullptr);
    QCOMPARE(error->kind, Kind::FileMissing);
}

void TestComponentLibrary::anObjectOfAWrongClassGoesBackToItsLibrary()
{
    qApp->setProperty("destroyCount", 0);
    QVERIFY(std::holds_alternative<ComponentError>(loadComponent(fixture("wrongclass"), componentName)));
    QCOMPARE(qApp->property("destroyCount").toInt(), 1);
}

void TestComponentLibrary::aGoodLibraryGivesAComponentWithTheName()
{
    const auto loaded = loadComponent(fixture("callrecorder"), componentName);
    const auto* const component = std::get_if<std::unique_ptr<LoadedComponent>>(&loaded);
    QVERIFY(component != nullptr);
    QCOMPARE((*component)->component().GetName(), componentName);
    QCOMPARE((*component)->file(), fixture("callrecorder"));
}

void TestComponentLibrary::theComponentGoesBackOnce()
{
    qApp->setProperty("calls", QStringList());
    {
        const auto loaded = loadComponent(fixture("callrecorder"), componentName);
    }
    QCOMPARE(qApp->property("calls").toStringList(), QStringList({"ZTCreate DFLocateComponent", "ZTDestroy"}));
}

void TestComponentLibrary::anExceptionOnTheWayBackIsReportedAndContained()
{
    const QString file = fixture("leavingthrows");
    auto loaded = loadComponent(file, componentName);
    QVERIFY(std::holds_alternative<std::unique_ptr<LoadedComponent>>(loaded));
    QTest::ignoreMessage(QtWarningMsg, qPrintable(file + ": ZTDestroy let an exception (not at all) out."));
    std::get<std::unique_ptr<LoadedComponent>>(loaded).reset();
}

DFL_TEST_MAIN(TestComponentLibrary)
#include "tst_componentlibrary.moc"
