#pragma once

#include "valueframework/valuebase.h"

#include <QObject>
#include <QPointer>

#include <memory>
#include <utility>

namespace VelmarGui {

/// Calls one slot, named by text, with a value.
class SlotCaller : public QObject
{
    Q_OBJECT
public:
    /// Null when @p receiver or @p slot is null, and, with a warning of Qt's, when the receiver has no such slot.
    template <typename Caller, typename... Args>
    static std::unique_ptr<Caller> Make(QObject* receiver, const char* slot, Args&&... args)
    {
        if (receiver == nullptr || slot == nullptr)
            return nullptr;
        auto caller = std::make_unique<Caller>(std::forward<Args>(args)...);
        return caller->Connect(receiver, slot) ? std::move(caller) : nullptr;
    }

    ~SlotCaller() override;

    [[nodiscard]] bool Calls(const QObject* receiver, const char* slot) const;
    /// True when the receiver has gone.
    [[nodiscard]] bool HasNoReceiver() const { return m_receiver.isNull(); }

signals:
    void changed(values::ValueBase* value);

private:
    bool Connect(QObject* receiver, const char* slot);

    QPointer<QObject> m_receiver;
    QByteArray m_slot; // normalised: callers hand in text of any spelling and life
};

} // namespace VelmarGui
