#include "forms.h"

#include "guicomponentbase/guicomponentcommon.h"
#include "kt270/pgxmlsheet.h"
#include "support/freshtree.h"
#include "support/recordingobserver.h"
#include "support/testmain.h"
#include "support/traces.h"
#include "valueframework/valueclasses/value.h"
#include "valueframework/valueclasses/valuenumeric.h"
#include "valueframework/valueclasses/valueselection.h"
#include "valuewidgets/undorecordingcontrolbase.h"
#include "valuewidgets/vccomboboxclassic.h"
#include "valuewidgets/vcnumericfloatspin.h"
#include "ztbase/observation.h"

#include <QCheckBox>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTranslator>
#include <QUndoStack>

using KT270::PgXmlFormular;
using KT270::PgXmlSheet;
using testsupport::describedForm;
using testsupport::formFrom;
using testsupport::FreshTree;
using testsupport::RecordingObserver;
using values::BoolValue;
using values::DoubleValue;
using values::IntValue;
using values::ValueSelection;

namespace {

/// A form with its values in the tree, all bound, and shown.
class BoundForm
{
public:
    explicit BoundForm(bool online = true, const QString& description = describedForm())
        : form(formFrom(description))
    {
        count->SetMinMax(-5, 50, 5, nullptr);
        count->SetValue(10, nullptr);
        length->SetMinMax(0.0, 100.0, 0.5, nullptr);
        length->SetValue(1.5, nullptr);
        lower->SetState(values::StateUnused, nullptr);
        upper->SetState(values::StateUnused, nullptr);
        size->AddItem("small", 120.0, 10);
        size->AddItem("large", 7500.5, 20);
        size->Select(20);
        colour->AddItems({"Reddish", "Greenish", "Blue"});
        colour->Select(1);
        bind();
        form->CreateGUI(online);
        form->Show();
        modified = std::make_unique<QSignalSpy>(form.get(), &PgXmlFormular::si_parametersModified);
    }

    void bind() const
    {
        QVERIFY(form->InitVTValue("Count", count));
        QVERIFY(form->InitVTValue("Length", length));
        QVERIFY(form->InitVTValue("Detail/Lower", lower));
        QVERIFY(form->InitVTValue("Detail/Upper", upper));
        QVERIFY(form->InitVTValue("Size", size));
        QVERIFY(form->InitVTValue("Colour", colour));
        QVERIFY(form->InitEnumeration("enumSize", size));
        QVERIFY(form->InitEnumeration("enumColour", colour, {"Reddish", "Greenish", "Blue"}));
    }

    template <typename Widget>
    Widget* widget(const QString& name) const
    {
        return form->GetWidget()->findChild<Widget*>(name);
    }
    VCNumericFloatSpin* spin(const QString& name) const { return widget<VCNumericFloatSpin>(name); }
    VCComboBoxClassic* combo(const QString& name) const { return widget<VCComboBoxClassic>(name); }
    QCheckBox* box() const { return widget<QCheckBox>("Detail"); }

    FreshTree tree;
    IntValue* count = tree.add<IntValue>("/a/count");
    DoubleValue* length = tree.add<DoubleValue>("/a/length");
    IntValue* lower = tree.add<IntValue>("/a/lower");
    IntValue* upper = tree.add<IntValue>("/a/upper");
    ValueSelection* size = tree.add<ValueSelection>("/a/size");
    ValueSelection* colour = tree.add<ValueSelection>("/a/colour");
    std::unique_ptr<PgXmlFormular> form;
    std::unique_ptr<QSignalSpy> modified;
};

const QString initialText = QStringLiteral(
    "<Set><Size>7500.5</Size><Count>10</Count><Length>1.5</Length><Colour>Greenish</Colour><Detail/></Set>");

/// Translates the contexts of the test by turning the texts round.
class Reversing final : public QTranslator
{
public:
    QString translate(const char* context, const char* text, const char*, int) const override
    {
        if (qstrcmp(context, "Reversed") != 0 && qstrcmp(context, "TestForm") != 0)
            return QString();
        QString reversed = QString::fromUtf8(text);
        std::reverse(reversed.begin(), reversed.end());
        return reversed;
    }
    bool isEmpty() const override { return false; }
};

void type(QWidget* widget, const QString& text)
{
    widget->setFocus();
    QTest::keySequence(widget, QKeySequence::SelectAll);
    QTest::keyClicks(widget, text);
}

void choose(QComboBox* box, const QString& text)
{
    box->setFocus();
    QTest::keyClicks(box, text);
}

} // namespace

class TestPgXmlFormular : public QObject
{
    Q_OBJECT
private slots:
    // The form's text

    void theTextCarriesTheContentsInTheOrderOfTheDescription()
    {
        const BoundForm f;
        QCOMPARE(f.form->GetXmlString(), initialText);
    }

