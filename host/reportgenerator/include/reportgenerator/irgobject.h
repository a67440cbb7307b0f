#pragma once

#include "reportgenerator/reportgeneratorglobal.h"

#include <QString>

namespace REPORTGENERATOR {

/// An object that can be kept in a report or a job: it is written as one XML element and read back from it.
///
/// Reading reports a bad text by its result. An operation that would bring an object into a state that cannot be
/// written raises ReportException ("ztbase/exceptions.h") and leaves the object as it was.
class REPORTGENERATOR_EXPORT IRGObject
{
public:
    virtual ~IRGObject();

    /// The object as XML text: one element, without prolog. What is not set is not written.
    [[nodiscard]] virtual QString GetXmlString() const = 0;

    /// Replaces the whole content by that of @p xml. False when @p xml is not the text of such an object; the object is
    /// empty then, so that nothing of the former content can be mistaken for what was read.
    virtual bool SetXmlString(const QString& xml) = 0;

protected:
    // Copying is for the derived classes: through this interface it would cut an object in half.
    IRGObject() = default;
    IRGObject(const IRGObject&) = default;
    IRGObject(IRGObject&&) = default;
    IRGObject& operator=(const IRGObject&) = default;
    IRGObject& operator=(IRGObject&&) = default;
};

} // namespace REPORTGENERATOR
