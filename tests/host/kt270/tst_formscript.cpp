#include "forms.h"

#include "support/testmain.h"
#include "support/traces.h"

using testsupport::describedForm;
using testsupport::formFrom;
using testsupport::Traces;

namespace {

const QString bothEnabled =
    QStringLiteral("<Set><Count>0</Count><Length>0</Length><Detail><Lower>0</Lower><Upper>0</Upper></Detail></Set>");
const QString bothDisabled = QStringLiteral("<Set><Count>0</Count><Length>0</Length><Detail/></Set>");

} // namespace

class TestFormScript : public QObject
{
    Q_OBJECT
private slots:
    void aFunctionOfTheDescriptionEnablesAndDisablesFields()
    {
        const auto form = formFrom(describedForm());
        QVERIFY(form->EvaluateScript(QStringLiteral("useLimits(true);")));
        QCOMPARE(form->GetXmlString(), bothEnabled);
        QVERIFY(form->EvaluateScript(QStringLiteral("useLimits(false);")));
        QCOMPARE(form->GetXmlString(), bothDisabled);
    }

    void whatTheScriptAsksForAtItsFirstRunHoldsFromTheBeginning()
    {
        const auto form = formFrom(describedForm(QStringLiteral("useLimits(true);")));
        QCOMPARE(form->GetXmlString(), bothEnabled);
    }

    void whatAScriptDefinesStays()
    {
        const auto form = formFrom(describedForm());
        QVERIFY(form->EvaluateScript(QStringLiteral("var on = true;")));
        QVERIFY(form->EvaluateScript(QStringLiteral("useLimits(on)")));
        QCOMPARE(form->GetXmlString(), bothEnabled);
    }

