#include "jobxml/df_settings.h"
#include "support/testmain.h"

#include <QRandomGenerator>
#include <QXmlStreamReader>

#include <cmath>
#include <cstring>
#include <limits>

using namespace JobXml;

namespace {

const QString emptyXml = QStringLiteral("<DF_Settings/>");

QString root(const QString& children)
{
    return QStringLiteral("<DF_Settings>%1</DF_Settings>").arg(children);
}

DF_Settings fullSettings()
{
    DF_Settings settings;
    Bandwidth bandwidth;
    bandwidth.SetValue(12000.0);
    settings.SetBandwidth(bandwidth);
    settings.SetAveraging(200.0);
    settings.SetDFMode(DF_Settings::DFModeNorm);
    settings.GetDetail().SetQualityThreshold(70);
    settings.GetDetail().SetLevelThreshold(-12.7);
    settings.SetFrequencyOffset(-2500.0);
    settings.SetWorkflow(DF_Settings::WorkflowContinuous);
    settings.SetLocateType(DF_Settings::LocateTypeOnline);
    settings.SetActivity(DF_Settings::ActivityDFAndLocate);
    settings.SetActivityTrigger(DF_Settings::ActivityTriggerSchedule);
    return settings;
}

const QString fullXml = QStringLiteral("<DF_Settings>"
                                       "<Bandwidth>12000</Bandwidth>"
                                       "<Averaging>200</Averaging>"
                                       "<DFMode>Norm</DFMode>"
                                       "<Detail>"
                                       "<QualityThreshold>70</QualityThreshold>"
                                       "<LevelThreshold>-12.7</LevelThreshold>"
                                       "</Detail>"
                                       "<FrequencyOffset>-2500</FrequencyOffset>"
                                       "<Workflow>Continuous</Workflow>"
                                       "<LocateType>Online</LocateType>"
                                       "<Activity>DF and locate</Activity>"
                                       "<ActivityTrigger>Schedule</ActivityTrigger>"
                                       "</DF_Settings>");

bool sameBits(double a, double b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

/// True when both have the same fields set to the same contents, bit by bit.
bool same(const DF_Settings& a, const DF_Settings& b)
{
    return a.IsBandwidthSet() == b.IsBandwidthSet() &&
           sameBits(a.GetBandwidth().GetValue(), b.GetBandwidth().GetValue()) &&
           a.IsAveragingSet() == b.IsAveragingSet() && sameBits(a.GetAveraging(), b.GetAveraging()) &&
           a.IsDFModeSet() == b.IsDFModeSet() && a.GetDFMode() == b.GetDFMode() &&
           a.GetDetail().IsQualityThresholdSet() == b.GetDetail().IsQualityThresholdSet() &&
           a.GetDetail().GetQualityThreshold() == b.GetDetail().GetQualityThreshold() &&
           a.GetDetail().IsLevelThresholdSet() == b.GetDetail().IsLevelThresholdSet() &&
           sameBits(a.GetDetail().GetLevelThreshold(), b.GetDetail().GetLevelThreshold()) &&
           a.IsFrequencyOffsetSet() == b.IsFrequencyOffsetSet() &&
           sameBits(a.GetFrequencyOffset(), b.GetFrequencyOffset()) && a.IsWorkflowSet() == b.IsWorkflowSet() &&
           a.GetWorkflow() == b.GetWorkflow() && a.IsLocateTypeSet() == b.IsLocateTypeSet() &&
           a.GetLocateType() == b.GetLocateType() && a.IsActivitySet() == b.IsActivitySet() &&
           a.GetActivity() == b.GetActivity() && a.IsActivityTriggerSet() == b.IsActivityTriggerSet() &&
           a.GetActivityTrigger() == b.GetActivityTrigger();
}

/// Any finite double, of every magnitude with the same chance.
double anyDouble(QRandomGenerator& random)
{
    for (;;) {
        const quint64 bits = random.generate64();
        double number = 0.0;
        std::memcpy(&number, &bits, sizeof number);
        // A negative zero is written as zero.
        if (std::isfinite(number) && number != 0.0)
            return number;
    }
}

/// The numbers that operators use, and any other.
double randomNumber(QRandomGenerator& random)
{
    switch (random.bounded(3)) {
    case 0:
        return random.bounded(200001) - 100000;
    case 1:
        return (random.bounded(200001) - 100000) / 1000.0;
    default:
        return anyDouble(random);
    }
}

/// A number of up to 17 digits with up to 6 decimals, or a neighbour of one.
double shortNumber(QRandomGenerator& random)
{
    const auto digits = static_cast<qint64>(random.generate64() % quint64(std::pow(10.0, random.bounded(1, 18))));
    const double number = double(digits) / std::pow(10.0, random.bounded(7)) * (random.bounded(2) == 0 ? 1.0 : -1.0);
    return random.bounded(4) == 0 ? std::nextafter(number, 0.0) : number;
}

/// Mostly a number: up to 20 characters, of which few are no digits.
QString randomDigits(QRandomGenerator& random)
{
    QString text;
    if (random.bounded(3) == 0)
        text += random.bounded(4) == 0 ? '+' : '-';
    const int length = random.bounded(1, 21);
    const int point = random.bounded(-1, length);
    for (int place = 0; place < length; ++place) {
        const bool isOdd = random.bounded(100) == 0;
        text += place == point ? QLatin1Char('.')
                : isOdd        ? QLatin1Char('-')
                               : QLatin1Char(char('0' + random.bounded(10)));
    }
    return text;
}

DF_Settings randomSettings(QRandomGenerator& random)
{
    DF_Settings settings;
    const auto chosen = [&random] { return random.bounded(2) == 1; };
    const auto choice = [&random] { return random.bounded(-1, 3); };
    if (chosen()) {
        Bandwidth bandwidth;
        bandwidth.SetValue(randomNumber(random));
        settings.SetBandwidth(bandwidth);
    }
    if (chosen())
        settings.SetAveraging(randomNumber(random));
    settings.SetDFMode(DF_Settings::TDFMode(choice()));
    if (chosen())
        settings.GetDetail().SetQualityThreshold(static_cast<int>(random.generate()));
    if (chosen())
        settings.GetDetail().SetLevelThreshold(randomNumber(random));
    if (chosen())
        settings.SetFrequencyOffset(randomNumber(random));
    settings.SetWorkflow(DF_Settings::TWorkflow(choice()));
    settings.SetLocateType(DF_Settings::TLocateType(choice()));
    settings.SetActivity(DF_Settings::TActivity(choice()));
    settings.SetActivityTrigger(DF_Settings::TActivityTrigger(choice()));
    return settings;
}

/// The seed of a test with random settings; given in the environment to repeat a run.
quint32 seed()
{
    const quint32 given = qEnvironmentVariable("DFLOCATE_TEST_SEED").toUInt();
    const quint32 used = given != 0 ? given : QRandomGenerator::global()->generate();
    qInfo("DFLOCATE_TEST_SEED=%u", used);
    return used;
}

/// Settings with a content, so that a refused text shows that nothing of it stays.
DF_Settings read(const QString& xml, bool* good)
{
    DF_Settings settings = fullSettings();
    *good = settings.SetXmlString(xml);
    return settings;
}

bool isRefused(const QString& xml)
{
    bool good = true;
    const DF_Settings settings = read(xml, &good);
    return !good && same(settings, DF_Settings());
}

} // namespace

class TestDFSettingsXml : public QObject
{
    Q_OBJECT

private slots:
    void emptySettingsAreAnEmptyElement() { QCOMPARE(DF_Settings().GetXmlString(), emptyXml); }

