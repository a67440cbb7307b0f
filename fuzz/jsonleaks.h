#pragma once

#include "drivers/jsonlines.h"

#include <QJsonDocument>

#include <sanitizer/lsan_interface.h>

namespace fuzzing {

/// Of a member that an object has twice Qt's JSON parser loses the first value for ever, if that is an object or array:
/// for such an input leaks are not looked for while this lives.
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
