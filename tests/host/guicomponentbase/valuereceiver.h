#pragma once

#include "valueframework/valuebase.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <vector>

/// A receiver of values with two slots. Remembers what each was called with, and may do something when called.
class ValueReceiver : public QObject
{
    Q_OBJECT
public:
    std::vector<values::ValueBase*> changed;
    std::vector<values::ValueBase*> otherChanged;
    QStringList texts; ///< content of the value at each call of Changed()
    std::function<void()> onChanged;

public slots:
    void Changed(values::ValueBase* value)
    {
        changed.push_back(value);
        texts << value->GetStringValue();
        // A copy: the reaction may delete this object.
        if (const std::function<void()> react = onChanged)
            react();
    }
    void OtherChanged(values::ValueBase* value) { otherChanged.push_back(value); }
};
