#include "forms.h"

#include "support/testmain.h"

#include <QAbstractButton>
#include <QRandomGenerator>
#include <QTemporaryDir>

using KT270::PgXmlFormular;
using KT270::PgXmlParser;
using testsupport::describedForm;

namespace {

/// A description whose root has @p content, on the lines from 2 on.
QString described(const QString& content)
{
    return QStringLiteral("<pgxml name=\"Set\" title=\"T\" context=\"C\">\n%1\n</pgxml>").arg(content);
}

QStringList errorsOf(const QString& text)
{
    PgXmlParser parser;
    const std::unique_ptr<PgXmlFormular> form(parser.ParsePGXML(text));
    return form ? QStringList() : parser.GetErrors();
}

QString written(const QTemporaryDir& folder, const QByteArray& bytes)
{
    const QString name = folder.filePath(QStringLiteral("form.xml"));
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("Cannot write %s", qPrintable(name));
    return name;
}

} // namespace

class TestPgXmlParser : public QObject
{
    Q_OBJECT
private slots:
    void aGoodDescriptionGivesAFormAndNoErrors()
    {
        PgXmlParser parser;
        const std::unique_ptr<PgXmlFormular> form(parser.ParsePGXML(describedForm()));
        QVERIFY(form);
        QCOMPARE(parser.GetErrors(), QStringList());
        QVERIFY(form->parent() == nullptr);
    }

    void aDescriptionMayHaveNeitherFieldsNorScript() { QCOMPARE(errorsOf(described(QString())), QStringList()); }

    void anEnumerationMayBeDeclaredBehindTheFieldThatUsesIt()
    {
        QCOMPARE(errorsOf(described(QStringLiteral(
                     "<field name=\"A\" type=\"enumeration\" enumeration=\"e\" label=\"L\" row=\"1\"/><enumeration "
                     "name=\"e\"/>"))),
                 QStringList());
    }

