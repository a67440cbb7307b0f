#include "devicecontrol/guicentral.h"
#include "support/testmain.h"

#include <QDialog>
#include <QLineEdit>
#include <QShortcut>
#include <QShortcutEvent>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <memory>

namespace {

/// Remembers the hot keys it got, and may do something when it gets one.
class Receiver : public QObject
{
public:
    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::Shortcut)
            return QObject::event(event);
        const auto* const shortcut = static_cast<QShortcutEvent*>(event);
        ids.push_back(shortcut->shortcutId());
        keys.push_back(shortcut->key());
        // A copy: the reaction may delete this object.
        if (const std::function<void()> react = onShortcut)
            react();
        return true;
    }

    std::vector<int> ids;
    std::vector<QKeySequence> keys;
    std::function<void()> onShortcut;
};

using Ids = std::vector<int>;

int add(QObject* receiver, Qt::Key key = Qt::Key_D, bool enabled = true)
{
    return GuiCentral::Instance()->AddHotKey(key, Qt::ControlModifier, receiver, "Start/Stop Locate",
                                             "Resource subwindow", enabled, true);
}

std::unique_ptr<QWidget> shownWindow()
{
    auto window = std::make_unique<QWidget>();
    window->show();
    window->activateWindow();
    if (!QTest::qWaitForWindowActive(window.get()))
        qFatal("The window was not activated");
    return window;
}

void press(QWidget* widget, Qt::Key key = Qt::Key_D)
{
    QTest::keyClick(widget, key, Qt::ControlModifier);
}

/// The shortcuts that would catch their keys.
int liveShortcuts(const QWidget& widget)
{
    int live = 0;
    const auto shortcuts = widget.findChildren<QShortcut*>();
    for (const QShortcut* shortcut : shortcuts)
        live += shortcut->isEnabled() ? 1 : 0;
    return live;
}

} // namespace

class TestGuiCentral : public QObject
{
    Q_OBJECT

    GuiCentral* const central = GuiCentral::Instance();
    std::unique_ptr<QWidget> window;
    std::unique_ptr<Receiver> receiver;

private slots:
    void init()
    {
        window = shownWindow();
        central->SetMainWidget(window.get());
        receiver = std::make_unique<Receiver>();
    }

    void cleanup()
    {
        central->SetMainWidget(nullptr);
        window.reset();
        receiver.reset();
        QVERIFY(central->GetListedHotKeys().empty()); // receivers take their registrations with them
    }

    void thereIsOneCentral()
    {
        QVERIFY(central != nullptr);
        QCOMPARE(GuiCentral::Instance(), central);
    }

    void theKeysReachTheReceiverWithTheIdOfItsRegistration()
    {
        const int id = add(receiver.get());
        press(window.get());
        QCOMPARE(receiver->ids, Ids{id});
        QCOMPARE(receiver->keys.front(), QKeySequence(Qt::CTRL + Qt::Key_D));
    }

    void theKeysReachTheReceiverOncePerPress()
    {
        add(receiver.get());
        press(window.get());
        press(window.get());
        QCOMPARE(receiver->ids.size(), std::size_t(2));
    }

    void otherKeysDoNotReachTheReceiver()
    {
        add(receiver.get());
        QTest::keyClick(window.get(), Qt::Key_D);
        QTest::keyClick(window.get(), Qt::Key_D, Qt::ControlModifier | Qt::ShiftModifier);
        press(window.get(), Qt::Key_E);
        QVERIFY(receiver->ids.empty());
    }

    void aKeyHeldDownIsOneCommand()
    {
        add(receiver.get());
        const auto sendPress = [this](bool isRepeat) {
            QTest::simulateEvent(window.get(), true, Qt::Key_D, Qt::ControlModifier, QString(), isRepeat);
        };
        sendPress(false);
        sendPress(true);
        sendPress(true);
        QCOMPARE(receiver->ids.size(), std::size_t(1));
    }

