#include "brixappstartup/translationcenter.h"
#include "support/testmain.h"

#include <QCoreApplication>
#include <QEvent>
#include <QLocale>

#include <functional>
#include <optional>
#include <utility>

namespace {

const QString lampControl = QStringLiteral("LampControl");

QString shownText()
{
    return QCoreApplication::translate("LampControl", "On");
}

/// Counts how often the application is told of another language.
class LanguageWatcher : public QObject
{
public:
    LanguageWatcher() { QCoreApplication::instance()->installEventFilter(this); }
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        if (event->type() == QEvent::LanguageChange) {
            ++changes;
            if (const auto react = std::exchange(onNextChange, nullptr))
                react();
        }
        return false;
    }

    int changes = 0;
    std::function<void()> onNextChange;
};

} // namespace

class TestTranslationCenter : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void thereIsOneCentre();
    void registrationsAreCounted();
    void namespacesAreCountedSeparately();
    void unknownNamesAreIgnored();
    void theFirstRegistrationLoadsAndTheLastOneUnloads();
    void theLanguageIsThatOfTheApplication();
    void aNamespaceWithoutFileIsRegisteredAndStaysUntranslated();
    void anotherLanguageThanThereIsStaysUntranslated();
    void anotherFolderCountsFromTheNextRegistrationOn();
    void aListenerMayRegisterAndUnregisterWhenTheLanguageChanges();
    void withoutApplicationNamesAreCountedOnly();
    void registrationsMayOutliveTheApplication();

private:
    std::optional<QCoreApplication> m_application;
    int m_argc = 0;
};

void TestTranslationCenter::init()
{
    m_application.emplace(m_argc, nullptr);
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    TranslationCenter::Instance()->SetTranslationFolder(QStringLiteral(TRANSLATION_FOLDER));
}

void TestTranslationCenter::cleanup()
{
    QCOMPARE(TranslationCenter::Instance()->GetRegistrationCount(lampControl), 0); // a test leaves nothing behind
    m_application.reset();
    QLocale::setDefault(QLocale::c());
}

void TestTranslationCenter::thereIsOneCentre()
{
    QVERIFY(TranslationCenter::Instance() != nullptr);
    QCOMPARE(TranslationCenter::Instance(), TranslationCenter::Instance());
}

void TestTranslationCenter::registrationsAreCounted()
{
    TranslationCenter* const centre = TranslationCenter::Instance();
    QCOMPARE(centre->GetRegistrationCount(lampControl), 0);
    centre->Register(lampControl);
    centre->Register(lampControl);
    QCOMPARE(centre->GetRegistrationCount(lampControl), 2);
    centre->Unregister(lampControl);
    QCOMPARE(centre->GetRegistrationCount(lampControl), 1);
    centre->Unregister(lampControl);
    QCOMPARE(centre->GetRegistrationCount(lampControl), 0);
}

void TestTranslationCenter::namespacesAreCountedSeparately()
{
    TranslationCenter* const centre = TranslationCenter::Instance();
    centre->Register(lampControl);
    centre->Register(QStringLiteral("Other"));
    centre->Unregister(QStringLiteral("Other"));
    QCOMPARE(centre->GetRegistrationCount(lampControl), 1);
    QCOMPARE(centre->GetRegistrationCount(QStringLiteral("Other")), 0);
    QVERIFY(centre->IsTranslated(lampControl));
    centre->Unregister(lampControl);
}

void TestTranslationCenter::unknownNamesAreIgnored()
{
    TranslationCenter* const centre = TranslationCenter::Instance();
    centre->Unregister(QStringLiteral("NeverHeardOf"));
    QCOMPARE(centre->GetRegistrationCount(QStringLiteral("NeverHeardOf")), 0);
    centre->Register(QStringLiteral("NeverHeardOf"));
    QCOMPARE(centre->GetRegistrationCount(QStringLiteral("NeverHeardOf")), 1); // nothing is owed from before
    centre->Unregister(QStringLiteral("NeverHeardOf"));
    centre->Unregister(QStringLiteral("NeverHeardOf"));
    QCOMPARE(centre->GetRegistrationCount(QStringLiteral("NeverHeardOf")), 0);
}