    void aDisabledGroupIsAnEmptyElementAndAnEnabledOneCarriesItsFields()
    {
        const BoundForm f;
        f.form->EvaluateScript("useLimits(true);");
        QVERIFY(f.form->GetXmlString().contains("<Detail><Lower>0</Lower><Upper>0</Upper></Detail>"));
        f.form->EvaluateScript("form.setEnabled('Detail/Lower', false);");
        QVERIFY(f.form->GetXmlString().contains("<Detail><Upper>0</Upper></Detail>"));
        f.form->EvaluateScript("useLimits(false);");
        QVERIFY(f.form->GetXmlString().contains("<Detail/>"));
    }

    void aDisabledFieldOutsideAGroupIsMissingInTheText()
    {
        const BoundForm f;
        f.form->EvaluateScript("form.setEnabled('Count', false);");
        QVERIFY(!f.form->GetXmlString().contains("Count"));
    }

    void anEnumerationWithTextsCarriesTextsAndOneWithoutCarriesNumbers()
    {
        const BoundForm f;
        QVERIFY(f.form->SetXmlString("<Set><Size>120</Size><Colour>Blue</Colour></Set>"));
        QVERIFY(f.form->GetXmlString().startsWith("<Set><Size>120</Size>"));
        QVERIFY(f.form->GetXmlString().contains("<Colour>Blue</Colour>"));
    }

    void theTextsAreThoseGivenAndAMissingOneIsTheItemsOwn()
    {
        const BoundForm f;
        QVERIFY(f.form->InitEnumeration("enumColour", f.colour, {"R", "G"}));
        QVERIFY(f.form->GetXmlString().contains("<Colour>G</Colour>"));
        QVERIFY(f.form->SetXmlString("<Set><Colour>Blue</Colour></Set>"));
        QVERIFY(f.form->GetXmlString().contains("<Colour>Blue</Colour>"));
    }

    void numbersHaveNoExponentAndAllTheirDigits()
    {
        const BoundForm f;
        f.length->SetMinMax(-1e12, 1e12, 1.0, nullptr);
        for (const auto& [number, text] : {std::pair<double, const char*>(2147483647.0, "2147483647"),
                                           {-1e11, "-100000000000"},
                                           {0.1, "0.1"},
                                           {1e-7, "0.0000001"},
                                           {123456.789012345, "123456.789012345"}}) {
            f.length->SetValue(number, nullptr);
            f.form->InitVTValue("Length", f.length);
            QVERIFY2(f.form->GetXmlString().contains(QStringLiteral("<Length>%1</Length>").arg(QLatin1String(text))),
                     qPrintable(f.form->GetXmlString()));
        }
    }

    void aSelectionWithoutCurrentItemIsMissingInTheText()
    {
        const BoundForm f;
        f.size->DeleteItems();
        f.form->InitEnumeration("enumSize", f.size);
        QVERIFY(!f.form->GetXmlString().contains("Size"));
    }

    // Taking a text over

    void aTextIsTakenOverByFieldsEnabledOrNot()
    {
        const BoundForm f;
        QVERIFY(f.form->SetXmlString("<Set><Size>120</Size><Count>-5</Count><Length>0.25</Length><Colour>Blue</Colour>"
                                     "<Detail><Lower>1</Lower><Upper>2</Upper></Detail></Set>"));
        QCOMPARE(f.form->GetXmlString(), QString("<Set><Size>120</Size><Count>-5</Count><Length>0.25</Length>"
                                                 "<Colour>Blue</Colour><Detail/></Set>"));
        f.form->EvaluateScript("useLimits(true);");
        QVERIFY(f.form->GetXmlString().contains("<Detail><Lower>1</Lower><Upper>2</Upper></Detail>"));
        QCOMPARE(f.spin("Count")->value(), -5.0);
        QCOMPARE(f.combo("Colour")->currentText(), QString("Blue"));
    }