    void theKeysWorkFromAnyWidgetAndWindowOfTheApplication()
    {
        QLineEdit field(window.get());
        field.show();
        field.setFocus();
        add(receiver.get());
        press(&field);
        QCOMPARE(receiver->ids.size(), std::size_t(1));
        const auto second = shownWindow();
        press(second.get());
        QCOMPARE(receiver->ids.size(), std::size_t(2));
    }

    void idsBeginAtOneAndAreNeverUsedAgain()
    {
        const int first = add(receiver.get());
        QVERIFY(first >= 1);
        central->RemoveHotKey(first, true);
        const int second = add(receiver.get());
        QVERIFY(second > first);
        QVERIFY(add(receiver.get(), Qt::Key_E) > second);
    }

    void noHotKeyWithoutReceiverOrKey()
    {
        QCOMPARE(add(nullptr), 0);
        QCOMPARE(add(receiver.get(), Qt::Key(0)), 0);
        QCOMPARE(add(receiver.get(), Qt::Key_unknown), 0);
        QVERIFY(central->GetListedHotKeys().empty());
        QCOMPARE(liveShortcuts(*window), 0);
    }

    void removingIdsNobodyHasIsHarmless()
    {
        const int id = add(receiver.get());
        for (int unknown : {0, -1, id + 1000}) {
            central->RemoveHotKey(unknown, true);
            central->RemoveHotKey(unknown, false);
        }
        central->RemoveHotKeyReceiver(nullptr);
        central->RemoveHotKeyReceiver(window.get());
        press(window.get());
        QCOMPARE(receiver->ids, Ids{id});
    }

    void aRemovedHotKeyIsDead()
    {
        const int id = add(receiver.get());
        central->RemoveHotKey(id, true);
        press(window.get());
        QVERIFY(receiver->ids.empty());
        QVERIFY(!central->Trigger(id));
        QCOMPARE(liveShortcuts(*window), 0);
        QVERIFY(central->GetListedHotKeys().empty());
    }

    void aHotKeySwitchedOffIsKeptInTheOverview()
    {
        const int id = add(receiver.get());
        central->RemoveHotKey(id, false);
        press(window.get());
        QVERIFY(receiver->ids.empty());
        QVERIFY(!central->Trigger(id));
        QCOMPARE(liveShortcuts(*window), 0);
        QCOMPARE(central->GetListedHotKeys().size(), std::size_t(1));
    }

    void aHotKeyRegisteredSwitchedOffDoesNotWork()
    {
        const int id = add(receiver.get(), Qt::Key_D, false);
        QVERIFY(id >= 1);
        press(window.get());
        QVERIFY(receiver->ids.empty());
        QVERIFY(!central->Trigger(id));
        QCOMPARE(liveShortcuts(*window), 0);
    }

    void allHotKeysOfAReceiverAreRemovedTogether()
    {
        Receiver other;
        add(receiver.get());
        add(receiver.get(), Qt::Key_E);
        const int kept = add(&other, Qt::Key_F);
        central->RemoveHotKeyReceiver(receiver.get());
        for (Qt::Key key : {Qt::Key_D, Qt::Key_E, Qt::Key_F})
            press(window.get(), key);
        QVERIFY(receiver->ids.empty());
        QCOMPARE(other.ids, Ids{kept});
    }

    void ofTwoReceiversTheLatestGetsTheKeys()
    {
        Receiver later;
        add(receiver.get());
        const int laterId = add(&later);
        press(window.get());
        QVERIFY(receiver->ids.empty());
        QCOMPARE(later.ids, Ids{laterId});
        QCOMPARE(liveShortcuts(*window), 1); // two with the same keys would fire for nobody
    }

    void theKeysFallBackWhenTheLatestReceiverGoes()
    {
        const int id = add(receiver.get());
        {
            Receiver later;
            add(&later);
        }
        press(window.get());
        QCOMPARE(receiver->ids, Ids{id});
    }

