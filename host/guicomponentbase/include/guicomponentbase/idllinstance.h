#pragma once

#include "guicomponentbase/guicomponentbaseglobal.h"

/// Root of everything that a plug-in factory returns.
class GUICOMPONENTBASE_EXPORT IDllInstance
{
public:
    virtual ~IDllInstance();

protected:
    IDllInstance() = default;
    IDllInstance(const IDllInstance&) = default;
    IDllInstance& operator=(const IDllInstance&) = default;
};

/// @name Exports of a component library (C linkage)
/// ZTCreate takes the component's name as zero-terminated text and returns a new object, or null. ZTDestroy takes back
/// what ZTCreate of the same library returned. Neither lets an exception out.
/// @{
using ZTCreateFunction = IDllInstance* (*)(const wchar_t* name);
using ZTDestroyFunction = void (*)(IDllInstance* instance);
/// @}
