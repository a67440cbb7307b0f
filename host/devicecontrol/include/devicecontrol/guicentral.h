#pragma once

#include "devicecontrol/devicecontrolglobal.h"

#include <QString>
#include <Qt>

#include <memory>
#include <vector>

class QObject;
class QWidget;

/// What the hot-key overview shows of one hot key.
struct HotKeyInfo
{
    QString keys;  ///< as shown to people, such as "Ctrl+D"
    QString text;  ///< what it does
    QString group; ///< under which heading it stands
};

/// The host's hot keys and its main widget. GUI thread only.
///
/// A hot key works in the whole application while the main widget is visible and no modal window blocks it. When
/// several receivers share the same keys, the one that came last and still lives gets them. A receiver gets a
/// QShortcutEvent with the keys and the id of its registration, once for a key held down.
class DEVICECONTROL_EXPORT GuiCentral
{
public:
    /// The one instance, never null.
    static GuiCentral* Instance();

    GuiCentral(const GuiCentral&) = delete;
    GuiCentral& operator=(const GuiCentral&) = delete;
    virtual ~GuiCentral();

    /// Registers a hot key and returns its id, which is at least 1; 0 for a null receiver or no key. @p enabled: it
    /// works from now on. @p listed: it appears in the hot-key overview.
    int AddHotKey(Qt::Key key, Qt::KeyboardModifiers modifiers, QObject* receiver, const QString& text,
                  const QString& group, bool enabled, bool listed);
    /// Ends the registration @p id, or with @p forget false only switches it off. Unknown ids are ignored.
    void RemoveHotKey(int id, bool forget);
    /// Ends all registrations of @p receiver.
    void RemoveHotKeyReceiver(QObject* receiver);

    /// Does what pressing the keys of registration @p id does. False when its receiver does not get them: an unknown or
    /// switched off id, or one that stands behind a later registration of the same keys.
    bool Trigger(int id);

    /// The registrations for the hot-key overview, in the order of registration.
    [[nodiscard]] std::vector<HotKeyInfo> GetListedHotKeys() const;

    /// The main window; null at first and when it has gone.
    [[nodiscard]] QWidget* GetMainWidget() const;
    void SetMainWidget(QWidget* widget);

private:
    GuiCentral();
    class Private;
    std::unique_ptr<Private> d;
};
