#include "guicomponentbase/guicomponentcommon.h"
#include "loadedcomponent.h"
#include "translationrefusal/refusingtranslationcenter.h"

#include "support/freshtree.h"
#include "support/testmain.h"
#include "support/traces.h"

#include <QToolBar>

#include <memory>
#include <stdexcept>

using namespace VelmarGui;
using testsupport::ComponentLibrary;
using testsupport::FreshTree;
using testsupport::refusedTranslationCalls;
using testsupport::Traces;
using testsupport::translationCalls;
using Component = testsupport::ComponentLibrary::Component;

namespace {

const QString registerComponent = QStringLiteral("Register DFLocateComponent");
const QString registerHandler = QStringLiteral("Register DFLocateHandler");
const QString unregisterComponent = QStringLiteral("Unregister DFLocateComponent");
const QString unregisterHandler = QStringLiteral("Unregister DFLocateHandler");

} // namespace

class TestRefusals : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void theHandlersTranslationsComeFirstAndGoLast();
    void theTranslationsGoBeforeTheToolbar();
    void aComponentThatCannotBeConstructedIsNull();
    void aRefusedConstructionLetsTheNextOneSucceed();
    void aComponentWhoseOwnTranslationsAreRefusedIsReturnedAllTheSame();
    void refusedUnregistrationsDoNotKeepTheComponentAlive();
    void aTraceSinkThatThrowsIsNotHeardOutside();

private:
    ComponentLibrary m_library;
};

void TestRefusals::init()
{
    translationCalls().clear();
    refusedTranslationCalls().clear();
}

void TestRefusals::cleanup()
{
    refusedTranslationCalls().clear();
}

void TestRefusals::theHandlersTranslationsComeFirstAndGoLast()
{
    Component component(m_library, L"DFLocateComponent");
    QCOMPARE(translationCalls(), (QStringList{registerHandler, registerComponent}));
    translationCalls().clear();
    component.Destroy();
    QCOMPARE(translationCalls(), (QStringList{unregisterComponent, unregisterHandler}));
}

void TestRefusals::theTranslationsGoBeforeTheToolbar()
{
    const FreshTree tree;
    GuiComponentCommon common;
    Component component(m_library, L"DFLocateComponent");
    const std::unique_ptr<QWidget> panel(component->CreateWidget(&common, QStringLiteral("/GUI/DFLocateComponent/")));
    connect(component->GetToolBar(), &QObject::destroyed, this,
            [] { translationCalls().append(QStringLiteral("toolbar")); });
    translationCalls().clear();
    component.Destroy();
    QCOMPARE(translationCalls(), (QStringList{unregisterComponent, unregisterHandler, QStringLiteral("toolbar")}));
}

void TestRefusals::aComponentThatCannotBeConstructedIsNull()
{
    const Traces traces;
    refusedTranslationCalls() = QStringList{registerHandler};
    const Component component(m_library, L"DFLocateComponent");
    QCOMPARE(component.get(), nullptr);
    QCOMPARE(translationCalls(), QStringList{registerHandler});
    QCOMPARE(traces.records.size(), std::size_t(1));
    QCOMPARE(traces.records[0].text, QStringLiteral("Exception in DFLocateComponent::ZTCreate"));
    QCOMPARE(traces.records[0].sourceFile,
             QStringLiteral("userinterface/guicomponents/dflocatecomponent/dflocatecomponent"));
}

void TestRefusals::aRefusedConstructionLetsTheNextOneSucceed()
{
    refusedTranslationCalls() = QStringList{registerHandler};
    QCOMPARE(m_library.create(L"DFLocateComponent"), nullptr);
    refusedTranslationCalls().clear();
    const Component component(m_library, L"DFLocateComponent");
    QVERIFY(component.get());
}

void TestRefusals::aComponentWhoseOwnTranslationsAreRefusedIsReturnedAllTheSame()
{
    const FreshTree tree;
    GuiComponentCommon common;
    const Traces traces;
    refusedTranslationCalls() = QStringList{registerComponent};
    Component component(m_library, L"DFLocateComponent");
    QVERIFY(component.get());
    QCOMPARE(translationCalls(), (QStringList{registerHandler, registerComponent}));
    QCOMPARE(traces.records.size(), std::size_t(1));
    QVERIFY(component->QueryReady());
    const std::unique_ptr<QWidget> panel(component->CreateWidget(&common, QStringLiteral("/GUI/DFLocateComponent/")));
    QVERIFY(component->GetToolBar());
    translationCalls().clear();
    component.Destroy();
    QCOMPARE(translationCalls(), (QStringList{unregisterComponent, unregisterHandler}));
}

void TestRefusals::refusedUnregistrationsDoNotKeepTheComponentAlive()
{
    const FreshTree tree;
    GuiComponentCommon common;
    Component component(m_library, L"DFLocateComponent");
    const std::unique_ptr<QWidget> panel(component->CreateWidget(&common, QStringLiteral("/GUI/DFLocateComponent/")));
    const QPointer<QToolBar> toolBar = component->GetToolBar();
    refusedTranslationCalls() = QStringList{unregisterComponent, unregisterHandler};
    const Traces traces;
    component.Destroy();
    QVERIFY(toolBar.isNull());
    QCOMPARE(traces.records.size(), std::size_t(2));
    QCOMPARE(traces.records[0].text, QStringLiteral("Exception in DFLocateComponent::ZTDestroy"));
    QCOMPARE(traces.records[1].text, QStringLiteral("Exception in DFLocateComponent::~DFLocateComponent"));
}

void TestRefusals::aTraceSinkThatThrowsIsNotHeardOutside()
{
    const Traces traces;
    ErrorHandler::Instance()->SetTraceSink([](const TraceRecord&) { throw std::runtime_error("disk full"); });
    refusedTranslationCalls() = QStringList{registerHandler};
    const Component component(m_library, L"DFLocateComponent");
    QCOMPARE(component.get(), nullptr);
}

DFL_TEST_MAIN(TestRefusals)
#include "tst_dflocatecomponent_refusals.moc"
