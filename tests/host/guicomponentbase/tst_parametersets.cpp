#include "guicomponentbase/guicomponentcommon.h"
#include "guicomponentbase/guicomponenttools.h"
#include "support/freshtree.h"
#include "support/testmain.h"
#include "valueframework/valueclasses/value.h"
#include "valuereceiver.h"

#include <QSignalSpy>

#include <memory>

using namespace VelmarGui;
using testsupport::FreshTree;

namespace {

const char* const changedSlot = SLOT(Changed(values::ValueBase*));
const char* const otherSlot = SLOT(OtherChanged(values::ValueBase*));
const QString component = QStringLiteral("/GUI/SomeComponent/");
const QString settings = QStringLiteral("DF_Settings");
const QString xml = QStringLiteral("<DF_Settings/>");

/// Looks at the value it is called with while it is valid.
class Inspector : public QObject
{
    Q_OBJECT
public:
    values::TValueType type = values::TypeBool;
    QString name;
    bool isInTree = true;

public slots:
    void Look(values::ValueBase* value)
    {
        type = value->GetType();
        name = value->GetName();
        isInTree = value->IsInTree();
    }
};

} // namespace

class TestParameterSets : public QObject
{
    Q_OBJECT

    FreshTree tree;
    std::unique_ptr<GuiComponentCommon> common;
    std::unique_ptr<GuiComponentTools> tools;
    std::unique_ptr<ValueReceiver> receiver;

private slots:
    void init()
    {
        values::Tree::Instance()->Clear();
        common = std::make_unique<GuiComponentCommon>();
        tools = std::make_unique<GuiComponentTools>(common.get(), component);
        receiver = std::make_unique<ValueReceiver>();
    }

    void cleanup()
    {
        tools.reset();
        receiver.reset();
        common.reset();
    }

    void registeringCallsNothing()
    {
        tools->UpdateParameterSet(settings, xml);
        tools->AddParameterSet(settings, receiver.get(), changedSlot);
        QVERIFY(receiver->changed.empty());
    }

    void theSlotIsCalledWithWhatTheHostHandsIn()
    {
        tools->AddParameterSet(settings, receiver.get(), changedSlot);
        QVERIFY(common->SetParameterSet(component, settings, xml));
        QCOMPARE(receiver->texts, QStringList(xml));
        QCOMPARE(common->GetParameterSet(component, settings), xml);
    }

    void theSlotIsCalledForTheSameContentToo()
    {
        tools->AddParameterSet(settings, receiver.get(), changedSlot);
        common->SetParameterSet(component, settings, xml);
        common->SetParameterSet(component, settings, xml);
        common->SetParameterSet(component, settings, QString());
        QCOMPARE(receiver->texts, QStringList({xml, xml, QString()}));
    }

    void theContentComesAsATextValueOutsideTheTree()
    {
        Inspector inspector;
        tools->AddParameterSet(settings, &inspector, SLOT(Look(values::ValueBase*)));
        common->SetParameterSet(component, settings, xml);
        QCOMPARE(inspector.type, values::TypeString);
        QCOMPARE(inspector.name, settings);
        QVERIFY(!inspector.isInTree);
        QVERIFY(values::Tree::Instance()->ValuesBelow(QString()).empty());
    }

    void theContentIsStoredBeforeTheSlotIsCalled()
    {
        tools->AddParameterSet(settings, receiver.get(), changedSlot);
        QString stored;
        receiver->onChanged = [&] { stored = common->GetParameterSet(component, settings); };
        common->SetParameterSet(component, settings, xml);
        QCOMPARE(stored, xml);
    }

    void reportingStoresAndNeverCallsTheComponentsSlot()
    {
        tools->AddParameterSet(settings, receiver.get(), changedSlot);
        tools->UpdateParameterSet(settings, xml);
        QVERIFY(receiver->changed.empty());
        QCOMPARE(common->GetParameterSet(component, settings), xml);
    }

