#include "filework/filework.h"
#include "filework/savefile.h"

#include "workbench/filework/busydisk.h"

#include <QTemporaryDir>
#include <QThread>

#include <memory>

using testsupport::BusyDisk;
using workbench::FileWork;
using workbench::saveFile;

namespace {

QByteArray contentOf(const QString& name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("there is no such file");
}

} // namespace

class TestFileWork : public QObject
{
    Q_OBJECT
private slots:
    void workIsDoneElsewhereAndAnsweredHere()
    {
        FileWork work;
        QThread* doneIn = nullptr;
        QThread* answeredIn = nullptr;
        work.run([] { return QThread::currentThread(); },
                 [&](QThread* thread) {
                     doneIn = thread;
                     answeredIn = QThread::currentThread();
                 });
        QVERIFY(answeredIn == nullptr); // from the event loop
        QTRY_VERIFY(answeredIn != nullptr);
        QCOMPARE(answeredIn, QThread::currentThread());
        QVERIFY(doneIn != nullptr && doneIn != answeredIn);
    }

    void workIsDoneAndAnsweredInTheOrderOfTheCalls()
    {
        FileWork one;
        FileWork other;
        auto done = std::make_shared<QVector<int>>();
        QVector<int> answered;
        QVector<int> expected;
        for (int i = 0; i < 200; ++i) {
            FileWork& asked = i % 3 == 0 ? one : other;
            asked.run(
                [done, i] {
                    done->append(i);
                    return i;
                },
                [&](int number) { answered += number; });
            expected += i;
        }
        QTRY_COMPARE(answered.size(), expected.size());
        QCOMPARE(*done, expected);
        QCOMPARE(answered, expected);
    }

    void whoAsksMayGoAndTheWorkIsDoneAllTheSame()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("a"));
        bool isAnswered = false;
        BusyDisk disk;
        {
            FileWork work;
            work.run([file] { return saveFile(file, "content"); },
                     [&](const std::optional<QString>&) { isAnswered = true; });
        }
        QVERIFY(!QFileInfo::exists(file));
        disk.release();
        QTRY_COMPARE(contentOf(file), QByteArray("content"));
        QCoreApplication::processEvents();
        QVERIFY(!isAnswered);
    }

    void whoAsksMayGoInTheAnswer()
    {
        auto work = std::make_unique<FileWork>();
        work->run([] { return 1; }, [&](int) { work.reset(); });
        QTRY_VERIFY(work == nullptr);
    }

    void anAnswerMayAskForMore()
    {
        FileWork work;
        int sum = 0;
        work.run([] { return 1; },
                 [&](int first) { work.run([first] { return first + 1; }, [&](int second) { sum = second; }); });
        QTRY_COMPARE(sum, 2);
    }

    void aFileIsWrittenAsAWholeOrItsPlaceIsLeftAlone()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("a.csv"));
        QCOMPARE(saveFile(file, "first"), std::optional<QString>());
        QCOMPARE(contentOf(file), QByteArray("first"));
        const QString nowhere = folder.filePath(QStringLiteral("missing/a %1.csv"));
        const auto failure = saveFile(nowhere, "x");
        QVERIFY(failure.has_value());
        QVERIFY2(failure->startsWith(nowhere + QStringLiteral(": the file cannot be written: ")), qPrintable(*failure));
        QVERIFY(failure->endsWith(QLatin1Char('.')));
        QVERIFY(!QFileInfo::exists(nowhere));
    }
};

namespace {

/// Whether work that is still to be done when the application object goes is done then.
int testTheEnd(const QString& file)
{
    if (contentOf(file) == "content")
        return 0;
    qWarning("Work that was asked for is lost at the end of the program.");
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    testsupport::prepareProcess(150);
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("last"));
    int failures = 0;
    {
        QCoreApplication app(argc, argv);
        TestFileWork test;
        failures = QTest::qExec(&test, argc, argv);
        FileWork work;
        work.run(
            [file] {
                QThread::yieldCurrentThread();
                return saveFile(file, "content");
            },
            [](const std::optional<QString>&) {});
    }
    return failures + testTheEnd(file);
}

#include "tst_filework.moc"