    void aScriptThatFailsChangesNothingAndLeavesATrace_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("trace");
        QTest::newRow("syntax") << "useLimits(true);\n)"
                                << "Form script, line 2: SyntaxError: Unexpected token `)'";
        QTest::newRow("unknown function") << "useLimits(true);\nlimit();"
                                          << "Form script, line 2: ReferenceError: limit is not defined";
        QTest::newRow("unknown field") << "useLimits(true); form.setEnabled('Middle', true);"
                                       << "Form script, line 1: RangeError: no field \"Middle\"";
        QTest::newRow("thrown error") << "useLimits(true); throw new Error('no');"
                                      << "Form script, line 1: Error: no";
        QTest::newRow("thrown text") << "useLimits(true); throw 'no';"
                                     << "Form script, line 1: uncaught no";
        QTest::newRow("thrown nothing") << "useLimits(true); throw undefined;"
                                        << "Form script, line 1: uncaught undefined";
        QTest::newRow("endless recursion") << "useLimits(true); (function f() { f(); })();"
                                           << "Form script, line 1: RangeError: Maximum call stack size exceeded.";
        QTest::newRow("unfinished comment")
            << "useLimits(true); /*"
            << "Form script, line 1: SyntaxError: Unterminated regular expression literal";
    }
    void aScriptThatFailsChangesNothingAndLeavesATrace()
    {
        QFETCH(QString, code);
        QFETCH(QString, trace);
        const Traces traces;
        const auto form = formFrom(describedForm());
        QVERIFY(!form->EvaluateScript(code));
        QCOMPARE(form->GetXmlString(), bothDisabled);
        QCOMPARE(traces.records.size(), std::size_t(1));
        QCOMPARE(traces.records.front().text, trace);
    }

    void whatAFailedScriptAskedForIsNotDoneByTheNextOneEither()
    {
        const auto form = formFrom(describedForm());
        QVERIFY(!form->EvaluateScript(QStringLiteral("useLimits(true); throw 1;")));
        QVERIFY(form->EvaluateScript(QStringLiteral("0")));
        QCOMPARE(form->GetXmlString(), bothDisabled);
    }

    void withoutTheTraceBitNothingIsTraced()
    {
        const Traces traces(0);
        const auto form = formFrom(describedForm());
        QVERIFY(!form->EvaluateScript(QStringLiteral(")")));
        QVERIFY(traces.records.empty());
    }

    void aScriptThatCatchesItsErrorSucceeds()
    {
        const auto form = formFrom(describedForm());
        QVERIFY(form->EvaluateScript(
            QStringLiteral("try { form.setEnabled('Middle', true); } catch (error) { useLimits(true); }")));
        QCOMPARE(form->GetXmlString(), bothEnabled);
    }

    void anEndlessScriptIsInterruptedAndTheNextOneRuns_data()
    {
        QTest::addColumn<QString>("code");
        QTest::newRow("loop") << "useLimits(true); while (true) {}";
        QTest::newRow("loop that catches everything") << "while (true) { try { while (true) {} } catch (e) {} }";
        QTest::newRow("loop in finally") << "function f() { try { while (true) {} } finally { f(); } } f();";
        QTest::newRow("sort") << "var a = [2, 1]; a.sort(function() { while (true) {} });";
    }
    void anEndlessScriptIsInterruptedAndTheNextOneRuns()
    {
        QFETCH(QString, code);
        const Traces traces;
        const auto form = formFrom(describedForm());
        QVERIFY(!form->EvaluateScript(code));
        QCOMPARE(traces.records.front().text, QString("Form script, line 1: end within a second expected"));
        QCOMPARE(form->GetXmlString(), bothDisabled);
        QVERIFY(form->EvaluateScript(QStringLiteral("useLimits(true);")));
        QCOMPARE(form->GetXmlString(), bothEnabled);
    }

    void anEndlessScriptInADescriptionRefusesIt()
    {
        KT270::PgXmlParser parser;
        QVERIFY(parser.ParsePGXML(describedForm(QStringLiteral("for (;;) {}"))) == nullptr);
        QCOMPARE(parser.GetErrors(), QStringList("PGXML:12: script: end within a second expected"));
    }

    void theScriptSeesTheLanguageAndTheFormObjectOnly()
    {
        const QStringList allowed =
            QStringLiteral(
                "Array ArrayBuffer Boolean DataView Date Error EvalError Float32Array Float64Array Function Infinity "
                "Int16Array Int32Array Int8Array JSON Map Math NaN Number Object Proxy RangeError ReferenceError "
                "Reflect "
                "RegExp Set String Symbol SyntaxError TypeError URIError Uint16Array Uint32Array Uint8Array "
                "Uint8ClampedArray WeakMap WeakSet decodeURI decodeURIComponent encodeURI encodeURIComponent escape "
                "eval "
                "form isFinite isNaN parseFloat parseInt undefined unescape useLimits")
                .split(QLatin1Char(' '));
        const Traces traces;
        const auto form = formFrom(describedForm());
        QVERIFY(!form->EvaluateScript(QStringLiteral("throw Object.getOwnPropertyNames(this).sort().join(' ');")));
        QCOMPARE(traces.records.front().text,
                 QStringLiteral("Form script, line 1: uncaught ") + allowed.join(QLatin1Char(' ')));
    }

    void theFormObjectHasItsOneFunctionAndNothingOfAQtObject()
    {
        const Traces traces;
        const auto form = formFrom(describedForm());
        QVERIFY(!form->EvaluateScript(QStringLiteral("throw Object.getOwnPropertyNames(form).join(' ');")));
        QCOMPARE(traces.records.back().text, QString("Form script, line 1: uncaught setEnabled"));
        for (const char* const name : {"objectName", "deleteLater", "destroy", "destroyed", "parent", "children",
                                       "requests", "toLocaleString.deleteLater", "setEnabled.destroy"}) {
            const QString code = QStringLiteral("if (typeof form.%1 !== 'undefined') throw 'there';");
            QVERIFY2(form->EvaluateScript(code.arg(QLatin1String(name))), name);
        }
    }

    void theScriptCannotReachFilesModulesOrOtherPrograms_data()
    {
        QTest::addColumn<QString>("code");
        for (const char* const code :
             {"Qt.quit()", "Qt.include('x.js')", "import('x')", "import * as x from '/etc/passwd';", "require('fs')",
              "new XMLHttpRequest()", "new Worker('x.js')", "console.log('x')", "print('x')",
              "setTimeout(function() {}, 0)", "gc()", "Promise.resolve()", "new SharedArrayBuffer(4)",
              "Atomics.wait(new Int32Array(4), 0, 0)", "async function f() {}", "load('x')", "Function('return Qt')()",
              "eval('Qt')", "(function() { return this; })().Qt.quit()"})
            QTest::newRow(code) << code;
    }
    void theScriptCannotReachFilesModulesOrOtherPrograms()
    {
        QFETCH(QString, code);
        const auto form = formFrom(describedForm());
        QVERIFY(!form->EvaluateScript(code));
    }

    void formsDoNotShareTheirScripts()
    {
        const auto one = formFrom(describedForm());
        const auto other = formFrom(describedForm());
        QVERIFY(
            one->EvaluateScript(QStringLiteral("useLimits = function() {}; Array.prototype.x = 1; useLimits(true)")));
        QVERIFY(other->EvaluateScript(QStringLiteral("if ([].x) throw 'shared'; useLimits(true)")));
        QCOMPARE(one->GetXmlString(), bothDisabled);
        QCOMPARE(other->GetXmlString(), bothEnabled);
    }

    void beforeTheFieldsExistNoScriptRuns()
    {
        KT270::PgXmlParser parser;
        const std::unique_ptr<KT270::PgXmlFormular> form(parser.ParsePGXML(describedForm()));
        QVERIFY(!form->EvaluateScript(QStringLiteral("useLimits(true);")));
        form->CreateValueTree();
        QCOMPARE(form->GetXmlString(), bothDisabled);
    }
};

DFL_TEST_MAIN(TestFormScript)
#include "tst_formscript.moc"
