#include "devicecontrol/guicentral.h"

#include "faultpoints/faultpoint.h"

#include <QCoreApplication>
#include <QKeySequence>
#include <QPointer>
#include <QShortcut>
#include <QShortcutEvent>
#include <QWidget>

#include <algorithm>
#include <utility>

/// Is a QObject so that connections to it end with it.
class GuiCentral::Private : public QObject
{
public:
    struct HotKey
    {
        int id;
        QKeySequence keys;
        QPointer<QObject> receiver;
        QString text;
        QString group;
        bool enabled;
        bool listed;
    };

    void SetMainWidget(QWidget* widget);
    [[nodiscard]] QWidget* MainWidget() const { return m_mainWidget; }

    int Add(HotKey hotKey);
    template <typename Predicate>
    void RemoveIf(Predicate predicate);
    void SwitchOff(int id);

    [[nodiscard]] const HotKey* Find(int id) const;
    /// The registration that gets @p keys, null when there is none.
    [[nodiscard]] const HotKey* WinnerOf(const QKeySequence& keys) const;
    [[nodiscard]] const std::vector<HotKey>& HotKeys() const { return m_hotKeys; }

    static void Deliver(const HotKey& hotKey);

private:
    void Refresh();
    void MakeShortcut(const QKeySequence& keys);

    std::vector<HotKey> m_hotKeys; // in the order of registration
    std::vector<QPointer<QShortcut>> m_shortcuts;
    QPointer<QWidget> m_mainWidget;
    int m_lastId = 0;
};

void GuiCentral::Private::SetMainWidget(QWidget* widget)
{
    if (widget == m_mainWidget)
        return;
    if (m_mainWidget)
        disconnect(m_mainWidget, nullptr, this, nullptr);
    m_mainWidget = widget;
    if (m_mainWidget)
        connect(m_mainWidget, &QObject::destroyed, this, &Private::Refresh);
    Refresh();
}

int GuiCentral::Private::Add(HotKey hotKey)
{
    hotKey.id = ++m_lastId;
    // A receiver's hot keys come and go: one connection serves them all.
    connect(hotKey.receiver, &QObject::destroyed, this, &Private::Refresh, Qt::UniqueConnection);
    m_hotKeys.push_back(std::move(hotKey));
    Refresh();
    return m_lastId;
}

template <typename Predicate>
void GuiCentral::Private::RemoveIf(Predicate predicate)
{
    m_hotKeys.erase(std::remove_if(m_hotKeys.begin(), m_hotKeys.end(), predicate), m_hotKeys.end());
    Refresh();
}

void GuiCentral::Private::SwitchOff(int id)
{
    for (HotKey& hotKey : m_hotKeys) {
        if (hotKey.id == id)
            hotKey.enabled = false;
    }
    Refresh();
}

const GuiCentral::Private::HotKey* GuiCentral::Private::Find(int id) const
{
    const auto found =
        std::find_if(m_hotKeys.begin(), m_hotKeys.end(), [id](const HotKey& hotKey) { return hotKey.id == id; });
    return found != m_hotKeys.end() ? &*found : nullptr;
}

const GuiCentral::Private::HotKey* GuiCentral::Private::WinnerOf(const QKeySequence& keys) const
{
    const auto latest = std::find_if(m_hotKeys.rbegin(), m_hotKeys.rend(), [&keys](const HotKey& hotKey) {
        return hotKey.enabled && hotKey.receiver && hotKey.keys == keys;
    });
    return latest != m_hotKeys.rend() ? &*latest : nullptr;
}

void GuiCentral::Private::Deliver(const HotKey& hotKey)
{
    QShortcutEvent event(hotKey.keys, hotKey.id);
    QCoreApplication::sendEvent(hotKey.receiver, &event);
}

