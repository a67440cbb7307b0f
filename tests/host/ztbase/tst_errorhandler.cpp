#include "support/testmain.h"
#include "support/traces.h"
#include "ztbase/exceptions.h"

#include <type_traits>

class TestErrorHandler : public QObject
{
    Q_OBJECT

private slots:
    void thereIsOneErrorHandlerAndItIsNeverNull()
    {
        QVERIFY(ErrorHandler::Instance() != nullptr);
        QCOMPARE(ErrorHandler::Instance(), ErrorHandler::Instance());
    }

    void noTraceIsWantedAtFirst() { QCOMPARE(ErrorHandler::Instance()->GetTraceMask(), 0); }

    void theTraceMaskIsKeptAsSet()
    {
        ErrorHandler::Instance()->SetTraceMask(0x2A);
        QCOMPARE(ErrorHandler::Instance()->GetTraceMask(), 0x2A);
        ErrorHandler::Instance()->SetTraceMask(0);
    }

    void aTraceReachesTheSinkWithTextFileAndLine()
    {
        testsupport::Traces traces;
        _Q_Trace(QStringLiteral("text"), QStringLiteral("folder/unit"), 299);
        QCOMPARE(traces.records.size(), std::size_t(1));
        QCOMPARE(traces.records[0].text, QString("text"));
        QCOMPARE(traces.records[0].sourceFile, QString("folder/unit"));
        QCOMPARE(traces.records[0].line, static_cast<unsigned short>(299));
    }

    void withoutASinkTracesGoToTheMessageLog()
    {
        QTest::ignoreMessage(QtInfoMsg, QRegularExpression("unit.* 7 .*text"));
        _Q_Trace(QStringLiteral("text"), QStringLiteral("unit"), 7);
    }

    void aSinkMayReplaceItself()
    {
        int calls = 0;
        ErrorHandler::Instance()->SetTraceSink([&](const TraceRecord&) {
            ErrorHandler::Instance()->SetTraceSink([&](const TraceRecord&) { calls += 10; });
            ++calls;
        });
        _Q_Trace(QString(), QString(), 0);
        _Q_Trace(QString(), QString(), 0);
        ErrorHandler::Instance()->SetTraceSink(nullptr);
        QCOMPARE(calls, 11);
    }

    void exceptionsCarryPlaceAndMessage()
    {
        const ReportException report(QStringLiteral("DF_Settings"), QStringLiteral("no root element"));
        QCOMPARE(report.GetPlace(), QString("DF_Settings"));
        QCOMPARE(report.GetMessage(), QString("no root element"));
        QCOMPARE(QByteArray(report.what()), QByteArray("DF_Settings: no root element"));
        QCOMPARE(QByteArray(ZTException("Tree", "full").what()), QByteArray("Tree: full"));
        QCOMPARE(QByteArray(RGException("Object", QString::fromUtf8("ä")).what()), QByteArray("Object: \xc3\xa4"));
    }

    void theExceptionClassesAreStandardExceptionsButUnrelated()
    {
        static_assert(std::is_base_of_v<std::exception, ZTException>);
        static_assert(std::is_base_of_v<std::exception, RGException>);
        static_assert(std::is_base_of_v<std::exception, ReportException>);
        bool caughtAsOther = false;
        bool caughtAsStandard = false;
        try {
            throw RGException("a", "b");
        } catch (const ReportException&) {
            caughtAsOther = true;
        } catch (const ZTException&) {
            caughtAsOther = true;
        } catch (const std::exception&) {
            caughtAsStandard = true;
        }
        QVERIFY(!caughtAsOther);
        QVERIFY(caughtAsStandard);
    }
};

DFL_TEST_MAIN_WITH(TestErrorHandler, QCoreApplication)
#include "tst_errorhandler.moc"
