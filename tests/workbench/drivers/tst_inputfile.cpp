#include "drivers/inputfile.h"
#include "support/testmain.h"
#include "textfile.h"

#include <sys/stat.h>
#include <thread>

using namespace workbench;

class InputFileTest : public QObject
{
    Q_OBJECT
private slots:
    void aFileOfTheLargestSizeIsReadWhole();
    void aLargerFileIsToldWithItsSizeAndTheLimit();
    void aPipeIsReadToItsEnd();
    void whatDoesNotEndIsReadToTheLimit();
    void whatFailsWhileItIsReadIsToldWithItsReason();
    void aFolderIsNoInput();

private:
    static QString refusal(const QString& file, const char* reason)
    {
        return file + QStringLiteral(": cannot be read: ") + QLatin1String(reason);
    }

    testsupport::TextFiles m_files;
};

void InputFileTest::aFileOfTheLargestSizeIsReadWhole()
{
    for (const QByteArray& content : {QByteArray(), QByteArray("0123456789"), QByteArray(3'000'000, 'x')}) {
        const Loaded<QByteArray> bytes = readInput(m_files.write(QStringLiteral("file"), content), content.size());
        QVERIFY(bytes);
        QCOMPARE(*bytes.value, content);
        QVERIFY(bytes.errors.isEmpty());
    }
}

void InputFileTest::aLargerFileIsToldWithItsSizeAndTheLimit()
{
    const QString file = m_files.write(QStringLiteral("%1.csv"), "0123456789A");
    const Loaded<QByteArray> bytes = readInput(file, 10);
    QVERIFY(!bytes);
    QCOMPARE(bytes.errors, QStringList{refusal(file, "it is too large: 11 bytes, at most 10 are allowed")});
}

// What a shell puts in the place of a file, and what tells no size.
void InputFileTest::aPipeIsReadToItsEnd()
{
    const QString file = m_files.path(QStringLiteral("pipe"));
    QCOMPARE(mkfifo(qPrintable(file), 0600), 0);
    const QByteArray content(2'500'000, 'x');
    std::thread writer([&] {
        QFile pipe(file);
        if (!pipe.open(QIODevice::WriteOnly) || pipe.write(content) != content.size())
            qFatal("The pipe cannot be written");
    });
    const Loaded<QByteArray> bytes = readInput(file, content.size());
    writer.join();
    QVERIFY(bytes);
    QCOMPARE(*bytes.value, content);
}

void InputFileTest::whatDoesNotEndIsReadToTheLimit()
{
    const QString file = QStringLiteral("/dev/zero");
    QCOMPARE(readInput(file, 5'000'000).errors,
             QStringList{refusal(file, "it is too large: at most 5000000 bytes are allowed")});
}

void InputFileTest::whatFailsWhileItIsReadIsToldWithItsReason()
{
    const QString file = QStringLiteral("/proc/self/mem"); // nothing is there at its beginning
    QCOMPARE(readInput(file, 1000).errors, QStringList{refusal(file, "Input/output error")});
}

void InputFileTest::aFolderIsNoInput()
{
    const QString folder = m_files.path(QString());
    QCOMPARE(readInput(folder, 1000).errors, QStringList{refusal(folder, "file to open is a directory")});
}

DFL_TEST_MAIN_WITH(InputFileTest, QCoreApplication)
#include "tst_inputfile.moc"