    void everyReportIsAnnouncedAfterItIsStored()
    {
        QStringList told;
        QObject::connect(common.get(), &GuiComponentCommon::si_parameterSetUpdated, receiver.get(),
                         [&](const QString& from, const QString& name) {
                             told += from + name + common->GetParameterSet(from, name);
                         });
        tools->UpdateParameterSet(settings, xml);
        tools->UpdateParameterSet(settings, xml);
        QCOMPARE(told, QStringList({component + settings + xml, component + settings + xml}));
    }

    void whatTheHostHandsInIsNotAnnouncedToIt()
    {
        QSignalSpy updated(common.get(), &GuiComponentCommon::si_parameterSetUpdated);
        tools->AddParameterSet(settings, receiver.get(), changedSlot);
        common->SetParameterSet(component, settings, xml);
        QCOMPARE(updated.count(), 0);
    }

    void everythingMayBeDeletedWhenAReportIsAnnounced()
    {
        QObject::connect(common.get(), &GuiComponentCommon::si_parameterSetUpdated, receiver.get(), [this] {
            tools.reset();
            common.reset();
        });
        tools->UpdateParameterSet(settings, xml);
        QVERIFY(common == nullptr);
    }

    void aSlotMayReportItsContentBack()
    {
        tools->AddParameterSet(settings, receiver.get(), changedSlot);
        receiver->onChanged = [this] { tools->UpdateParameterSet(settings, "<corrected/>"); };
        common->SetParameterSet(component, settings, xml);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
        QCOMPARE(common->GetParameterSet(component, settings), "<corrected/>");
    }

    void anUnknownSetTakesNothing()
    {
        QVERIFY(!common->SetParameterSet(component, settings, xml));
        QVERIFY(common->GetParameterSet(component, settings).isNull());
        tools->AddParameterSet(settings, receiver.get(), changedSlot);
        QVERIFY(!common->SetParameterSet("/GUI/OtherComponent/", settings, xml));
        QVERIFY(!common->SetParameterSet(component, "Other", xml));
        QVERIFY(receiver->changed.empty());
        QVERIFY(common->GetParameterSet("/GUI/OtherComponent/", settings).isNull());
    }

    void theStoreIsNotTheParameterFolderOfTheTree()
    {
        auto* value = tree.add<values::StringValue>("/GUI/SomeComponent/Parameters/DF_Settings");
        tools->UpdateParameterSet(settings, xml);
        QCOMPARE(value->GetValue(), QString());
        value->SetValue("<other/>", nullptr);
        QCOMPARE(common->GetParameterSet(component, settings), xml);
    }

    void componentsHaveSetsOfTheirOwn()
    {
        GuiComponentTools others(common.get(), "/GUI/OtherComponent/");
        ValueReceiver otherReceiver;
        tools->AddParameterSet(settings, receiver.get(), changedSlot);
        others.AddParameterSet(settings, &otherReceiver, changedSlot);
        common->SetParameterSet(component, settings, xml);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
        QVERIFY(otherReceiver.changed.empty());
        QVERIFY(common->GetParameterSet("/GUI/OtherComponent/", settings).isNull());
    }

    void twoToolsObjectsOfAComponentShareItsSets()
    {
        GuiComponentTools others(common.get(), component);
        tools->AddParameterSet(settings, receiver.get(), changedSlot);
        others.UpdateParameterSet(settings, xml);
        QCOMPARE(common->GetParameterSet(component, settings), xml);
        ValueReceiver otherReceiver;
        others.AddParameterSet(settings, &otherReceiver, changedSlot); // takes the set over
        common->SetParameterSet(component, settings, xml);
        QVERIFY(receiver->changed.empty());
        QCOMPARE(otherReceiver.changed.size(), std::size_t(1));
        tools.reset();
        QVERIFY(common->SetParameterSet(component, settings, xml));
        QCOMPARE(otherReceiver.changed.size(), std::size_t(2));
    }