    void allFieldsAreWrittenCompactlyAndInOrder() { QCOMPARE(fullSettings().GetXmlString(), fullXml); }

    void allFieldsAreRead()
    {
        DF_Settings settings;
        QVERIFY(settings.SetXmlString(fullXml));
        QVERIFY(same(settings, fullSettings()));
    }

    void eachFieldAloneIsWrittenAndRead_data()
    {
        QTest::addColumn<QString>("children");
        for (const char* children : {"<Bandwidth>12000</Bandwidth>",
                                     "<Averaging>0</Averaging>",
                                     "<DFMode>Norm</DFMode>",
                                     "<DFMode>Cont</DFMode>",
                                     "<DFMode>Gate</DFMode>",
                                     "<Detail><QualityThreshold>70</QualityThreshold></Detail>",
                                     "<Detail><LevelThreshold>12</LevelThreshold></Detail>",
                                     "<FrequencyOffset>-0.5</FrequencyOffset>",
                                     "<Workflow>On request</Workflow>",
                                     "<Workflow>Continuous</Workflow>",
                                     "<Workflow>On trigger</Workflow>",
                                     "<LocateType>No locate</LocateType>",
                                     "<LocateType>Online</LocateType>",
                                     "<LocateType>History</LocateType>",
                                     "<Activity>No DF/Locate</Activity>",
                                     "<Activity>DF</Activity>",
                                     "<Activity>DF and locate</Activity>",
                                     "<ActivityTrigger>Manual</ActivityTrigger>",
                                     "<ActivityTrigger>Signal</ActivityTrigger>",
                                     "<ActivityTrigger>Schedule</ActivityTrigger>"})
            QTest::newRow(children) << children;
    }