    void theKeysFallBackWhenTheLatestIsRemovedOrSwitchedOff()
    {
        Receiver later;
        const int id = add(receiver.get());
        const int removed = add(&later);
        central->RemoveHotKey(removed, true);
        press(window.get());
        QCOMPARE(receiver->ids, Ids{id});
        const int switchedOff = add(&later);
        central->RemoveHotKey(switchedOff, false);
        press(window.get());
        QCOMPARE(receiver->ids, (Ids{id, id}));
        QVERIFY(later.ids.empty());
    }

    void theEarlierReceiverMayGoFirst()
    {
        Receiver later;
        add(receiver.get());
        const int laterId = add(&later);
        receiver = std::make_unique<Receiver>();
        press(window.get());
        QCOMPARE(later.ids, Ids{laterId});
        QCOMPARE(central->GetListedHotKeys().size(), std::size_t(1));
    }

    void theHotKeyDiesWithItsReceiver()
    {
        const int id = add(receiver.get());
        receiver.reset();
        QVERIFY(central->GetListedHotKeys().empty());
        QVERIFY(!central->Trigger(id));
        QCOMPARE(liveShortcuts(*window), 0);
        press(window.get());
    }

    void aModalDialogBlocksTheKeys()
    {
        add(receiver.get());
        QDialog dialog(window.get());
        bool pressed = false;
        QTimer poll;
        connect(&poll, &QTimer::timeout, &dialog, [&] {
            if (QApplication::activeModalWidget() != &dialog)
                return;
            press(&dialog);
            press(window.get());
            pressed = true;
            dialog.close();
        });
        poll.start(0);
        dialog.exec();
        QVERIFY(pressed);
        QVERIFY(receiver->ids.empty());
        window->activateWindow();
        press(window.get());
        QCOMPARE(receiver->ids.size(), std::size_t(1));
    }

    void theKeysAreDeadWhileTheMainWidgetIsHidden()
    {
        add(receiver.get());
        const auto second = shownWindow();
        window->hide();
        press(second.get());
        QVERIFY(receiver->ids.empty());
        window->show();
        press(second.get());
        QCOMPARE(receiver->ids.size(), std::size_t(1));
    }

    void withoutMainWidgetTheKeysAreDead()
    {
        central->SetMainWidget(nullptr);
        add(receiver.get());
        press(window.get());
        QVERIFY(receiver->ids.empty());
        central->SetMainWidget(window.get());
        press(window.get());
        QCOMPARE(receiver->ids.size(), std::size_t(1));
        central->SetMainWidget(nullptr);
        press(window.get());
        QCOMPARE(receiver->ids.size(), std::size_t(1));
        QVERIFY(central->GetMainWidget() == nullptr);
    }

    void theKeysMoveToAnotherMainWidget()
    {
        const int id = add(receiver.get());
        const auto second = shownWindow();
        central->SetMainWidget(second.get());
        QCOMPARE(central->GetMainWidget(), second.get());
        QCOMPARE(liveShortcuts(*window), 0);
        QCOMPARE(liveShortcuts(*second), 1);
        press(second.get());
        QCOMPARE(receiver->ids, Ids{id});
        central->SetMainWidget(window.get());
    }

    void theKeysComeBackAfterTheMainWidgetWasDeleted()
    {
        const int id = add(receiver.get());
        window.reset();
        QVERIFY(central->GetMainWidget() == nullptr);
        window = shownWindow();
        press(window.get());
        QVERIFY(receiver->ids.empty());
        central->SetMainWidget(window.get());
        press(window.get());
        QCOMPARE(receiver->ids, Ids{id});
    }

    void aMainWidgetMayBeDeletedWhileKeysAreRegisteredAndRemoved()
    {
        const int id = add(receiver.get());
        window.reset();
        const int second = add(receiver.get(), Qt::Key_E);
        central->RemoveHotKey(id, true);
        window = shownWindow();
        central->SetMainWidget(window.get());
        press(window.get());
        press(window.get(), Qt::Key_E);
        QCOMPARE(receiver->ids, Ids{second});
    }