/// Brings the shortcuts in line with the registrations and the main widget: exactly one for each key sequence, because
/// two shortcuts with the same keys would fire for nobody.
void GuiCentral::Private::Refresh()
{
    m_hotKeys.erase(std::remove_if(m_hotKeys.begin(), m_hotKeys.end(),
                                   [](const HotKey& hotKey) { return hotKey.receiver.isNull(); }),
                    m_hotKeys.end());

    const auto isObsolete = [this](const QPointer<QShortcut>& shortcut) {
        if (!shortcut)
            return true;
        if (shortcut->parent() == m_mainWidget && WinnerOf(shortcut->key()) != nullptr)
            return false;
        // May be the shortcut that is being delivered: it goes later, but must not catch its keys any more.
        shortcut->setEnabled(false);
        shortcut->deleteLater();
        return true;
    };
    m_shortcuts.erase(std::remove_if(m_shortcuts.begin(), m_shortcuts.end(), isObsolete), m_shortcuts.end());

    if (!m_mainWidget)
        return;
    for (const HotKey& hotKey : m_hotKeys) {
        const bool hasShortcut =
            std::any_of(m_shortcuts.begin(), m_shortcuts.end(),
                        [&hotKey](const QPointer<QShortcut>& shortcut) { return shortcut->key() == hotKey.keys; });
        if (hotKey.enabled && !hasShortcut)
            MakeShortcut(hotKey.keys);
    }
}

void GuiCentral::Private::MakeShortcut(const QKeySequence& keys)
{
    auto* const shortcut = new QShortcut(keys, m_mainWidget);
    shortcut->setContext(Qt::ApplicationShortcut);
    // A key held down is one command, not many.
    shortcut->setAutoRepeat(false);
    connect(shortcut, &QShortcut::activated, this, [this, keys] {
        if (const HotKey* const winner = WinnerOf(keys))
            Deliver(*winner);
    });
    m_shortcuts.emplace_back(shortcut);
}

GuiCentral::GuiCentral()
    : d(std::make_unique<Private>())
{
}

GuiCentral::~GuiCentral() = default;

GuiCentral* GuiCentral::Instance()
{
    faults::mayRaise("GuiCentral::Instance");
    // Lives for the whole process: receivers may take their leave while static objects are being destroyed.
    static GuiCentral* const instance = new GuiCentral;
    return instance;
}

int GuiCentral::AddHotKey(Qt::Key key, Qt::KeyboardModifiers modifiers, QObject* receiver, const QString& text,
                          const QString& group, bool enabled, bool listed)
{
    if (faults::failsByResult("GuiCentral::AddHotKey"))
        return 0;
    if (receiver == nullptr || key == Qt::Key(0) || key == Qt::Key_unknown)
        return 0;
    const QKeySequence keys(static_cast<int>(key) | static_cast<int>(modifiers));
    return d->Add({0, keys, receiver, text, group, enabled, listed});
}

void GuiCentral::RemoveHotKey(int id, bool forget)
{
    faults::mayRaise("GuiCentral::RemoveHotKey");
    if (forget)
        d->RemoveIf([id](const Private::HotKey& hotKey) { return hotKey.id == id; });
    else
        d->SwitchOff(id);
}

void GuiCentral::RemoveHotKeyReceiver(QObject* receiver)
{
    faults::mayRaise("GuiCentral::RemoveHotKeyReceiver");
    d->RemoveIf([receiver](const Private::HotKey& hotKey) { return hotKey.receiver == receiver; });
}

bool GuiCentral::Trigger(int id)
{
    const Private::HotKey* const hotKey = d->Find(id);
    if (hotKey == nullptr || d->WinnerOf(hotKey->keys) != hotKey)
        return false;
    Private::Deliver(*hotKey);
    return true;
}

std::vector<HotKeyInfo> GuiCentral::GetListedHotKeys() const
{
    std::vector<HotKeyInfo> listed;
    for (const Private::HotKey& hotKey : d->HotKeys()) {
        if (hotKey.listed)
            listed.push_back({hotKey.keys.toString(QKeySequence::NativeText), hotKey.text, hotKey.group});
    }
    return listed;
}

QWidget* GuiCentral::GetMainWidget() const
{
    if (faults::failsByResult("GuiCentral::GetMainWidget"))
        return nullptr;
    return d->MainWidget();
}

void GuiCentral::SetMainWidget(QWidget* widget)
{
    d->SetMainWidget(widget);
}