    void eachFieldAloneIsWrittenAndRead()
    {
        QFETCH(QString, children);
        DF_Settings settings = fullSettings();
        QVERIFY(settings.SetXmlString(root(children)));
        QCOMPARE(settings.GetXmlString(), root(children));
    }

    void numbersAreWrittenInFixedNotationWithTheFewestDigits_data()
    {
        QTest::addColumn<double>("number");
        QTest::addColumn<QString>("text");
        QTest::newRow("whole") << 12.0 << "12";
        QTest::newRow("negative fraction") << -12.7 << "-12.7";
        QTest::newRow("zero") << 0.0 << "0";
        QTest::newRow("negative zero") << -0.0 << "0";
        QTest::newRow("one tenth") << 0.1 << "0.1";
        QTest::newRow("a third") << 1.0 / 3.0 << "0.3333333333333333";
        QTest::newRow("more than six digits") << 2147483647.0 << "2147483647";
        QTest::newRow("negative whole") << -40.0 << "-40";
        QTest::newRow("last whole number of all digits") << 9007199254740991.0 << "9007199254740991";
        QTest::newRow("first after it") << 9007199254740992.0 << "9007199254740992";
        QTest::newRow("nearly whole") << 4503599627370495.5 << "4503599627370495.5";
        QTest::newRow("large") << 1e22 << "10000000000000000000000";
        QTest::newRow("small") << 1e-7 << "0.0000001";
        QTest::newRow("largest") << std::numeric_limits<double>::max()
                                 << "17976931348623157" + QString("0").repeated(292);
        QTest::newRow("smallest") << std::numeric_limits<double>::denorm_min()
                                  << "0." + QString("0").repeated(323) + "5";
    }

    void numbersAreWrittenInFixedNotationWithTheFewestDigits()
    {
        QFETCH(double, number);
        QFETCH(QString, text);
        DF_Settings settings;
        settings.GetDetail().SetLevelThreshold(number);
        const QString xml = root("<Detail><LevelThreshold>" + text + "</LevelThreshold></Detail>");
        QCOMPARE(settings.GetXmlString(), xml);
        QVERIFY(settings.SetXmlString(xml));
        QVERIFY(settings.GetDetail().GetLevelThreshold() == number);
    }

    void anyNumberIsWrittenAsTheFewestDigitsThatReadBack()
    {
        QRandomGenerator random(seed());
        for (int run = 0; run < 20000; ++run) {
            const double number = shortNumber(random);
            DF_Settings settings;
            settings.SetAveraging(number);
            // Without a sign: a negative zero is written as zero.
            const QString text = QString::number(number == 0.0 ? 0.0 : number, 'f', QLocale::FloatingPointShortest);
            QCOMPARE(settings.GetXmlString(), root("<Averaging>" + text + "</Averaging>"));
        }
    }

    void anyDigitsAreReadAsTheNearestNumber()
    {
        QRandomGenerator random(seed());
        for (int run = 0; run < 20000; ++run) {
            const QString text = randomDigits(random);
            bool isNumber = false;
            const double number = text.toDouble(&isNumber);
            DF_Settings settings;
            QCOMPARE(settings.SetXmlString(root("<Averaging>" + text + "</Averaging>")), isNumber);
            QVERIFY2(sameBits(settings.GetAveraging(), isNumber ? number : 0.0), qPrintable(text));
        }
    }

