#include "app/componentlibrary.h"
#include "app/untrustedplace.h"

#include "guicomponentbase/iguicomponent.h"
#include "support/testmain.h"

#include <sys/stat.h>

using workbench::ComponentError;
using workbench::LibraryPlace;
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

void setMode(const QString& path, int mode)
{
    QCOMPARE(chmod(QFile::encodeName(path).constData(), static_cast<mode_t>(mode)), 0);
}

/// A component library that only its owner can exchange: "outer/inner/lib.so" in a folder of its own, and an empty
/// folder "links".
class Places
{
public:
    Places()
    {
        for (const char* const name : {"outer", "outer/inner", "links"}) {
            QVERIFY(QDir(m_folder.path()).mkdir(name));
            setMode(path(name), 0755);
        }
        QVERIFY(QFile::copy(fixture("callrecorder"), library()));
        setMode(library(), 0755);
    }

    [[nodiscard]] QString path(const QString& name) const { return m_folder.filePath(name); }
    [[nodiscard]] QString library() const { return path("outer/inner/lib.so"); }

private:
    QTemporaryDir m_folder;
};

bool loads(const QString& file, LibraryPlace place = LibraryPlace::Safe)
{
    return std::holds_alternative<std::unique_ptr<LoadedComponent>>(loadComponent(file, componentName, place));
}

/// Why the place of @p file is refused; empty when it is not.
QString refusal(const QString& file)
{
    const auto loaded = loadComponent(file, componentName);
    const auto* const error = std::get_if<ComponentError>(&loaded);
    return error != nullptr && error->kind == Kind::UnsafePlace ? error->text() : QString();
}

} // namespace

class TestComponentLibrary : public QObject
{
    Q_OBJECT
private slots:
    void aWrongLibraryIsRefusedWithFileAndReason_data();
    void aWrongLibraryIsRefusedWithFileAndReason();
    void aFileThatIsNoLibraryIsRefused();
    void placeMarkersInTheNameOfAFileAreNotFilled();
    void aFolderIsNoLibrary();
    void aLibraryThatEverybodyCanExchangeIsRefused_data();
    void aLibraryThatEverybodyCanExchangeIsRefused();
    void aLinkIsRefusedForWhereItStandsAndWhereItLeads();
    void aStickyFolderAboveIsSafe();
    void aFolderThatAlsoHoldsTheProgramIsNotHeldAgainstTheLibrary();
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

void TestComponentLibrary::placeMarkersInTheNameOfAFileAreNotFilled()
{
    const ComponentError error{Kind::CreateThrew, QStringLiteral("/%1/%2.so"), QStringLiteral("an exception (%1)")};
    QCOMPARE(error.text(),
             QStringLiteral("/%1/%2.so: the component could not be created: ZTCreate let an exception (%1) "
                            "out."));
}

void TestComponentLibrary::aFolderIsNoLibrary()
{
    const auto loaded = loadComponent(QDir::tempPath(), componentName);
    const auto* const error = std::get_if<ComponentError>(&loaded);
    QVERIFY(error != nullptr);
    QCOMPARE(error->kind, Kind::FileMissing);
}

void TestComponentLibrary::aLibraryThatEverybodyCanExchangeIsRefused_data()
{
    QTest::addColumn<QString>("place");
    QTest::addColumn<int>("mode");
    QTest::newRow("the file") << "outer/inner/lib.so" << 0777;
    QTest::newRow("its folder") << "outer/inner" << 0777;
    QTest::newRow("its folder, sticky") << "outer/inner" << 01777;
    QTest::newRow("a folder above") << "outer" << 0777;
}

void TestComponentLibrary::aLibraryThatEverybodyCanExchangeIsRefused()
{
    QFETCH(QString, place);
    QFETCH(int, mode);
    const Places places;
    QVERIFY(loads(places.library()));
    setMode(places.path(place), mode);
    QCOMPARE(refusal(places.library()),
             places.library() + ": the component library is not loaded, because everybody can write to " +
                 places.path(place) +
                 " and could have put other code there (--allow-unsafe-folder loads it all the same).");
    QVERIFY(loads(places.library(), LibraryPlace::Any));
}

void TestComponentLibrary::aLinkIsRefusedForWhereItStandsAndWhereItLeads()
{
    const Places places;
    const QString toFile = places.path("links/lib.so");
    const QString toFolder = places.path("folder");
    const QString toLink = places.path("links/again.so");
    QVERIFY(QFile::link(places.library(), toFile));
    QVERIFY(QFile::link(places.path("outer/inner"), toFolder));
    QVERIFY(QFile::link("lib.so", toLink));
    for (const QString& link : {toFile, toFolder + "/lib.so", toLink})
        QVERIFY2(loads(link), qPrintable(link));

    setMode(places.path("outer"), 0777); // where they lead
    for (const QString& link : {toFile, toFolder + "/lib.so", toLink})
        QVERIFY2(refusal(link).contains(places.path("outer") + " and"), qPrintable(link));
    setMode(places.path("outer"), 0755);

    setMode(places.path("links"), 0777); // where they stand
    QVERIFY(refusal(toFile).contains(places.path("links")));
    QVERIFY(refusal(toLink).contains(places.path("links")));
    QVERIFY(loads(toFolder + "/lib.so"));
    QVERIFY(loads(places.library()));
}

/// There only owners remove and rename what is theirs.
void TestComponentLibrary::aStickyFolderAboveIsSafe()
{
    const Places places;
    setMode(places.path("outer"), 01777);
    QVERIFY(loads(places.library()));
}

void TestComponentLibrary::aFolderThatAlsoHoldsTheProgramIsNotHeldAgainstTheLibrary()
{
    const Places places;
    setMode(places.path("outer"), 0777);
    QVERIFY(!workbench::writableByEverybody(places.library(), places.path("outer/program")));
    QCOMPARE(workbench::writableByEverybody(places.library(), places.path("outer-too/program")), places.path("outer"));
    setMode(places.path("outer/inner"), 0777);
    QCOMPARE(workbench::writableByEverybody(places.library(), places.path("outer/program")),
             places.path("outer/inner"));
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