    void settingTheSameMainWidgetAgainKeepsOneShortcut()
    {
        add(receiver.get());
        central->SetMainWidget(window.get());
        QCOMPARE(liveShortcuts(*window), 1);
        press(window.get());
        QCOMPARE(receiver->ids.size(), std::size_t(1));
    }

    void triggeringDoesWhatTheKeysDo()
    {
        const int id = add(receiver.get());
        QVERIFY(central->Trigger(id));
        QCOMPARE(receiver->ids, Ids{id});
        QCOMPARE(receiver->keys.front(), QKeySequence(Qt::CTRL + Qt::Key_D));
    }

    void triggeringNeedsTheLatestRegistration()
    {
        Receiver later;
        const int id = add(receiver.get());
        const int laterId = add(&later);
        QVERIFY(!central->Trigger(id));
        QVERIFY(receiver->ids.empty());
        QVERIFY(central->Trigger(laterId));
        QCOMPARE(later.ids, Ids{laterId});
        QVERIFY(!central->Trigger(laterId + 1000));
        QVERIFY(!central->Trigger(0));
    }

    void aReceiverMayRemoveItsHotKeyWhenItGetsIt()
    {
        const int id = add(receiver.get());
        receiver->onShortcut = [this, id] { central->RemoveHotKey(id, true); };
        press(window.get());
        press(window.get());
        QCOMPARE(receiver->ids, Ids{id});
    }

    void aReceiverMayExchangeItsHotKeyWhenItGetsIt()
    {
        Ids expected{add(receiver.get())};
        receiver->onShortcut = [&] {
            central->RemoveHotKeyReceiver(receiver.get());
            expected.push_back(add(receiver.get()));
        };
        press(window.get());
        press(window.get());
        expected.pop_back(); // registered by the second press
        QCOMPARE(receiver->ids, expected);
        QCOMPARE(receiver->ids.size(), std::size_t(2));
    }

    void aReceiverMayDeleteItselfOrTheMainWidgetWhenItGetsTheKeys()
    {
        add(receiver.get());
        receiver->onShortcut = [this] { receiver.reset(); };
        press(window.get());
        QVERIFY(receiver == nullptr);
        QCOMPARE(liveShortcuts(*window), 0);

        receiver = std::make_unique<Receiver>();
        const int id = add(receiver.get());
        receiver->onShortcut = [this] {
            central->SetMainWidget(nullptr);
            window.reset();
        };
        QVERIFY(central->Trigger(id));
        QVERIFY(window == nullptr);
    }

    void aReceiverMayBeRegisteredTimeAndAgain()
    {
        for (int i = 0; i < 100; ++i)
            central->RemoveHotKey(add(receiver.get()), true);
        const int id = add(receiver.get());
        press(window.get());
        QCOMPARE(receiver->ids, Ids{id});
        QCOMPARE(liveShortcuts(*window), 1);
    }

    void theOverviewListsWhatAskedForIt()
    {
        Receiver other;
        central->AddHotKey(Qt::Key_D, Qt::ControlModifier, receiver.get(), "Locate", "DF", true, true);
        central->AddHotKey(Qt::Key_H, Qt::ControlModifier, &other, "Hidden", "DF", true, false);
        central->AddHotKey(Qt::Key_F5, Qt::NoModifier, &other, "Refresh", "View", false, true);
        const auto listed = central->GetListedHotKeys();
        QCOMPARE(listed.size(), std::size_t(2));
        QCOMPARE(listed[0].keys, "Ctrl+D");
        QCOMPARE(listed[0].text, "Locate");
        QCOMPARE(listed[0].group, "DF");
        QCOMPARE(listed[1].keys, "F5");
        QCOMPARE(listed[1].text, "Refresh");
        QCOMPARE(listed[1].group, "View");
    }
};

DFL_TEST_MAIN(TestGuiCentral)
#include "tst_guicentral.moc"