    void theWholeRangeOfAnIntegerIsWrittenAndRead()
    {
        for (const int number : {std::numeric_limits<int>::min(), -1, 0, 1, std::numeric_limits<int>::max()}) {
            DF_Settings settings;
            settings.GetDetail().SetQualityThreshold(number);
            const QString xml = root(QString("<Detail><QualityThreshold>%1</QualityThreshold></Detail>").arg(number));
            QCOMPARE(settings.GetXmlString(), xml);
            QVERIFY(settings.SetXmlString(xml));
            QCOMPARE(settings.GetDetail().GetQualityThreshold(), number);
        }
    }

    void whatIsWrittenIsReadBackExactly()
    {
        QRandomGenerator random(seed());
        for (int run = 0; run < 2000; ++run) {
            const DF_Settings settings = randomSettings(random);
            const QString xml = settings.GetXmlString();
            bool good = false;
            const DF_Settings back = read(xml, &good);
            QVERIFY2(good, qPrintable(xml));
            QVERIFY2(same(back, settings), qPrintable(xml));
            QCOMPARE(back.GetXmlString(), xml);
            for (const QXmlStreamAttributes& attributes : attributesIn(xml))
                QVERIFY2(attributes.isEmpty(), qPrintable(xml));
        }
    }

    void noBeginOfATextIsRead()
    {
        for (int length = 0; length < fullXml.size(); ++length)
            QVERIFY(isRefused(fullXml.left(length)));
    }

    void aDamagedTextIsRefusedAsAWholeOrReadIntoSettingsThatCanBeWritten()
    {
        const QString characters = QStringLiteral("<>/&;!?-+.eE0123456789 \"'[]DNx\n") + QChar(0) + QChar(1) +
                                   QChar(0xd800) + QChar(0xdc00) + QChar(0xfffe) + QChar(0xfeff);
        QRandomGenerator random(seed());
        for (int run = 0; run < 5000; ++run) {
            QString xml = randomSettings(random).GetXmlString();
            for (int damage = random.bounded(1, 4); damage > 0; --damage) {
                const QChar character = characters.at(random.bounded(characters.size()));
                const int place = random.bounded(xml.size());
                if (random.bounded(2) == 0)
                    xml[place] = character;
                else
                    xml.insert(place, character);
            }
            bool good = false;
            const DF_Settings settings = read(xml, &good);
            bool goodAgain = false;
            const DF_Settings again = read(settings.GetXmlString(), &goodAgain);
            QVERIFY2(good || same(settings, DF_Settings()), qPrintable(xml));
            QVERIFY2(goodAgain, qPrintable(xml));
            QCOMPARE(again.GetXmlString(), settings.GetXmlString());
        }
    }

    void theOrderOfTheElementsDoesNotMatterOnReading()
    {
        DF_Settings settings;
        QVERIFY(settings.SetXmlString(root("<Workflow>Online</Workflow><ActivityTrigger>Signal</ActivityTrigger>"
                                           "<Detail><LevelThreshold>1</LevelThreshold>"
                                           "<QualityThreshold>2</QualityThreshold></Detail><Bandwidth>5</Bandwidth>")));
        QCOMPARE(settings.GetXmlString(),
                 root("<Bandwidth>5</Bandwidth><Detail><QualityThreshold>2</QualityThreshold>"
                      "<LevelThreshold>1</LevelThreshold></Detail><ActivityTrigger>Signal</ActivityTrigger>"));
    }