    void anItemIsRecognisedByTheFirstFourCharactersOfItsText_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("selected");
        QTest::newRow("abbreviated") << "Redd"
                                     << "Reddish";
        QTest::newRow("whole") << "Reddish"
                               << "Reddish";
        QTest::newRow("longer") << "Reddest"
                                << "Reddish";
        QTest::newRow("with blanks around") << " Blue\n"
                                            << "Blue";
        QTest::newRow("exact before similar") << "Greener"
                                              << "Greener";
        QTest::newRow("the first of the similar ones") << "Gree"
                                                       << "Greenish";
        QTest::newRow("too short") << "Red"
                                   << "Greenish";
        QTest::newRow("other case") << "redd"
                                    << "Greenish";
        QTest::newRow("empty") << ""
                               << "Greenish";
        QTest::newRow("unknown") << "Pink"
                                 << "Greenish";
    }
    void anItemIsRecognisedByTheFirstFourCharactersOfItsText()
    {
        QFETCH(QString, text);
        QFETCH(QString, selected);
        const BoundForm f;
        f.colour->AddItem("Greener", 0.0, 7);
        f.form->InitEnumeration("enumColour", f.colour, {"Reddish", "Greenish", "Blue", "Greener"});
        QVERIFY(f.form->SetXmlString(QStringLiteral("<Set><Colour>%1</Colour></Set>").arg(text)));
        QCOMPARE(f.combo("Colour")->currentText(), selected);
    }

    void aNumberSelectsTheItemThatHasExactlyIt_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("selected");
        QTest::newRow("exact") << "120"
                               << "small";
        QTest::newRow("with decimals") << "120.0"
                                       << "small";
        QTest::newRow("close by") << "121"
                                  << "large";
        QTest::newRow("item text") << "small"
                                   << "large";
        QTest::newRow("nan") << "nan"
                             << "large";
        QTest::newRow("empty") << ""
                               << "large";
    }
    void aNumberSelectsTheItemThatHasExactlyIt()
    {
        QFETCH(QString, text);
        QFETCH(QString, selected);
        const BoundForm f;
        QVERIFY(f.form->SetXmlString(QStringLiteral("<Set><Size>%1</Size></Set>").arg(text)));
        QCOMPARE(f.combo("Size")->currentText(), selected);
    }

    void absentAndUnknownElementsChangeNothingAndAreNotKept()
    {
        const BoundForm f;
        QVERIFY(f.form->SetXmlString("<Set><Other a=\"1\"><Count>3</Count></Other><Other/><Lower>3</Lower></Set>"));
        QCOMPARE(f.form->GetXmlString(), initialText);
        QVERIFY(f.form->SetXmlString("<Set/>"));
        QCOMPARE(f.form->GetXmlString(), initialText);
    }

    void aContentThatDoesNotFitLeavesItsFieldAlone_data()
    {
        QTest::addColumn<QString>("element");
        for (const char* const element :
             {"<Count>51</Count>", "<Count>-6</Count>", "<Count>12.7</Count>", "<Count>x</Count>", "<Count/>",
              "<Count>99999999999</Count>", "<Count><Count>3</Count></Count>", "<Length>nan</Length>",
              "<Length>inf</Length>", "<Length>1e999</Length>", "<Length>100.5</Length>", "<Length></Length>"})
            QTest::newRow(element) << element;
    }
    void aContentThatDoesNotFitLeavesItsFieldAlone()
    {
        QFETCH(QString, element);
        const BoundForm f;
        QVERIFY(f.form->SetXmlString("<Set><Colour>Blue</Colour>" + element + "</Set>"));
        QCOMPARE(f.form->GetXmlString(), QString(initialText).replace("Greenish", "Blue"));
    }

    void aBadTextIsRefusedAsAWhole_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << "";
        QTest::newRow("no XML") << "Count=3";
        QTest::newRow("another root") << "<Other><Count>3</Count></Other>";
        QTest::newRow("cut off") << "<Set><Count>3</Count>";
        QTest::newRow("two roots") << "<Set><Count>3</Count></Set><Set/>";
        QTest::newRow("field twice") << "<Set><Count>3</Count><Count>4</Count></Set>";
        QTest::newRow("document type") << "<!DOCTYPE Set><Set><Count>3</Count></Set>";
        QTest::newRow("entity") << "<!DOCTYPE Set [<!ENTITY n \"3\">]><Set><Count>&n;</Count></Set>";
        QTest::newRow("external entity")
            << "<!DOCTYPE Set [<!ENTITY n SYSTEM \"file:///etc/hostname\">]><Set><Count>3</Count><A>&n;</A></Set>";
        QTest::newRow("unknown entity") << "<Set><Count>3</Count><A>&n;</A></Set>";
        QTest::newRow("deep") << "<Set><Count>3</Count>" + QString("<a>").repeated(32) + QString("</a>").repeated(32) +
                                     "</Set>";
        QTest::newRow("very deep") << "<Set><Count>3</Count>" + QString("<a>").repeated(100000);
        QTest::newRow("large") << "<Set><Count>3</Count>" + QString(65536, ' ') + "</Set>";
    }
    void aBadTextIsRefusedAsAWhole()
    {
        QFETCH(QString, text);
        const BoundForm f;
        QVERIFY(!f.form->SetXmlString(text));
        QCOMPARE(f.form->GetXmlString(), initialText);
    }

    void nestingUpToTheLimitIsRead()
    {
        const BoundForm f;
        QVERIFY(f.form->SetXmlString("<Set><Count>3</Count>" + QString("<a>").repeated(31) +
                                     QString("</a>").repeated(31) + "</Set>"));
        QCOMPARE(f.spin("Count")->value(), 3.0);
    }

    void aTextOfTheGreatestLengthIsRead()
    {
        const BoundForm f;
        const QString frame = QStringLiteral("<Set><Count>3</Count></Set>");
        QVERIFY(f.form->SetXmlString(frame + QString(65536 - frame.size(), QLatin1Char(' '))));
        QCOMPARE(f.spin("Count")->value(), 3.0);
    }

    void aTextTakenOverIsGivenBack()
    {
        const auto seed = QRandomGenerator::global()->generate();
        QRandomGenerator random(seed);
        const BoundForm f;
        f.length->SetMinMax(-1e9, 1e9, 1.0, nullptr);
        f.form->InitVTValue("Length", f.length);
        f.lower->SetMinMax(-40, 200, 1, nullptr);
        f.form->InitVTValue("Detail/Lower", f.lower);
        f.colour->DeleteItems();
        f.colour->AddItems({"a < b", "\"q\" & 'r'", QString::fromUtf8("gr\xc3\xbcn"), " blanks ", "]]>"});
        f.form->InitEnumeration("enumColour", f.colour,
                                {"a < b", "\"q\" & 'r'", QString::fromUtf8("gr\xc3\xbcn"), " blanks ", "]]>"});
        const auto settings = [&random, &f] {
            f.count->SetValue(random.bounded(-5, 51), nullptr);
            f.length->SetValue((random.generateDouble() - 0.5) * std::pow(10.0, random.bounded(-6, 9)), nullptr);
            f.lower->SetValue(random.bounded(-40, 201), nullptr);
            f.upper->SetValue(static_cast<int>(random.generate()), nullptr);
            f.size->SelectIndex(random.bounded(2));
            f.colour->SelectIndex(random.bounded(5));
            for (values::ValueBase* const value :
                 {static_cast<values::ValueBase*>(f.count), static_cast<values::ValueBase*>(f.length),
                  static_cast<values::ValueBase*>(f.lower), static_cast<values::ValueBase*>(f.upper),
                  static_cast<values::ValueBase*>(f.size), static_cast<values::ValueBase*>(f.colour)})
                f.form->SetVTValue(value, nullptr, true);
        };
        for (int i = 0; i < 300; ++i) {
            const QString script =
                QStringLiteral("useLimits(%1);").arg(QLatin1String(random.bounded(2) ? "true" : "false"));
            f.form->EvaluateScript(script);
            settings();
            const QString text = f.form->GetXmlString();
            settings();
            QVERIFY(f.form->SetXmlString(text));
            QVERIFY2(f.form->GetXmlString() == text, qPrintable(QStringLiteral("seed %1: %2").arg(seed).arg(text)));
        }
    }

    // Binding

    void bindingTakesLimitsStepAndContentOver()
    {
        const BoundForm f;
        QCOMPARE(f.spin("Count")->minimum(), -5.0);
        QCOMPARE(f.spin("Count")->maximum(), 50.0);
        QCOMPARE(f.spin("Count")->singleStep(), 5.0);
        QCOMPARE(f.spin("Count")->value(), 10.0);
        QCOMPARE(f.spin("Length")->singleStep(), 0.5);
        QCOMPARE(f.combo("Size")->currentText(), QString("large"));
    }

    void bindingWritesNothingToTheValue()
    {
        const BoundForm f;
        RecordingObserver observer;
        f.count->AddObserver(&observer);
        f.lower->AddObserver(&observer);
        f.size->AddObserver(&observer);
        f.form->SetXmlString("<Set><Count>3</Count><Size>120</Size></Set>");
        f.form->EvaluateScript("useLimits(false);");
        f.bind();
        QVERIFY(observer.codes.empty());
        QCOMPARE(f.count->GetValue(), 10);
        QCOMPARE(f.form->GetXmlString(), initialText);
        for (values::ValueBase* const value :
             {static_cast<values::ValueBase*>(f.count), static_cast<values::ValueBase*>(f.lower),
              static_cast<values::ValueBase*>(f.size)})
            value->RemoveObserver(&observer);
    }

    void anOperatorsEditDoesNotReachTheBoundValue()
    {
        const BoundForm f;
        QTest::keyClick(f.spin("Count"), Qt::Key_Up);
        QCOMPARE(f.spin("Count")->value(), 15.0);
        QCOMPARE(f.count->GetValue(), 10);
    }

    void aChangeOfTheBoundValueAloneDoesNotReachTheForm()
    {
        const BoundForm f;
        f.count->SetValue(20, nullptr);
        QCOMPARE(f.form->GetXmlString(), initialText);
    }

    void setVTValueRefreshesTheFieldBoundToTheValue()
    {
        const BoundForm f;
        f.count->SetMinMax(0, 40, 2, nullptr);
        f.count->SetValue(20, nullptr);
        f.form->SetVTValue(f.count, nullptr, true);
        QCOMPARE(f.spin("Count")->value(), 20.0);
        QCOMPARE(f.spin("Count")->maximum(), 40.0);
        f.colour->Select(2);
        f.form->SetVTValue(f.colour, nullptr, true);
        QCOMPARE(f.combo("Colour")->currentText(), QString("Blue"));
    }

    void setVTValueWithoutRefreshTakesLimitsOnly()
    {
        const BoundForm f;
        f.count->SetMinMax(0, 40, 2, nullptr);
        f.count->SetValue(20, nullptr);
        f.form->SetVTValue(f.count, nullptr, false);
        QCOMPARE(f.spin("Count")->value(), 10.0);
        QCOMPARE(f.spin("Count")->singleStep(), 2.0);
    }

    void setVTValueOfAValueBoundToNothingIsIgnored()
    {
        const BoundForm f;
        IntValue other(33);
        f.form->SetVTValue(&other, nullptr, true);
        f.form->InitVTValue("Count", nullptr);
        f.form->SetVTValue(nullptr, nullptr, true);
        QCOMPARE(f.form->GetXmlString(), initialText);
    }

    void bindingAnUnknownFieldOrAnotherKindIsRefused()
    {
        const BoundForm f;
        const auto* const flag = f.tree.add<BoolValue>("/a/flag");
        QVERIFY(!f.form->InitVTValue("Nothing", f.count));
        QVERIFY(!f.form->InitVTValue("Count", f.length));
        QVERIFY(!f.form->InitVTValue("Length", f.count));
        QVERIFY(!f.form->InitVTValue("Colour", f.count));
        QVERIFY(!f.form->InitVTValue("Count", f.colour));
        QVERIFY(!f.form->InitVTValue("Count", const_cast<BoolValue*>(flag)));
        QVERIFY(!f.form->InitEnumeration("enumNothing", f.colour));
        QVERIFY(!f.form->InitEnumeration("enumColour", nullptr));
        QCOMPARE(f.form->GetXmlString(), initialText);
        f.count->SetValue(20, nullptr);
        f.form->SetVTValue(f.count, nullptr, true);
        QVERIFY2(f.form->GetXmlString().contains("<Count>20</Count>"), "still bound");
    }

    void beforeTheFieldsExistEveryOperationIsRefused()
    {
        KT270::PgXmlParser parser;
        const std::unique_ptr<PgXmlFormular> form(parser.ParsePGXML(describedForm()));
        IntValue value;
        ValueSelection selection;
        QVERIFY(!form->InitVTValue("Count", &value));
        QVERIFY(!form->InitEnumeration("enumColour", &selection));
        QVERIFY(!form->SetXmlString("<Set/>"));
        QCOMPARE(form->GetXmlString(), QString());
        form->CreateGUI(true);
        QVERIFY(form->GetWidget()->findChild<QWidget*>("Count") == nullptr);
        form->CreateValueTree();
        form->CreateGUI(true);
        QVERIFY(form->GetWidget()->findChild<QWidget*>("Count") != nullptr);
    }

    void creatingTwiceChangesNothing()
    {
        const BoundForm f;
        f.form->CreateValueTree();
        f.form->CreateGUI(true);
        QCOMPARE(f.form->GetXmlString(), initialText);
        QCOMPARE(f.form->GetWidget()->findChildren<QWidget*>("Count").size(), 1);
    }

    void aValueThatGoesLeavesTheFieldUsable()
    {
        const BoundForm f;
        values::Tree::Instance()->Clear();
        QTest::keyClick(f.spin("Count"), Qt::Key_Up);
        f.form->EvaluateScript("useLimits(true);");
        QVERIFY(f.form->SetXmlString("<Set><Colour>Blue</Colour></Set>"));
        QCOMPARE(f.form->GetXmlString(),
                 QString("<Set><Size>7500.5</Size><Count>15</Count><Length>1.5</Length><Colour>Blue</Colour>"
                         "<Detail><Lower>0</Lower><Upper>0</Upper></Detail></Set>"));
    }

    void aValueMayOutliveTheForm()
    {
        BoundForm f;
        f.form.reset();
        QCOMPARE(f.count->GetObserverCount(), std::size_t(0));
        f.count->SetValue(3, nullptr);
    }

    // Enumerations

    void newItemsKeepWhatIsSelectedWhenTheBoundValueHasNone()
    {
        const BoundForm f;
        f.size->DeleteItems();
        f.size->AddItem("medium", 600.0, 1);
        f.size->AddItem("large", 9000.0, 2);
        f.form->InitVTValue("Size", f.size);
        f.form->InitEnumeration("enumSize", f.size);
        QCOMPARE(f.combo("Size")->count(), 2);
        QCOMPARE(f.combo("Size")->currentText(), QString("large"));
        QVERIFY(f.form->GetXmlString().contains("<Size>9000</Size>"));
    }

    void newItemsSelectTheCurrentItemOfTheBoundValue()
    {
        const BoundForm f;
        f.size->DeleteItems();
        f.size->AddItem("medium", 600.0, 1);
        f.size->AddItem("large", 9000.0, 2);
        f.size->Select(1);
        f.form->InitEnumeration("enumSize", f.size);
        QCOMPARE(f.combo("Size")->currentText(), QString("medium"));
    }

    void anEnumerationMayBeFilledBeforeAndAfterTheBinding()
    {
        const auto form = formFrom(describedForm());
        const FreshTree tree;
        auto* const colour = tree.add<ValueSelection>("/c");
        colour->AddItems({"Red", "Green"});
        colour->Select(1);
        form->InitEnumeration("enumColour", colour, {"Red", "Green"});
        QVERIFY(!form->GetXmlString().contains("Colour"));
        form->InitVTValue("Colour", colour);
        QVERIFY(form->GetXmlString().contains("<Colour>Green</Colour>"));
    }

    void textsOnTheSheetAreTranslatedAndThoseInTheFormsTextAreNot()
    {
        Reversing translator;
        QCoreApplication::installTranslator(&translator);
        BoundForm f;
        f.colour->SetTranslationNamespace("Reversed");
        f.form->InitEnumeration("enumColour", f.colour, {"Reddish", "Greenish", "Blue"});
        QCOMPARE(f.combo("Colour")->currentText(), QString("hsineerG"));
        QCOMPARE(f.combo("Size")->currentText(), QString("large"));
        QCOMPARE(f.box()->text(), QString("stimil esU&"));
        QCOMPARE(f.spin("Length")->accessibleName(), QString("htgneL [m]"));
        QVERIFY(f.form->GetXmlString().contains("<Colour>Greenish</Colour>"));
        QCoreApplication::removeTranslator(&translator);
    }

    // Enabling and states

    void enablingAFieldBringsItsValueIntoUseByScript()
    {
        const BoundForm f;
        RecordingObserver observer;
        f.lower->AddObserver(&observer);
        f.form->EvaluateScript("useLimits(true);");
        QCOMPARE(f.lower->GetState(), values::StateOrdinary);
        QCOMPARE(f.upper->GetState(), values::StateOrdinary);
        f.form->EvaluateScript("useLimits(false);");
        QCOMPARE(f.lower->GetState(), values::StateUnused);
        QCOMPARE(f.upper->GetState(), values::StateUnused);
        QCOMPARE(observer.codes, (std::vector<TChangeCode>{ChangeState, ChangeState}));
        f.lower->RemoveObserver(&observer);
    }

    void enablingAFieldThatIsEnabledBringsItsValueIntoUseAllTheSame()
    {
        const BoundForm f;
        f.form->EvaluateScript("useLimits(true);");
        f.lower->SetState(values::StateUnused, nullptr);
        f.form->EvaluateScript("useLimits(true);");
        QCOMPARE(f.lower->GetState(), values::StateOrdinary);
    }

    void theCheckBoxEnablesAndDisablesItsFieldsAndTheirValues()
    {
        const BoundForm f;
        QVERIFY(!f.box()->isChecked());
        QVERIFY(!f.spin("Detail/Lower")->isEnabled());
        f.box()->click();
        QVERIFY(f.spin("Detail/Lower")->isEnabled());
        QVERIFY(f.spin("Detail/Upper")->isEnabled());
        QCOMPARE(f.lower->GetState(), values::StateOrdinary);
        QCOMPARE(f.upper->GetState(), values::StateOrdinary);
        QVERIFY(f.form->GetXmlString().contains("<Detail><Lower>0</Lower><Upper>0</Upper></Detail>"));
        f.box()->click();
        QVERIFY(!f.spin("Detail/Lower")->isEnabled());
        QCOMPARE(f.lower->GetState(), values::StateUnused);
        QVERIFY(f.form->GetXmlString().contains("<Detail/>"));
    }

    void whatAnObserverRaisesDoesNotGoThroughTheCheckBox()
    {
        const BoundForm f;
        RecordingObserver failing([](Observable*, TChangeCode) { throw 42; });
        const Observation observation(*f.lower, failing);
        const testsupport::Traces traces;
        f.box()->click();
        QCOMPARE(f.lower->GetState(), values::StateOrdinary);
        QCOMPARE(f.upper->GetState(), values::StateOrdinary);
        QVERIFY(f.box()->isChecked());
        QVERIFY(f.spin("Detail/Upper")->isEnabled());
        QCOMPARE(f.modified->count(), 1);
        QCOMPARE(traces.records.size(), std::size_t(1));
        QCOMPARE(traces.records[0].sourceFile, "kt270/pgxmlformular");
    }

    void theCheckBoxFollowsTheScript()
    {
        const BoundForm f;
        f.form->EvaluateScript("useLimits(true);");
        QVERIFY(f.box()->isChecked());
        f.form->EvaluateScript("form.setEnabled('Detail/Lower', false);");
        QVERIFY2(f.box()->isChecked(), "one field is still enabled");
        f.form->EvaluateScript("form.setEnabled('Detail/Upper', false);");
        QVERIFY(!f.box()->isChecked());
    }

    void theStatesAreSetBeforeTheModificationIsReported()
    {
        const BoundForm f;
        std::vector<values::TValueState> states;
        connect(f.form.get(), &PgXmlFormular::si_parametersModified, [&f, &states] {
            states = {f.lower->GetState(), f.upper->GetState()};
        });
        f.box()->click();
        QCOMPARE(states, (std::vector<values::TValueState>{values::StateOrdinary, values::StateOrdinary}));
    }

    void theFormMayEndWhileAStateIsSet()
    {
        BoundForm f;
        RecordingObserver observer([&f](Observable*, TChangeCode) { f.form.reset(); });
        f.lower->AddObserver(&observer);
        f.form->EvaluateScript("useLimits(true);");
        QVERIFY(!f.form);
        QCOMPARE(f.upper->GetState(), values::StateUnused);
        f.lower->RemoveObserver(&observer);
    }

    // Reports of modifications

    void anOperatorsEditIsReportedOnce_data()
    {
        QTest::addColumn<QString>("field");
        for (const char* const field : {"Count", "Length", "Size", "Colour", "Detail"})
            QTest::newRow(field) << field;
    }
    void anOperatorsEditIsReportedOnce()
    {
        QFETCH(QString, field);
        const BoundForm f;
        if (auto* const spin = f.spin(field))
            QTest::keyClick(spin, Qt::Key_Up);
        else if (auto* const combo = f.combo(field))
            choose(combo, field == "Size" ? "s" : "B");
        else
            f.box()->click();
        QCOMPARE(f.modified->count(), 1);
        QVERIFY(f.form->GetSheet()->isModified());
        QVERIFY(f.form->GetXmlString() != initialText);
    }

    void typingIsReportedWhenItIsFinishedAndOnlyIfItChangesSomething()
    {
        const BoundForm f;
        VCNumericFloatSpin* const spin = f.spin("Count");
        type(spin, "25");
        QCOMPARE(f.modified->count(), 0);
        QTest::keyClick(spin, Qt::Key_Return);
        QCOMPARE(f.modified->count(), 1);
        type(spin, "25");
        QTest::keyClick(spin, Qt::Key_Return);
        QCOMPARE(f.modified->count(), 1);
    }

    void everySetModifiedIsReportedAndTakingTheMarkAwayIsNot()
    {
        const BoundForm f;
        f.form->GetSheet()->setModified(true);
        f.form->GetSheet()->setModified(true);
        QCOMPARE(f.modified->count(), 2);
        f.form->GetSheet()->setModified(false);
        QCOMPARE(f.modified->count(), 2);
    }

    void theFormsOwnOperationsAreNeverReported()
    {
        const BoundForm f;
        f.form->SetXmlString("<Set><Size>120</Size><Count>3</Count><Length>3</Length><Colour>Blue</Colour>"
                             "<Detail><Lower>1</Lower></Detail></Set>");
        f.form->EvaluateScript("useLimits(true);");
        f.count->SetMinMax(20, 30, 1, nullptr);
        f.form->InitVTValue("Count", f.count);
        f.form->InitVTValue("Size", f.size);
        f.colour->DeleteItems();
        f.form->InitEnumeration("enumColour", f.colour, {"x"});
        f.length->SetValue(77.0, nullptr);
        f.form->SetVTValue(f.length, nullptr, true);
        f.form->InitVTValue("Count", nullptr);
        f.form->Show();
        f.form->RestoreConfiguration();
        QCOMPARE(f.modified->count(), 0);
        QVERIFY(!f.form->GetSheet()->isModified());
    }

    void onlineTheMarkStaysUntilSettingsComeBack()
    {
        const BoundForm f(true);
        QTest::keyClick(f.spin("Count"), Qt::Key_Up);
        const QString text = f.form->GetXmlString();
        QVERIFY(f.form->GetSheet()->isModified());
        QVERIFY(!f.form->SetXmlString("<Other/>"));
        QVERIFY(f.form->GetSheet()->isModified());
        QVERIFY(f.form->SetXmlString(text));
        QVERIFY(!f.form->GetSheet()->isModified());
    }

    void offlineTheMarkStaysUntilTheTextIsCollected()
    {
        const BoundForm f(false);
        QTest::keyClick(f.spin("Count"), Qt::Key_Up);
        QVERIFY(f.form->GetSheet()->isModified());
        QVERIFY(f.form->GetXmlString().contains("<Count>15</Count>"));
        QVERIFY(!f.form->GetSheet()->isModified());
    }

    void aFieldBeingEditedIsNotOverwritten()
    {
        const BoundForm f;
        VCNumericFloatSpin* const spin = f.spin("Count");
        type(spin, "4");
        QVERIFY(f.form->SetXmlString("<Set><Count>30</Count></Set>"));
        QCOMPARE(spin->text(), QString("4"));
        QVERIFY(f.form->GetXmlString().contains("<Count>30</Count>"));
        QTest::keyClick(spin, Qt::Key_Escape);
        QCOMPARE(spin->value(), 30.0);
        QCOMPARE(f.modified->count(), 0);
    }

    void anEditCanBeUndoneAndTheUndoIsReportedToo()
    {
        QUndoStack stack;
        UndoRecordingControlBase::SetUndoStack(&stack);
        {
            const BoundForm f;
            QTest::keyClick(f.spin("Count"), Qt::Key_Up);
            QCOMPARE(stack.count(), 1);
            QCOMPARE(stack.text(0), QString("Count: 15"));
            stack.undo();
            QCOMPARE(f.form->GetXmlString(), initialText);
            QCOMPARE(f.modified->count(), 2);
        }
        stack.redo(); // the form has gone
        UndoRecordingControlBase::SetUndoStack(nullptr);
    }

    void theFormMayEndInItsOwnReport()
    {
        BoundForm f;
        connect(f.form.get(), &PgXmlFormular::si_parametersModified, f.form.get(),
                [&f] { f.form.release()->deleteLater(); });
        QTest::keyClick(f.spin("Count"), Qt::Key_Up);
        QVERIFY(!f.form);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    // Widget and configuration

    void theWidgetGoesWithTheForm()
    {
        BoundForm f;
        QWidget parent;
        f.form->GetWidget()->setParent(&parent);
        const QPointer<QWidget> widget = f.form->GetWidget();
        f.form.reset();
        QVERIFY(!widget);
    }

    void theWidgetMayGoFirst()
    {
        const BoundForm f;
        {
            QWidget parent;
            f.form->GetWidget()->setParent(&parent);
        }
        QVERIFY(f.form->GetWidget() == nullptr);
        QVERIFY(f.form->GetSheet() == nullptr);
        f.form->Show();
        f.form->CreateGUI(true);
        f.form->EvaluateScript("useLimits(true);");
        f.form->SetXmlString("<Set><Count>3</Count></Set>");
        f.form->RestoreConfiguration();
        QVERIFY(f.form->GetXmlString().contains("<Count>3</Count>"));
        QCOMPARE(f.lower->GetState(), values::StateOrdinary);
    }

    void theConfigurationIsKeptInTheSharedObjectForTheNextForm()
    {
        VelmarGui::GuiComponentCommon common;
        {
            const BoundForm f;
            f.form->SetConfigObject(&common, "CfgTest");
            QVERIFY(!f.form->GetSheet()->isCollapsed());
            f.form->GetSheet()->setCollapsed(true);
        }
        const BoundForm next;
        next.form->SetConfigObject(&common, "CfgOther");
        QVERIFY(!next.form->GetSheet()->isCollapsed());
        next.form->SetConfigObject(&common, "CfgTest");
        QVERIFY(next.form->GetSheet()->isCollapsed());
    }

    void restoringMakesTheFormLookAsTheConfigurationSays()
    {
        VelmarGui::GuiComponentCommon common;
        const BoundForm one;
        const BoundForm other;
        one.form->SetConfigObject(&common, "CfgTest");
        other.form->SetConfigObject(&common, "CfgTest");
        one.form->GetSheet()->setCollapsed(true);
        QVERIFY(!other.form->GetSheet()->isCollapsed());
        other.form->RestoreConfiguration();
        QVERIFY(other.form->GetSheet()->isCollapsed());
    }

    void withoutConfigurationObjectNothingIsKeptOrRestored()
    {
        const BoundForm f;
        f.form->GetSheet()->setCollapsed(true);
        f.form->RestoreConfiguration();
        QVERIFY(f.form->GetSheet()->isCollapsed());
        auto common = std::make_unique<VelmarGui::GuiComponentCommon>();
        f.form->SetConfigObject(common.get(), "CfgTest");
        common.reset();
        f.form->GetSheet()->setCollapsed(false);
        f.form->RestoreConfiguration();
        QVERIFY(!f.form->GetSheet()->isCollapsed());
        f.form->SetConfigObject(nullptr, "CfgTest");
    }
};

DFL_TEST_MAIN(TestPgXmlFormular)
#include "tst_pgxmlformular.moc"
