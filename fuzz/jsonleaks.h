#pragma once

#include "drivers/jsonlines.h"

#include <QJsonDocument>

#include <sanitizer/lsan_interface.h>

namespace fuzzing {

/// Of a member that an object has twice Qt's JSON parser loses the first value for ever, if that is an object or array.
/// While this lives leaks are not looked for with such an input, nor with one that is no JSON, of which nobody can
/// tell.
class JsonLeaks
{
public:
    explicit JsonLeaks(const QByteArray& json)
    {
        __lsan_disable();
        if (!QJsonDocument::fromJson(json).isNull() && workbench::JsonLines(json).duplicates().empty())
            enable();
    }
    ~JsonLeaks()
    {
        if (m_isDisabled)
            enable();
    }
    JsonLeaks(const JsonLeaks&) = delete;
    JsonLeaks& operator=(const JsonLeaks&) = delete;

private:
    void enable()
    {
        m_isDisabled = false;
        __lsan_enable();
    }

    bool m_isDisabled = true;
};

} // namespace fuzzing