    void additionsThatChangeNoFieldAreReadOver_data()
    {
        QTest::addColumn<QString>("xml");
        QTest::newRow("prolog") << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>" + root("<Averaging>200</Averaging>");
        QTest::newRow("prolog of another encoding")
            << "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>" + root("<Averaging>200</Averaging>");
        QTest::newRow("byte order mark") << QString(QChar(QChar::ByteOrderMark)) + root("<Averaging>200</Averaging>");
        QTest::newRow("comments") << "<!-- a -->" + root("<!-- b --><Averaging>2<!-- c -->00</Averaging>") +
                                         "<!-- d -->";
        QTest::newRow("instructions") << "<?a b?>" + root("<?c d?><Averaging>200</Averaging>") + "<?e f?>";
        QTest::newRow("blanks and lines") << root("\r\n\t<Averaging>\n 200 \t</Averaging>\n") + "\n";
        QTest::newRow("attributes")
            << "<DF_Settings version=\"2\"><Averaging unit=\"ms\">200</Averaging></DF_Settings>";
        QTest::newRow("namespace") << "<DF_Settings xmlns=\"urn:a\"><Averaging>200</Averaging></DF_Settings>";
        QTest::newRow("unknown element") << root("<Span>9000</Span><Averaging>200</Averaging><Mode/>");
        QTest::newRow("unknown element twice") << root("<Span>1</Span><Span>x</Span><Averaging>200</Averaging>");
        QTest::newRow("known names in an unknown element")
            << root("<Other><Averaging>5</Averaging><Bandwidth>x</Bandwidth></Other><Averaging>200</Averaging>");
        QTest::newRow("the root inside itself") << root("<DF_Settings><Averaging>5</Averaging></DF_Settings>"
                                                        "<Averaging>200</Averaging>");
        QTest::newRow("name with a prefix") << root("<x:Averaging>5</x:Averaging><Averaging>200</Averaging>");
        QTest::newRow("lower case") << root("<averaging>5</averaging><Averaging>200</Averaging>");
        QTest::newRow("text between the elements") << root("a<Averaging>200</Averaging>b");
        QTest::newRow("marked section") << root("<Averaging><![CDATA[200]]></Averaging>");
        QTest::newRow("character references") << root("<Averaging>&#50;&#x30;0</Averaging>");
        QTest::newRow("lone surrogate in an unknown element")
            << root("<Other>" + QString(QChar(0xd800)) + "</Other><Averaging>200</Averaging>");
        QTest::newRow("empty detail") << root("<Detail/><Averaging>200</Averaging>");
        QTest::newRow("detail without thresholds")
            << root("<Detail><Other>1</Other></Detail><Averaging>200</Averaging>");
        QTest::newRow("threshold outside the detail")
            << root("<LevelThreshold>5</LevelThreshold><Averaging>200</Averaging>");
    }

    void additionsThatChangeNoFieldAreReadOver()
    {
        QFETCH(QString, xml);
        DF_Settings settings = fullSettings();
        QVERIFY(settings.SetXmlString(xml));
        QCOMPARE(settings.GetXmlString(), root("<Averaging>200</Averaging>"));
    }

    void numbersAreReadInEveryFixedNotation()
    {
        const std::pair<const char*, double> numbers[] = {{"+5", 5.0},   {"007", 7.0},   {"5.", 5.0},    {".5", 0.5},
                                                          {"-.5", -0.5}, {"1.500", 1.5}, {"-2.5", -2.5}, {"-0", 0.0}};
        for (const auto& [text, number] : numbers) {
            DF_Settings settings;
            QVERIFY2(settings.SetXmlString(root(QString("<Averaging>%1</Averaging>").arg(text))), text);
            QCOMPARE(settings.GetAveraging(), number);
        }
    }

    void aModeIsReadByItsFirstFourCharacters()
    {
        DF_Settings settings;
        QVERIFY(settings.SetXmlString(root("<DFMode>Normal</DFMode>")));
        QCOMPARE(settings.GetDFMode(), DF_Settings::DFModeNorm);
        QCOMPARE(settings.GetXmlString(), root("<DFMode>Norm</DFMode>"));
    }

    void anUnknownNameLeavesTheChoiceUnsetButTheFieldCounted_data()
    {
        QTest::addColumn<QString>("name");
        for (const char* name : {"Sometimes", "continuous", "2", "", "&lt;&amp;"})
            QTest::newRow(name) << name;
        QTest::newRow("lone surrogate") << QString(QChar(0xdc00));
    }

    void anUnknownNameLeavesTheChoiceUnsetButTheFieldCounted()
    {
        QFETCH(QString, name);
        DF_Settings settings = fullSettings();
        QVERIFY(settings.SetXmlString(
            root(QString("<DFMode>%1</DFMode><Workflow>%1</Workflow><LocateType>%1</LocateType>"
                         "<Activity>%1</Activity><ActivityTrigger>%1</ActivityTrigger><Averaging>1</Averaging>")
                     .arg(name))));
        QVERIFY(settings.IsDFModeSet() && settings.GetDFMode() == DF_Settings::DFModeUnset);
        QVERIFY(settings.IsWorkflowSet() && settings.GetWorkflow() == DF_Settings::WorkflowUnset);
        QVERIFY(settings.IsLocateTypeSet() && settings.GetLocateType() == DF_Settings::LocateTypeUnset);
        QVERIFY(settings.IsActivitySet() && settings.GetActivity() == DF_Settings::ActivityUnset);
        QVERIFY(settings.IsActivityTriggerSet() && settings.GetActivityTrigger() == DF_Settings::ActivityTriggerUnset);
        QCOMPARE(settings.GetXmlString(), root("<Averaging>1</Averaging>"));
    }