    void aBadDescriptionIsRefusedWithLineElementAndReason_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("errors");
        const auto add = [](const char* name, const QString& text, const QStringList& errors) {
            QTest::newRow(name) << text << errors;
        };
        const auto field = [](const QString& attributes) {
            return described(QStringLiteral("<field label=\"L\" ") + attributes + QStringLiteral("/>"));
        };
        add("another root", "<form>\n<field/></form>", {"PGXML:1: form: unknown element, \"pgxml\" expected"});
        add("root without attributes", "<pgxml/>",
            {"PGXML:1: pgxml: attribute \"name\" expected", "PGXML:1: pgxml: attribute \"title\" expected",
             "PGXML:1: pgxml: attribute \"context\" expected"});
        add("root name that is no element name", "<pgxml name=\"1st\" title=\"T\" context=\"C\"/>",
            {"PGXML:1: pgxml: a name of letters, digits and \"_\" expected, not \"1st\""});
        add("unknown attribute of the root", "<pgxml name=\"S\" title=\"T\" context=\"C\" version=\"2\"/>",
            {"PGXML:1: pgxml: unknown attribute \"version\""});
        add("unknown element", described("\n<feild name=\"A\"><deep/></feild>"),
            {"PGXML:3: feild: unknown element, \"enumeration\", \"field\", \"group\", \"script\" expected"});
        add("text between elements", described("stray"), {"PGXML:3: pgxml: no text expected"});
        add("enumeration without name", described("<enumeration/>"),
            {"PGXML:2: enumeration: attribute \"name\" expected"});
        add("enumeration twice", described("<enumeration name=\"e\"/>\n<enumeration name=\"e\"/>"),
            {"PGXML:3: enumeration: another name than \"e\" expected, it is taken"});
        add("enumeration with content", described("<enumeration name=\"e\"><item/></enumeration>"),
            {"PGXML:2: item: unknown element, nothing expected"});
        add("field without anything", described("<field/>"),
            {"PGXML:2: field: attribute \"name\" expected", "PGXML:2: field: attribute \"type\" expected",
             "PGXML:2: field: attribute \"label\" expected", "PGXML:2: field: attribute \"row\" expected"});
        add("empty attribute", field("name=\"\" type=\"integer\" row=\"1\""),
            {"PGXML:2: field: attribute \"name\" expected"});
        add("unknown attribute of a field", field("name=\"A\" type=\"integer\" row=\"1\" colour=\"red\""),
            {"PGXML:2: field: unknown attribute \"colour\""});
        add("unknown type", field("name=\"A\" type=\"date\" row=\"1\""),
            {"PGXML:2: field: type \"integer\", \"number\" or \"enumeration\" expected, not \"date\""});
        add("enumeration field without enumeration", field("name=\"A\" type=\"enumeration\" row=\"1\""),
            {"PGXML:2: field: attribute \"enumeration\" expected"});
        add("enumeration of a number", field("name=\"A\" type=\"number\" enumeration=\"e\" row=\"1\""),
            {"PGXML:2: field: attribute \"enumeration\" expected only with type \"enumeration\""});
        add("enumeration not declared", field("name=\"A\" type=\"enumeration\" enumeration=\"e\" row=\"1\""),
            {"PGXML:2: field: a declared enumeration expected, not \"e\""});
        add("row that is no number", field("name=\"A\" type=\"integer\" row=\"top\""),
            {"PGXML:2: field: a row from 1 to 999 expected, not \"top\""});
        add("row zero", field("name=\"A\" type=\"integer\" row=\"0\""),
            {"PGXML:2: field: a row from 1 to 999 expected, not \"0\""});
        add("row too large", field("name=\"A\" type=\"integer\" row=\"1000\""),
            {"PGXML:2: field: a row from 1 to 999 expected, not \"1000\""});
        add("row taken",
            described("<field name=\"A\" type=\"integer\" label=\"L\" row=\"1\"/>\n"
                      "<field name=\"B\" type=\"integer\" label=\"L\" row=\"1\"/>"),
            {"PGXML:3: field: another row than 1 expected, it is taken"});
        add("field twice",
            described("<field name=\"A\" type=\"integer\" label=\"L\" row=\"1\"/>\n"
                      "<field name=\"A\" type=\"integer\" label=\"L\" row=\"2\"/>"),
            {"PGXML:3: field: another name than \"A\" expected, it is taken"});
        add("field named as a group",
            described("<group name=\"G\" label=\"L\" row=\"1\"><field name=\"G/A\" type=\"integer\" label=\"L\" "
                      "row=\"2\"/></group>\n<field name=\"G\" type=\"integer\" label=\"L\" row=\"3\"/>"),
            {"PGXML:3: field: another name than \"G\" expected, it is taken"});
        add("field name with a blank", field("name=\"A B\" type=\"integer\" row=\"1\""),
            {"PGXML:2: field: a name of letters, digits and \"_\" expected, not \"A B\""});
        add("path outside a group", field("name=\"G/A\" type=\"integer\" row=\"1\""),
            {"PGXML:2: field: a name of letters, digits and \"_\" expected, not \"G/A\""});
        add("field of another group",
            described("<group name=\"G\" label=\"L\" row=\"1\">\n<field name=\"H/A\" type=\"integer\" label=\"L\" "
                      "row=\"2\"/></group>"),
            {"PGXML:3: field: a name that begins with \"G/\" expected, not \"H/A\""});
        add("field with the group's path alone",
            described("<group name=\"G\" label=\"L\" row=\"1\">\n<field name=\"G/\" type=\"integer\" label=\"L\" "
                      "row=\"2\"/></group>"),
            {"PGXML:3: field: a name that begins with \"G/\" expected, not \"G/\""});
        add("path too long",
            described("<group name=\"G\" label=\"L\" row=\"1\">\n<field name=\"G/A/B\" type=\"integer\" label=\"L\" "
                      "row=\"2\"/></group>"),
            {"PGXML:3: field: a name of letters, digits and \"_\" expected, not \"A/B\""});
        add("empty group", described("<group name=\"G\" label=\"L\" row=\"1\">\n\n</group>"),
            {"PGXML:2: group: at least one field expected"});
        add("group in a group",
            described("<group name=\"G\" label=\"L\" row=\"1\"><field name=\"G/A\" type=\"integer\" label=\"L\" "
                      "row=\"2\"/>\n<group name=\"H\" label=\"L\" row=\"3\"/></group>"),
            {"PGXML:3: group: unknown element, \"field\" expected"});
        add("script with a syntax error", described("<script>\nfunction f() {\n  let x = ;\n}\n</script>"),
            {"PGXML:4: script: SyntaxError: Expected token `numeric literal'"});
        add("script in a CDATA section with an error", described("<script><![CDATA[\n\nunknown();\n]]></script>"),
            {"PGXML:4: script: ReferenceError: unknown is not defined"});
        add("script that names an unknown field", described("<script>form.setEnabled('A', true);</script>"),
            {"PGXML:2: script: RangeError: no field \"A\""});
        add("script with an attribute", described("<script src=\"file:///etc/passwd\"/>"),
            {"PGXML:2: script: unknown attribute \"src\""});
        add("script with an element", described("<script>\n<b/></script>"),
            {"PGXML:3: b: unknown element, only text expected"});
        add("two scripts", described("<script/>\n<script/>"), {"PGXML:3: script: at most one script expected"});
        add("nothing", QString(), {"PGXML:1: XML: well-formed XML expected (Premature end of document.)"});
        add("not closed", "<pgxml name=\"S\" title=\"T\" context=\"C\">\n",
            {"PGXML:2: XML: well-formed XML expected (Premature end of document.)"});
        add("cut off in the script", "<pgxml name=\"S\" title=\"T\" context=\"C\"><script>\nfunction f() {",
            {"PGXML:2: XML: well-formed XML expected (Premature end of document.)"});
        add("attribute twice", described("<enumeration name=\"a\" name=\"b\"/>"),
            {"PGXML:2: XML: well-formed XML expected (Attribute 'name' redefined.)"});
        add("document type", "<!DOCTYPE pgxml>\n<pgxml name=\"S\" title=\"T\" context=\"C\"/>",
            {"PGXML:1: DOCTYPE: no document type declaration expected"});
        add("several errors, by line",
            described("<field name=\"A\" type=\"enumeration\" enumeration=\"e\" label=\"L\" row=\"x\"/>\n<what/>\n"
                      "<script>(</script>"),
            {"PGXML:2: field: a row from 1 to 999 expected, not \"x\"",
             "PGXML:2: field: a declared enumeration expected, not \"e\"",
             "PGXML:3: what: unknown element, \"enumeration\", \"field\", \"group\", \"script\" expected",
             "PGXML:4: script: SyntaxError: Unexpected token `;'"});
    }
    void aBadDescriptionIsRefusedWithLineElementAndReason()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, errors);
        QCOMPARE(errorsOf(text).join(QLatin1Char('\n')), errors.join(QLatin1Char('\n')));
    }

    void theErrorsAreThoseOfTheLastParse()
    {
        PgXmlParser parser;
        QVERIFY(parser.ParsePGXML(QStringLiteral("<a/>")) == nullptr);
        QVERIFY(parser.ParsePGXML(QStringLiteral("<b/>")) == nullptr);
        QCOMPARE(parser.GetErrors(), QStringList("PGXML:1: b: unknown element, \"pgxml\" expected"));
        const std::unique_ptr<PgXmlFormular> form(parser.ParsePGXML(describedForm()));
        QCOMPARE(parser.GetErrors(), QStringList());
    }

    void noEntityIsExpanded()
    {
        QString bomb = QStringLiteral("<!DOCTYPE pgxml [<!ENTITY a0 \"lol\">");
        for (int i = 1; i < 30; ++i)
            bomb += QStringLiteral("<!ENTITY a%1 \"&a%2;&a%2;&a%2;\">").arg(QString::number(i), QString::number(i - 1));
        bomb += QStringLiteral("]>") + described(QStringLiteral("<script>&a29;</script>"));
        QCOMPARE(errorsOf(bomb), QStringList("PGXML:1: DOCTYPE: no document type declaration expected"));
    }

    void nothingIsFetchedFromTheNetworkOrAFile()
    {
        for (const char* const address : {"http://127.0.0.1/form", "file:///etc/passwd"}) {
            const QString text = QStringLiteral("<!DOCTYPE pgxml SYSTEM \"%1\" [<!ENTITY x SYSTEM \"%1\">]>")
                                     .arg(QLatin1String(address)) +
                                 described(QStringLiteral("<script>&x;</script>"));
            QCOMPARE(errorsOf(text), QStringList("PGXML:1: DOCTYPE: no document type declaration expected"));
        }
    }

    void deepNestingIsRefused()
    {
        constexpr int levels = 100000;
        const QString deep = QStringLiteral("<a>").repeated(levels) + QStringLiteral("</a>").repeated(levels);
        QCOMPARE(errorsOf(described(deep)).size(), 1);
    }

    void aTextAboveTheLargestSizeIsRefused()
    {
        const QString frame = described(QString());
        const QString largest = described(QString(PgXmlParser::MaxSize - frame.size(), QLatin1Char(' ')));
        QCOMPARE(errorsOf(largest), QStringList());
        QCOMPARE(errorsOf(largest + QLatin1Char(' ')),
                 QStringList("PGXML:1: XML: at most 1048576 characters expected"));
        QCOMPARE(errorsOf(QString(10 * 1024 * 1024, QLatin1Char('<'))),
                 QStringList("PGXML:1: XML: at most 1048576 characters expected"));
    }

    void aFileIsReadInItsEncoding_data()
    {
        QTest::addColumn<QByteArray>("declaration");
        QTest::addColumn<QByteArray>("title");
        QTest::newRow("UTF-8 by default") << QByteArray()
                                          << QByteArray("Pr\xc3\xbc"
                                                        "fung");
        QTest::newRow("as declared") << QByteArray("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>")
                                     << QByteArray("Pr\xfc"
                                                   "fung");
    }
    void aFileIsReadInItsEncoding()
    {
        QFETCH(QByteArray, declaration);
        QFETCH(QByteArray, title);
        const QTemporaryDir folder;
        PgXmlParser parser;
        const std::unique_ptr<PgXmlFormular> form(parser.ParsePGXMLFile(
            written(folder, declaration + "<pgxml name=\"S\" context=\"C\" title=\"" + title + "\"/>")));
        QVERIFY2(form, qPrintable(parser.GetErrors().join(QLatin1Char('\n'))));
        bool found = false;
        for (const QAbstractButton* button : form->GetWidget()->findChildren<QAbstractButton*>())
            found = found || button->text() == QString::fromUtf8("Pr\xc3\xbc"
                                                                 "fung");
        QVERIFY(found);
    }

    void errorsInAFileNameTheFile()
    {
        const QTemporaryDir folder;
        const QString name = written(folder, "<pgxml>\n</pgxml");
        PgXmlParser parser;
        QVERIFY(parser.ParsePGXMLFile(name) == nullptr);
        QCOMPARE(parser.GetErrors().first(), name + QStringLiteral(":1: pgxml: attribute \"name\" expected"));
    }

    void aFileThatCannotBeReadIsRefused()
    {
        PgXmlParser parser;
        QVERIFY(parser.ParsePGXMLFile(QStringLiteral("/nowhere/form.xml")) == nullptr);
        QCOMPARE(parser.GetErrors(),
                 QStringList("/nowhere/form.xml:1: XML: a readable file expected (No such file or directory)"));
        const QTemporaryDir folder;
        QVERIFY(parser.ParsePGXMLFile(folder.path()) == nullptr);
        QCOMPARE(parser.GetErrors().size(), 1);
        // Opens, but no process has memory at its address 0.
        QVERIFY(parser.ParsePGXMLFile(QStringLiteral("/proc/self/mem")) == nullptr);
        QCOMPARE(parser.GetErrors(),
                 QStringList("/proc/self/mem:1: XML: a readable file expected (Input/output error)"));
    }

    void aFileAboveTheLargestSizeIsRefusedEvenWhenItHasNoEnd()
    {
        PgXmlParser parser;
        QVERIFY(parser.ParsePGXMLFile(QStringLiteral("/dev/zero")) == nullptr);
        QCOMPARE(parser.GetErrors(), QStringList("/dev/zero:1: XML: at most 1048576 bytes expected"));
    }

    void randomDamageNeverCrashesAndNeverLeavesARefusalWithoutReason()
    {
        const QString good = describedForm();
        QRandomGenerator random(20231107);
        for (int i = 0; i < 400; ++i) {
            QString bad = good;
            for (int hits = random.bounded(1, 4); hits > 0; --hits) {
                const int at = random.bounded(bad.size());
                if (random.bounded(2) == 0)
                    bad.remove(at, random.bounded(1, 20));
                else
                    bad.insert(at, QChar(random.bounded(0x20, 0x17f)));
            }
            PgXmlParser parser;
            const std::unique_ptr<PgXmlFormular> form(parser.ParsePGXML(bad));
            QVERIFY2(bool(form) == parser.GetErrors().isEmpty(), qPrintable(bad));
        }
    }
};

DFL_TEST_MAIN(TestPgXmlParser)
#include "tst_pgxmlparser.moc"
