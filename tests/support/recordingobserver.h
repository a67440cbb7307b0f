#pragma once

#include "ztbase/observable.h"

#include <algorithm>
#include <functional>
#include <vector>

namespace testsupport {

/// Remembers the codes it is told, and may do something when told.
class RecordingObserver : public IObserver
{
public:
    RecordingObserver() = default;
    explicit RecordingObserver(std::function<void(Observable*, TChangeCode)> onUpdate)
        : m_onUpdate(std::move(onUpdate))
    {
    }

    void Update(Observable* source, TChangeCode code) override
    {
        codes.push_back(code);
        if (m_onUpdate)
            m_onUpdate(source, code);
    }

    [[nodiscard]] int count(TChangeCode code) const
    {
        return static_cast<int>(std::count(codes.begin(), codes.end(), code));
    }

    std::vector<TChangeCode> codes;

private:
    std::function<void(Observable*, TChangeCode)> m_onUpdate;
};

} // namespace testsupport