    void aBadTextIsRefusedAndLeavesNothing_data()
    {
        QTest::addColumn<QString>("xml");
        QTest::newRow("null") << QString();
        QTest::newRow("empty") << "";
        QTest::newRow("blanks") << "  \n";
        QTest::newRow("no XML") << "Bandwidth=12000";
        QTest::newRow("only a prolog") << "<?xml version=\"1.0\"?>";
        QTest::newRow("only a comment") << "<!-- <DF_Settings/> -->";
        QTest::newRow("another root") << "<Settings/>";
        QTest::newRow("root in lower case") << "<df_settings/>";
        QTest::newRow("root with a prefix") << "<x:DF_Settings xmlns:x=\"urn:a\"/>";
        QTest::newRow("settings below another root") << "<Job>" + fullXml + "</Job>";
        QTest::newRow("two roots") << fullXml + fullXml;
        QTest::newRow("text behind the root") << fullXml + "x";
        QTest::newRow("text before the root") << "x" + fullXml;
        QTest::newRow("wrong end") << "<DF_Settings><Averaging>1</Bandwidth></DF_Settings>";
        QTest::newRow("error behind good fields") << "<DF_Settings><Averaging>1</Averaging><Workflow></DF_Settings>";
        QTest::newRow("attribute twice") << "<DF_Settings a=\"1\" a=\"2\"/>";
        QTest::newRow("undeclared entity") << root("<Averaging>&ms;</Averaging>");
        QTest::newRow("another version") << "<?xml version=\"1.1\"?>" + fullXml;
        QTest::newRow("control character") << root("<Other>" + QString(QChar(1)) + "</Other>");
        QTest::newRow("null character") << root("<Other>" + QString(QChar(0)) + "</Other>");
        QTest::newRow("null character behind") << fullXml + QChar(0);
        QTest::newRow("reference to a control character") << root("<Other>&#1;</Other>");
        QTest::newRow("no character") << root("<Other>" + QString(QChar(0xffff)) + "</Other>");
        QTest::newRow("element in a number") << root("<Averaging>2<b/>00</Averaging>");
        QTest::newRow("element in a bandwidth") << root("<Bandwidth><Value>5</Value></Bandwidth>");
        QTest::newRow("element in a threshold")
            << root("<Detail><QualityThreshold><b>5</b></QualityThreshold></Detail>");
        QTest::newRow("element in a name") << root("<Workflow>Continuous<b/></Workflow>");
    }

    void aBadTextIsRefusedAndLeavesNothing()
    {
        QFETCH(QString, xml);
        QVERIFY(isRefused(xml));
    }

    void aTextThatIsNoFixedNumberIsRefused_data()
    {
        QTest::addColumn<QString>("text");
        for (const char* text :
             {"",    "nan",   "NaN",   "-nan", "inf", "INF", "-inf", "infinity", "1e3", "1E3",  "1e-3", "0x10",
              "1,5", "1,000", "1.2.3", "--5",  "5-",  "+-5", "-",    ".",        "1 2", "five", "5 ms"})
            QTest::newRow(text) << text;
        QTest::newRow("too large for any number") << "1" + QString("0").repeated(309);
        QTest::newRow("too small for any number") << "0." + QString("0").repeated(400) + "1";
        QTest::newRow("digits of another script") << QString(QChar(0x0665));
        QTest::newRow("lone surrogate") << QString(QChar(0xd800));
        QTest::newRow("digits up to the limit") << QString("9").repeated(60000);
    }

    void aTextThatIsNoFixedNumberIsRefused()
    {
        QFETCH(QString, text);
        const QString good = QStringLiteral("<Workflow>Continuous</Workflow>");
        for (const char* element : {"Bandwidth", "Averaging", "FrequencyOffset"})
            QVERIFY(isRefused(root(good + QString("<%1>%2</%1>").arg(element, text))));
        for (const char* element : {"QualityThreshold", "LevelThreshold"})
            QVERIFY(isRefused(root(good + QString("<Detail><%1>%2</%1></Detail>").arg(element, text))));
    }

