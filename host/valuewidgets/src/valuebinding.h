#pragma once

#include "valueframework/tree.h"
#include "valueframework/valuebase.h"
#include "ztbase/observation.h"

#include <QString>

#include <optional>

class QWidget;

/// Ties a widget to the value it shows: one that is handed in, or the one at a path whenever there is one.
class ValueBinding : public IObserver, private values::ITreeListener
{
public:
    ValueBinding(const ValueBinding&) = delete;
    ValueBinding& operator=(const ValueBinding&) = delete;

    /// Binds to @p value, or to none when it is null or of a kind the widget cannot show.
    void BindTo(values::ValueBase* value);
    /// Binds to the value at @p path as soon as there is one.
    void BindToPath(const QString& path);

    /// Null when there is none, or no longer.
    [[nodiscard]] values::ValueBase* BoundValue() const;

    void Update(Observable* source, TChangeCode code) final;

protected:
    explicit ValueBinding(QWidget& widget);
    ~ValueBinding() override;

    /// Whether the widget can show that kind of value.
    [[nodiscard]] virtual bool Accepts(const values::ValueBase& value) const = 0;
    /// Another value is bound, or none.
    virtual void ValueExchanged() = 0;
    /// The bound value has sent @p code; its removal is told as an exchange instead.
    virtual void ValueChanged(TChangeCode code) = 0;

    /// Enables the widget when it has a value that is in use (or need not be); else disables it and says why in its
    /// status tip.
    void ShowAvailability(bool usableWhenUnused = false);

private:
    void ValueInserted(values::ValueBase* value) override;
    void ValueRemoved(const QString& path) override;

    void Exchange(values::ValueBase* value);
    [[nodiscard]] QString WhyUnavailable(bool usableWhenUnused) const;

    QWidget& m_widget;
    QString m_path;      // to bind to; empty for a value that was handed in
    QString m_boundPath; // where the value bound by path was found
    values::ValueBase* m_value = nullptr;
    std::optional<Observation> m_observation;
    QString m_ownStatusTip;
    QString m_reason; // shown in place of the widget's own status tip
};