void TestTranslationCenter::theFirstRegistrationLoadsAndTheLastOneUnloads()
{
    TranslationCenter* const centre = TranslationCenter::Instance();
    LanguageWatcher watcher;
    QCOMPARE(shownText(), QStringLiteral("On"));
    QVERIFY(!centre->IsTranslated(lampControl));

    centre->Register(lampControl);
    QVERIFY(centre->IsTranslated(lampControl));
    QCOMPARE(shownText(), QStringLiteral("Ein"));
    QCOMPARE(watcher.changes, 1);
    centre->Register(lampControl);
    QCOMPARE(watcher.changes, 1);

    centre->Unregister(lampControl);
    QCOMPARE(shownText(), QStringLiteral("Ein"));
    QCOMPARE(watcher.changes, 1);
    centre->Unregister(lampControl);
    QVERIFY(!centre->IsTranslated(lampControl));
    QCOMPARE(shownText(), QStringLiteral("On"));
    QCOMPARE(watcher.changes, 2);
}

void TestTranslationCenter::theLanguageIsThatOfTheApplication()
{
    QLocale::setDefault(QLocale(QLocale::French, QLocale::Canada));
    TranslationCenter::Instance()->Register(lampControl);
    QCOMPARE(shownText(), QStringLiteral("Marche"));
    TranslationCenter::Instance()->Unregister(lampControl);
}

void TestTranslationCenter::aNamespaceWithoutFileIsRegisteredAndStaysUntranslated()
{
    TranslationCenter* const centre = TranslationCenter::Instance();
    LanguageWatcher watcher;
    centre->Register(QStringLiteral("NoFile"));
    QCOMPARE(centre->GetRegistrationCount(QStringLiteral("NoFile")), 1);
    QVERIFY(!centre->IsTranslated(QStringLiteral("NoFile")));
    centre->Unregister(QStringLiteral("NoFile"));
    QCOMPARE(watcher.changes, 0);
}

void TestTranslationCenter::anotherLanguageThanThereIsStaysUntranslated()
{
    QLocale::setDefault(QLocale(QLocale::Swedish, QLocale::Sweden));
    TranslationCenter::Instance()->Register(lampControl);
    QVERIFY(!TranslationCenter::Instance()->IsTranslated(lampControl));
    QCOMPARE(shownText(), QStringLiteral("On"));
    TranslationCenter::Instance()->Unregister(lampControl);
}

void TestTranslationCenter::anotherFolderCountsFromTheNextRegistrationOn()
{
    TranslationCenter* const centre = TranslationCenter::Instance();
    centre->Register(lampControl);
    centre->SetTranslationFolder(QStringLiteral("/nowhere/at/all"));
    centre->Register(lampControl);
    QCOMPARE(shownText(), QStringLiteral("Ein"));
    centre->Unregister(lampControl);
    centre->Unregister(lampControl);
    centre->Register(lampControl);
    QCOMPARE(shownText(), QStringLiteral("On"));
    centre->Unregister(lampControl);
}

void TestTranslationCenter::aListenerMayRegisterAndUnregisterWhenTheLanguageChanges()
{
    TranslationCenter* const centre = TranslationCenter::Instance();
    LanguageWatcher watcher;
    watcher.onNextChange = [centre] {
        for (int i = 0; i < 50; ++i)
            centre->Register(QStringLiteral("Nested%1").arg(i));
        centre->Unregister(lampControl);
    };
    centre->Register(lampControl);
    QCOMPARE(centre->GetRegistrationCount(lampControl), 0);
    QCOMPARE(shownText(), QStringLiteral("On"));
    QCOMPARE(centre->GetRegistrationCount(QStringLiteral("Nested49")), 1);
    for (int i = 0; i < 50; ++i)
        centre->Unregister(QStringLiteral("Nested%1").arg(i));
}

void TestTranslationCenter::withoutApplicationNamesAreCountedOnly()
{
    m_application.reset();
    static int messages;
    messages = 0;
    const QtMessageHandler handler =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) { ++messages; });
    TranslationCenter* const centre = TranslationCenter::Instance();
    centre->Register(lampControl);
    const int count = centre->GetRegistrationCount(lampControl);
    const bool translated = centre->IsTranslated(lampControl);
    centre->Unregister(lampControl);
    qInstallMessageHandler(handler);
    QCOMPARE(count, 1);
    QVERIFY(!translated);
    QCOMPARE(messages, 0); // Qt would complain about the missing application
}

void TestTranslationCenter::registrationsMayOutliveTheApplication()
{
    TranslationCenter* const centre = TranslationCenter::Instance();
    centre->Register(lampControl);
    QVERIFY(centre->IsTranslated(lampControl));
    m_application.reset();
    centre->Unregister(lampControl);
    QVERIFY(!centre->IsTranslated(lampControl));
}

// The tests make and end the application object themselves.
int main(int argc, char** argv)
{
    testsupport::prepareProcess(150);
    TestTranslationCenter test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_translationcenter.moc"