    void anIntegerIsWholeAndFitsItsType()
    {
        for (const char* text : {"2147483648", "-2147483649", "99999999999999999999", "5.5", "5.0", "5."})
            QVERIFY(isRefused(root(QString("<Detail><QualityThreshold>%1</QualityThreshold></Detail>").arg(text))));
    }

    void anElementGivenTwiceIsRefusedEvenWithTheSameContent_data()
    {
        QTest::addColumn<QString>("children");
        for (const char* element :
             {"<Bandwidth>5</Bandwidth>", "<Averaging>5</Averaging>", "<DFMode>Norm</DFMode>",
              "<DFMode>unknown</DFMode>", "<Detail/>", "<Detail><QualityThreshold>5</QualityThreshold></Detail>",
              "<FrequencyOffset>5</FrequencyOffset>", "<Workflow>Continuous</Workflow>",
              "<LocateType>Online</LocateType>", "<Activity>DF</Activity>",
              "<ActivityTrigger>Signal</ActivityTrigger>"})
            QTest::newRow(element) << QString(element).repeated(2);
        QTest::newRow("quality") << "<Detail>" + QString("<QualityThreshold>5</QualityThreshold>").repeated(2) +
                                        "</Detail>";
        QTest::newRow("level") << "<Detail>" + QString("<LevelThreshold>5</LevelThreshold>").repeated(2) + "</Detail>";
        QTest::newRow("not side by side") << "<Averaging>5</Averaging><Other/><Averaging>6</Averaging>";
    }

    void anElementGivenTwiceIsRefusedEvenWithTheSameContent()
    {
        QFETCH(QString, children);
        QVERIFY(isRefused(root(children)));
    }

    void aDocumentTypeDeclarationIsRefused_data()
    {
        QTest::addColumn<QString>("declaration");
        QTest::newRow("plain") << "<!DOCTYPE DF_Settings>";
        QTest::newRow("external") << "<!DOCTYPE DF_Settings SYSTEM \"http://localhost/settings.dtd\">";
        QTest::newRow("external entity") << "<!DOCTYPE DF_Settings [<!ENTITY file SYSTEM \"file:///etc/hostname\">]>";
        QTest::newRow("entity bomb") << entityBomb(QString(), QStringLiteral("&"), QString());
        QTest::newRow("parameter entity bomb")
            << entityBomb(QStringLiteral("% "), QStringLiteral("&#37;"), QStringLiteral("%e30;"));
    }

    void aDocumentTypeDeclarationIsRefused()
    {
        QFETCH(QString, declaration);
        QVERIFY(isRefused(declaration + fullXml));
        QVERIFY(isRefused(declaration + root("<Workflow>&e30;</Workflow>")));
        QVERIFY(isRefused(declaration + root("<Workflow>&file;</Workflow>")));
    }

    void nestingIsReadDownToTheLimitAndNoDeeper()
    {
        const auto nested = [](int depth) {
            // The root is the first level.
            return root("<Averaging>200</Averaging>" + QString("<a>").repeated(depth - 1) +
                        QString("</a>").repeated(depth - 1) + "<Bandwidth>300</Bandwidth>");
        };
        DF_Settings settings;
        QVERIFY(settings.SetXmlString(nested(DF_Settings::MaxXmlDepth)));
        QCOMPARE(settings.GetAveraging(), 200.0);
        QCOMPARE(settings.GetBandwidth().GetValue(), 300.0);
        QVERIFY(isRefused(nested(DF_Settings::MaxXmlDepth + 1)));
        QVERIFY(isRefused(nested(9000)));
        QVERIFY(isRefused(root(QString("<a>").repeated(20000))));
    }

    void manyElementsSideBySideAreNotDeep()
    {
        DF_Settings settings;
        QVERIFY(settings.SetXmlString(root(QString("<a/>").repeated(10000) + "<Averaging>200</Averaging>")));
        QCOMPARE(settings.GetAveraging(), 200.0);
        QVERIFY(settings.SetXmlString(
            root("<Detail>" + QString("<a><b/></a>").repeated(5000) + "<LevelThreshold>1</LevelThreshold></Detail>")));
        QCOMPARE(settings.GetDetail().GetLevelThreshold(), 1.0);
    }

