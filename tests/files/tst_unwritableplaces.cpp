#include "support/asnobody.h"
#include "support/testmain.h"
#include "writers.h"

#include <QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

using namespace testsupport;

namespace {

void setMode(const QString& path, mode_t mode)
{
    if (chmod(qPrintable(path), mode) != 0)
        qFatal("The permissions of %s cannot be changed", qPrintable(path));
}

} // namespace

/// Every writer at every place where no file can be written.
class TestUnwritablePlaces : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        setMode(m_folder->path(), 0755);
    }

    void aFolderWithoutPermissionIsToldAndTheOldContentStays_data() { addWriters(); }

    void aFolderWithoutPermissionIsToldAndTheOldContentStays()
    {
        QFETCH(int, writer);
        const QString folder = makeFolder(QStringLiteral("forbidden"));
        const QString file = fileIn(folder, writer);
        QCOMPARE(write(writer, file, 1), QString());
        const QByteArray old = contentOf(file);
        setMode(folder, 0555);
        {
            const AsNobody nobody;
            QCOMPARE(write(writer, file, 2), QStringLiteral("Existing file %1 is not writable").arg(file));
        }
        QCOMPARE(contentOf(file), old);
        QCOMPARE(filesIn(folder).size(), 1);
        setMode(folder, 0755);
    }

    void aNewFileInAFolderWithoutPermissionIsTold_data() { addWriters(); }

    void aNewFileInAFolderWithoutPermissionIsTold()
    {
        QFETCH(int, writer);
        const QString folder = makeFolder(QStringLiteral("forbidden"));
        setMode(folder, 0555);
        {
            const AsNobody nobody;
            QCOMPARE(write(writer, fileIn(folder, writer), 1), QString("Permission denied"));
        }
        QCOMPARE(filesIn(folder), QStringList());
        setMode(folder, 0755);
    }

    void aFileWithoutPermissionIsToldAndStays_data() { addWriters(); }

    void aFileWithoutPermissionIsToldAndStays()
    {
        QFETCH(int, writer);
        const QString folder = makeFolder(QStringLiteral("open"));
        setMode(folder, 0777);
        const QString file = fileIn(folder, writer);
        QCOMPARE(write(writer, file, 1), QString());
        const QByteArray old = contentOf(file);
        setMode(file, 0444);
        {
            const AsNobody nobody;
            QVERIFY(!write(writer, file, 2).isEmpty());
        }
        QCOMPARE(contentOf(file), old);
        QCOMPARE(filesIn(folder).size(), 1);
    }

    void aPlaceBelowAFileIsTold_data() { addWriters(); }

    void aPlaceBelowAFileIsTold()
    {
        QFETCH(int, writer);
        const QString obstacle = m_folder->filePath(QStringLiteral("letter"));
        QCOMPARE(writeExport(obstacle, 7, false), QString());
        const QByteArray letter = contentOf(obstacle);
        QVERIFY(!write(writer, fileIn(obstacle, writer), 2).isEmpty());
        QCOMPARE(contentOf(obstacle), letter);
        QCOMPARE(filesIn(m_folder->path()), QStringList("letter"));
    }

    void aFolderInPlaceOfTheFileIsTold_data() { addWriters(); }

    void aFolderInPlaceOfTheFileIsTold()
    {
        QFETCH(int, writer);
        const QString file = fileIn(m_folder->path(), writer);
        QVERIFY(QDir().mkpath(file + QStringLiteral("/inner")));
        QVERIFY(!write(writer, file, 2).isEmpty());
        QCOMPARE(filesIn(file), QStringList("inner"));
        QCOMPARE(filesIn(m_folder->path()).size(), 1);
    }

    void aSystemFolderThatTakesNoFilesIsTold_data() { addWriters(); }

    void aSystemFolderThatTakesNoFilesIsTold()
    {
        QFETCH(int, writer);
        QVERIFY(!write(writer, fileIn(QStringLiteral("/proc/self"), writer), 2).isEmpty());
    }

    /// A link to a place that is not there: nothing is made at either end.
    void aLinkToAVanishedFolderIsTold_data() { addWriters(); }

    void aLinkToAVanishedFolderIsTold()
    {
        QFETCH(int, writer);
        const QString file = fileIn(m_folder->path(), writer);
        QVERIFY(QFile::link(m_folder->filePath(QStringLiteral("vanished/target")), file));
        QVERIFY(!write(writer, file, 2).isEmpty());
        QVERIFY(QFileInfo(file).isSymLink());
        QCOMPARE(filesIn(m_folder->path()).size(), 1);
    }

    /// The place of a file is where its link points.
    void aLinkStaysALink_data() { addWriters(); }

    void aLinkStaysALink()
    {
        QFETCH(int, writer);
        const QString target = fileIn(makeFolder(QStringLiteral("elsewhere")), writer);
        QCOMPARE(write(writer, target, 1), QString());
        const QByteArray old = contentOf(target);
        const QString file = fileIn(m_folder->path(), writer);
        QVERIFY(QFile::link(target, file));
        QCOMPARE(write(writer, file, 2), QString());
        QVERIFY(QFileInfo(file).isSymLink());
        QVERIFY(contentOf(target) != old);
    }

    void aVanishedFolderIsTold_data() { addWriters(); }

    /// All but the store of parameter sets, which makes its folder.
    void aVanishedFolderIsTold()
    {
        QFETCH(int, writer);
        const QString folder = m_folder->filePath(QStringLiteral("vanished"));
        const QString reason = write(writer, fileIn(folder, writer), 2);
        if (writers()[writer].write == writeParameterSet)
            QCOMPARE(reason, QString());
        else
            QCOMPARE(reason, QString("No such file or directory"));
        QCOMPARE(QFileInfo::exists(folder), reason.isEmpty());
    }

    void aRecordingWhoseFolderVanishesIsTold()
    {
        const QString folder = makeFolder(QStringLiteral("doomed"));
        workbench::RecordingWriter recording(folder + QStringLiteral("/bearings.csv"));
        QVERIFY(QDir(folder).removeRecursively());
        QVERIFY(!recording.commit());
        QVERIFY2(recording.errorString().startsWith(folder + QStringLiteral("/bearings.csv: cannot be written: ")),
                 qPrintable(recording.errorString()));
        QVERIFY(!QFileInfo::exists(folder));
    }