    void registeringAgainReplacesTheSlot()
    {
        tools->AddParameterSet(settings, receiver.get(), changedSlot);
        tools->AddParameterSet(settings, receiver.get(), otherSlot);
        common->SetParameterSet(component, settings, xml);
        QVERIFY(receiver->changed.empty());
        QCOMPARE(receiver->otherChanged.size(), std::size_t(1));
    }

    void theSlotTextIsCopied()
    {
        QByteArray text(changedSlot);
        tools->AddParameterSet(settings, receiver.get(), text.constData());
        text.fill('x');
        common->SetParameterSet(component, settings, xml);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
    }

    void aSetNeedsNoReceiver()
    {
        tools->AddParameterSet(settings, nullptr, changedSlot);
        QVERIFY(common->SetParameterSet(component, settings, xml));
        tools->AddParameterSet("Second", receiver.get(), nullptr);
        QVERIFY(common->SetParameterSet(component, "Second", xml));
        QVERIFY(receiver->changed.empty());
        QCOMPARE(common->GetParameterSet(component, settings), xml);
    }

    void aSlotTheReceiverDoesNotHaveIsWarnedOf()
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("No such slot ValueReceiver::Missing"));
        tools->AddParameterSet(settings, receiver.get(), SLOT(Missing(values::ValueBase*)));
        QVERIFY(common->SetParameterSet(component, settings, xml));
        QVERIFY(receiver->changed.empty());
    }

    void aSetEndsWithItsReceiver()
    {
        tools->AddParameterSet(settings, receiver.get(), changedSlot);
        common->SetParameterSet(component, settings, xml);
        receiver.reset();
        QVERIFY(!common->SetParameterSet(component, settings, "<later/>"));
        QCOMPARE(common->GetParameterSet(component, settings), xml); // the content stays
    }

    void aSetEndsWithItsTools()
    {
        tools->AddParameterSet(settings, receiver.get(), changedSlot);
        tools->UpdateParameterSet(settings, xml);
        tools.reset();
        QVERIFY(!common->SetParameterSet(component, settings, "<later/>"));
        QVERIFY(receiver->changed.empty());
        QCOMPARE(common->GetParameterSet(component, settings), xml);
    }

    void aSlotMayDeleteItsReceiver()
    {
        tools->AddParameterSet(settings, receiver.get(), changedSlot);
        receiver->onChanged = [this] { receiver.reset(); };
        QVERIFY(common->SetParameterSet(component, settings, xml));
        QVERIFY(!common->SetParameterSet(component, settings, xml));
    }

    void aSlotMayDeleteToolsAndSharedObject()
    {
        tools->AddParameterSet(settings, receiver.get(), changedSlot);
        receiver->onChanged = [this] {
            tools.reset();
            common.reset();
        };
        QVERIFY(common->SetParameterSet(component, settings, xml));
        QCOMPARE(receiver->texts, QStringList(xml));
    }

    void aSlotMayRegisterAgain()
    {
        tools->AddParameterSet(settings, receiver.get(), changedSlot);
        receiver->onChanged = [this] { tools->AddParameterSet(settings, receiver.get(), otherSlot); };
        common->SetParameterSet(component, settings, xml);
        common->SetParameterSet(component, settings, xml);
        QCOMPARE(receiver->changed.size(), std::size_t(1));
        QCOMPARE(receiver->otherChanged.size(), std::size_t(1));
    }

    void withoutTheSharedObjectNothingIsReported()
    {
        common.reset();
        tools->AddParameterSet(settings, receiver.get(), changedSlot);
        tools->UpdateParameterSet(settings, xml);
        QVERIFY(receiver->changed.empty());
    }
};

DFL_TEST_MAIN_WITH(TestParameterSets, QCoreApplication)
#include "tst_parametersets.moc"