    void aTextIsReadUpToTheLongestLengthAndNoLonger()
    {
        const QString longest = root(QString(DF_Settings::MaxXmlLength - root(QString()).size() - fieldLength, 'x') +
                                     "<Averaging>200</Averaging>");
        QCOMPARE(longest.size(), DF_Settings::MaxXmlLength);
        DF_Settings settings;
        QVERIFY(settings.SetXmlString(longest));
        QCOMPARE(settings.GetAveraging(), 200.0);
        QVERIFY(isRefused(longest + " "));
    }

    void aHugeTextIsRefused_data()
    {
        QTest::addColumn<QString>("xml");
        const int characters = 10 * 1000 * 1000;
        QTest::newRow("blanks") << root(QString(characters, ' '));
        QTest::newRow("digits") << root("<Averaging>" + QString(characters, '1') + "</Averaging>");
        QTest::newRow("elements") << root(QString("<a/>").repeated(characters / 4));
        QTest::newRow("nesting") << root(QString("<a>").repeated(characters / 7) +
                                         QString("</a>").repeated(characters / 7));
        QTest::newRow("attributes") << QString("<DF_Settings ") + manyAttributes(characters) + "/>";
        QTest::newRow("entities") << root(QString("&amp;").repeated(characters / 5));
        QTest::newRow("no XML") << QString(characters, '<');
    }

    void aHugeTextIsRefused()
    {
        QFETCH(QString, xml);
        QVERIFY(xml.size() > 9 * 1000 * 1000);
        QVERIFY(isRefused(xml));
    }

    void theMostAttributesThatFitAreReadOver()
    {
        const QString end = QStringLiteral("><Averaging>200</Averaging></DF_Settings>");
        QString xml = QStringLiteral("<DF_Settings ");
        xml += manyAttributes(DF_Settings::MaxXmlLength - xml.size() - end.size());
        xml += end;
        DF_Settings settings;
        QVERIFY(settings.SetXmlString(xml));
        QCOMPARE(settings.GetAveraging(), 200.0);
    }

    void settingsCanBeReadAgainAfterARefusal()
    {
        DF_Settings settings;
        QVERIFY(!settings.SetXmlString("<DF_Settings>"));
        QVERIFY(settings.SetXmlString(fullXml));
        QVERIFY(same(settings, fullSettings()));
    }

    void readingThroughTheInterfaceReachesTheSettings()
    {
        DF_Settings settings;
        REPORTGENERATOR::IRGObject& object = settings;
        QVERIFY(object.SetXmlString(fullXml));
        QCOMPARE(object.GetXmlString(), fullXml);
        QVERIFY(settings.IsActivitySet());
    }

private:
    static constexpr int fieldLength = int(sizeof "<Averaging>200</Averaging>") - 1;

    /// Thirty entities, each made of three of the one before; @p use stands behind their declarations.
    static QString entityBomb(const QString& kind, const QString& refer, const QString& use)
    {
        QString declarations = QStringLiteral("<!ENTITY %1e0 '<!-- e -->'>").arg(kind);
        for (int level = 1; level <= 30; ++level) {
            const QString part = refer + QStringLiteral("e%1;").arg(level - 1);
            declarations += QStringLiteral("<!ENTITY ") + kind + QStringLiteral("e%1 '").arg(level) + part.repeated(3) +
                            QStringLiteral("'>");
        }
        return QStringLiteral("<!DOCTYPE DF_Settings [") + declarations + use + QStringLiteral("]>");
    }

    /// As many different attributes as have room in @p length characters.
    static QString manyAttributes(int length)
    {
        QString attributes;
        attributes.reserve(length);
        for (int number = 0;; ++number) {
            const QString attribute = QStringLiteral("a%1='' ").arg(number);
            if (attributes.size() + attribute.size() > length)
                return attributes;
            attributes += attribute;
        }
    }

    static QVector<QXmlStreamAttributes> attributesIn(const QString& xml)
    {
        QVector<QXmlStreamAttributes> attributes;
        QXmlStreamReader reader(xml);
        while (!reader.atEnd()) {
            if (reader.readNext() == QXmlStreamReader::StartElement)
                attributes << reader.attributes();
        }
        return attributes;
    }
};

DFL_TEST_MAIN_WITH(TestDFSettingsXml, QCoreApplication)
#include "tst_df_settingsxml.moc"