private:
    static void addWriters()
    {
        QTest::addColumn<int>("writer");
        for (int i = 0; i < static_cast<int>(writers().size()); ++i)
            QTest::addRow("%s", writers()[i].name) << i;
    }

    [[nodiscard]] QString makeFolder(const QString& name) const
    {
        const QString folder = m_folder->filePath(name);
        if (!QDir().mkpath(folder))
            qFatal("The folder %s cannot be made", qPrintable(folder));
        return folder;
    }

    [[nodiscard]] static QString fileIn(const QString& folder, int writer)
    {
        return folder + QLatin1Char('/') + QString::fromLatin1(writers()[writer].fileName);
    }

    /// The reason of a failure, which the sentence gives behind a path; empty without one.
    [[nodiscard]] static QString write(int writer, const QString& file, int version)
    {
        const QString sentence = writers()[writer].write(file, version, false);
        if (sentence.isEmpty())
            return {};
        // The store of parameter sets may fail at the folder already.
        if (!sentence.startsWith(QFileInfo(file).path()))
            return QStringLiteral("a sentence without a place: ") + sentence;
        QString reason = sentence.section(QStringLiteral(": "), -1);
        if (reason.endsWith(QLatin1Char('.')))
            reason.chop(1);
        return reason == QLatin1String("Unknown error") ? QStringLiteral("a sentence without a reason") : reason;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

DFL_TEST_MAIN(TestUnwritablePlaces)
#include "tst_unwritableplaces.moc"
