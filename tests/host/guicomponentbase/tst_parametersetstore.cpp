#include "guicomponentbase/parametersetstore.h"
#include "support/testmain.h"

#include <QTemporaryDir>

using VelmarGui::ParameterSetStore;

namespace {

const QString xml = QString::fromUtf8("<DF_Settings><Workflow>Ä</Workflow></DF_Settings>");

void write(const QString& fileName, const QByteArray& content)
{
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("%s cannot be written", qPrintable(fileName));
}

QByteArray contentOf(const QString& fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

} // namespace

class ParameterSetStoreTest : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    [[nodiscard]] ParameterSetStore store() const { return ParameterSetStore(m_folder->path()); }
    [[nodiscard]] QString file(const QString& name) const { return m_folder->filePath(name); }

private slots:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void cleanup()
    {
        QFile::setPermissions(m_folder->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        m_folder.reset();
    }

    void whatIsSavedIsLoaded()
    {
        QCOMPARE(store().Save(QStringLiteral("Night watch"), xml), QString());
        const ParameterSetStore::Loaded loaded = store().Load(QStringLiteral("Night watch"));
        QCOMPARE(loaded.error, QString());
        QCOMPARE(loaded.xml, std::optional(xml));
    }

    void aSetIsOneFileOfUtf8()
    {
        QCOMPARE(store().Save(QStringLiteral("a"), xml), QString());
        QCOMPARE(contentOf(file(QStringLiteral("a.xml"))), xml.toUtf8());
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden), QStringList(QStringLiteral("a.xml")));
    }

    void savingAgainReplaces()
    {
        QCOMPARE(store().Save(QStringLiteral("a"), xml), QString());
        QCOMPARE(store().Save(QStringLiteral("a"), QStringLiteral("<b/>")), QString());
        QCOMPARE(store().Load(QStringLiteral("a")).xml, std::optional(QStringLiteral("<b/>")));
    }

    void theFolderIsMadeWhenSomethingIsSaved()
    {
        const ParameterSetStore deep(file(QStringLiteral("x/y")));
        QCOMPARE(deep.GetNames(), QStringList());
        QVERIFY(!QFile::exists(deep.GetFolder()));
        QCOMPARE(deep.Save(QStringLiteral("a"), xml), QString());
        QCOMPARE(deep.GetNames(), QStringList(QStringLiteral("a")));
    }

    void namesAreSortedWithUpperAndLowerCaseTogether()
    {
        for (const char* name : {"gamma", "Beta", "alpha", "Alpha"})
            QCOMPARE(store().Save(QLatin1String(name), xml), QString());
        QCOMPARE(store().GetNames(), (QStringList{QStringLiteral("Alpha"), QStringLiteral("alpha"),
                                                  QStringLiteral("Beta"), QStringLiteral("gamma")}));
    }

    void filesOfOtherKindsAreNoSets()
    {
        write(file(QStringLiteral("notes.txt")), "x");
        write(file(QStringLiteral(".xml")), "<a/>");
        write(file(QStringLiteral(".hidden.xml")), "<a/>");
        write(file(QStringLiteral("blank .xml")), "<a/>");
        QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("folder.xml")));
        QCOMPARE(store().GetNames(), QStringList());
    }

    void oneBadFileDoesNotHideTheOthers()
    {
        QCOMPARE(store().Save(QStringLiteral("good"), xml), QString());
        write(file(QStringLiteral("bad.xml")), "<DF_Settings>");
        QCOMPARE(store().GetNames(), (QStringList{QStringLiteral("bad"), QStringLiteral("good")}));
        QVERIFY(!store().Load(QStringLiteral("bad")).xml);
        QVERIFY(store().Load(QStringLiteral("good")).xml);
    }

    void badNamesAreRefused_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("error");
        const QString characters =
            QStringLiteral("The name of a parameter set contains no slash, backslash or control character.");
        const QString blanks = QStringLiteral("The name of a parameter set neither begins nor ends with a blank.");
        const QString dot = QStringLiteral("The name of a parameter set does not begin with a dot.");
        QTest::newRow("empty") << QString() << QStringLiteral("A parameter set needs a name.");
        QTest::newRow("blank") << QStringLiteral(" ") << blanks;
        QTest::newRow("blank first") << QStringLiteral(" a") << blanks;
        QTest::newRow("blank last") << QStringLiteral("a ") << blanks;
        QTest::newRow("slash") << QStringLiteral("a/b") << characters;
        QTest::newRow("backslash") << QStringLiteral("a\\b") << characters;
        QTest::newRow("line break") << QStringLiteral("a\nb") << characters;
        QTest::newRow("null") << QString(QStringLiteral("a") + QChar(0) + QLatin1Char('b')) << characters;
        QTest::newRow("parent") << QStringLiteral("..") << dot;
        QTest::newRow("hidden") << QStringLiteral(".a") << dot;
        QTest::newRow("long") << QString(101, QChar(0xE4))
                              << QStringLiteral("The name of a parameter set has no more than 200 bytes.");
    }

    void badNamesAreRefused()
    {
        QFETCH(QString, name);
        QFETCH(QString, error);
        QCOMPARE(ParameterSetStore::CheckName(name), error);
        QCOMPARE(store().Save(name, xml), error);
        QCOMPARE(store().Load(name).error, error);
        QVERIFY(!store().Load(name).xml);
        QCOMPARE(store().Delete(name), error);
        QCOMPARE(store().Save(QStringLiteral("there"), xml), QString());
        QCOMPARE(store().Rename(name, QStringLiteral("there")), error);
        QCOMPARE(store().Rename(QStringLiteral("there"), name), error);
        QVERIFY(!store().Contains(name));
        QCOMPARE(store().GetNames(), QStringList(QStringLiteral("there")));
    }

    void namesOfAllLanguagesAreGood_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("umlaut") << QString::fromUtf8("Über Nacht");
        QTest::newRow("dots inside") << QStringLiteral("a.b.xml");
        QTest::newRow("as long as it may be") << QString(100, QChar(0xE4));
    }

    void namesOfAllLanguagesAreGood()
    {
        QFETCH(QString, name);
        QCOMPARE(store().Save(name, xml), QString());
        QCOMPARE(store().GetNames(), QStringList(name));
        QVERIFY(store().Contains(name));
        QCOMPARE(store().Load(name).xml, std::optional(xml));
    }

    void badContentIsToldWithFileAndReason_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("reason");
        QTest::newRow("empty") << QByteArray() << QStringLiteral("it is no XML (line 1: ");
        QTest::newRow("no XML") << QByteArray("<a>\n<b>") << QStringLiteral("it is no XML (line 2: ");
        QTest::newRow("no UTF-8") << QByteArray("<a>\xff</a>") << QStringLiteral("it is no UTF-8 text.");
        QTest::newRow("cut off inside a character") << QByteArray("<a/>\xc3") << QStringLiteral("it is no UTF-8 text.");
        QTest::newRow("entities") << QByteArray("<!DOCTYPE a [<!ENTITY b \"bb\">]><a>&b;</a>")
                                  << QStringLiteral("it has a document type declaration.");
        QTest::newRow("too large") << QByteArray("<a>" + QByteArray(ParameterSetStore::MaxSize, 'x') + "</a>")
                                   << QStringLiteral("it is larger than 1048576 bytes.");
    }

    void badContentIsToldWithFileAndReason()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, reason);
        const QString fileName = file(QStringLiteral("bad.xml"));
        write(fileName, content);
        const ParameterSetStore::Loaded loaded = store().Load(QStringLiteral("bad"));
        QVERIFY(!loaded.xml);
        const QString expected = fileName + QStringLiteral(": ") + reason;
        QVERIFY2(loaded.error.startsWith(expected), qPrintable(loaded.error));
        QVERIFY(loaded.error.endsWith(QLatin1Char('.')));
    }

    void badContentIsNotSavedAndTheOldStays()
    {
        QCOMPARE(store().Save(QStringLiteral("a"), xml), QString());
        for (const QString& bad : {QString(), QStringLiteral("<a>"), QStringLiteral("<!DOCTYPE a><a/>"),
                                   QString(ParameterSetStore::MaxSize + 1, QLatin1Char('x'))})
            QVERIFY(store().Save(QStringLiteral("a"), bad).startsWith(file(QStringLiteral("a.xml: "))));
        QCOMPARE(store().Load(QStringLiteral("a")).xml, std::optional(xml));
    }

    void aByteOrderMarkAndBlanksAroundAreLeftOut()
    {
        write(file(QStringLiteral("a.xml")), "\xEF\xBB\xBF<a/>\r\n");
        QCOMPARE(store().Load(QStringLiteral("a")).xml, std::optional(QStringLiteral("<a/>")));
    }

    void aMissingSetIsToldWithItsFile()
    {
        const QString fileName = file(QStringLiteral("none.xml"));
        QCOMPARE(store().Load(QStringLiteral("none")).error, fileName + QStringLiteral(": No such file or directory."));
        QCOMPARE(store().Delete(QStringLiteral("none")),
                 fileName + QStringLiteral(": there is no such parameter set."));
        QCOMPARE(store().Rename(QStringLiteral("none"), QStringLiteral("b")),
                 fileName + QStringLiteral(": there is no such parameter set."));
    }

    void renamingKeepsTheContent()
    {
        QCOMPARE(store().Save(QStringLiteral("a"), xml), QString());
        QCOMPARE(store().Rename(QStringLiteral("a"), QStringLiteral("b")), QString());
        QCOMPARE(store().GetNames(), QStringList(QStringLiteral("b")));
        QCOMPARE(store().Load(QStringLiteral("b")).xml, std::optional(xml));
        QCOMPARE(store().Rename(QStringLiteral("b"), QStringLiteral("b")), QString());
    }

    void renamingNeverReplacesAnotherSet()
    {
        QCOMPARE(store().Save(QStringLiteral("a"), xml), QString());
        QCOMPARE(store().Save(QStringLiteral("b"), QStringLiteral("<b/>")), QString());
        QCOMPARE(store().Rename(QStringLiteral("a"), QStringLiteral("b")),
                 file(QStringLiteral("b.xml: there is such a parameter set already.")));
        QCOMPARE(store().Load(QStringLiteral("b")).xml, std::optional(QStringLiteral("<b/>")));
        QVERIFY(store().Contains(QStringLiteral("a")));
    }

    void deletingTakesOneSetAway()
    {
        QCOMPARE(store().Save(QStringLiteral("a"), xml), QString());
        QCOMPARE(store().Save(QStringLiteral("b"), xml), QString());
        QCOMPARE(store().Delete(QStringLiteral("a")), QString());
        QCOMPARE(store().GetNames(), QStringList(QStringLiteral("b")));
    }

    void aFolderThatCannotBeMadeIsTold()
    {
        write(file(QStringLiteral("file")), "x");
        const ParameterSetStore impossible(file(QStringLiteral("file/folder")));
        QCOMPARE(impossible.Save(QStringLiteral("a"), xml),
                 file(QStringLiteral("file/folder: the folder cannot be made.")));
    }

    void aFileThatCannotBeWrittenIsToldAndStays()
    {
        // A folder in the file's place: refused for everybody, the superuser as well.
        QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("a.xml")));
        const QString error = store().Save(QStringLiteral("a"), xml);
        QVERIFY2(error.startsWith(file(QStringLiteral("a.xml: "))), qPrintable(error));
        QVERIFY(QFileInfo(file(QStringLiteral("a.xml"))).isDir());
        QVERIFY(store().Delete(QStringLiteral("a")).startsWith(file(QStringLiteral("a.xml: "))));
    }

    void aFileThatOpensButCannotBeReadIsTold()
    {
        // No process has memory at its address 0.
        QVERIFY(QFile::link(QStringLiteral("/proc/self/mem"), file(QStringLiteral("a.xml"))));
        const ParameterSetStore::Loaded loaded = store().Load(QStringLiteral("a"));
        QVERIFY(!loaded.xml);
        QCOMPARE(loaded.error, file(QStringLiteral("a.xml: Input/output error.")));
    }

    void aSetThatCannotBeRenamedIsToldAndStays()
    {
        QCOMPARE(store().Save(QStringLiteral("a"), xml), QString());
        // Nothing is there to be seen, and yet nothing can be put there.
        QVERIFY(QFile::link(file(QStringLiteral("nowhere/b.xml")), file(QStringLiteral("b.xml"))));
        QVERIFY(!store().Contains(QStringLiteral("b")));
        const QString error = store().Rename(QStringLiteral("a"), QStringLiteral("b"));
        QVERIFY2(error.startsWith(file(QStringLiteral("a.xml: "))), qPrintable(error));
        QCOMPARE(store().Load(QStringLiteral("a")).xml, std::optional(xml));
    }
};

DFL_TEST_MAIN_WITH(ParameterSetStoreTest, QCoreApplication)
#include "tst_parametersetstore.moc"
