#pragma once

#include "guicomponentbase/guicomponentbaseglobal.h"

class QObject;

namespace VelmarGui {

/// Base of all services that the host and its components offer one another.
class GUICOMPONENTBASE_EXPORT IVelmarGuiService
{
public:
    virtual ~IVelmarGuiService();

protected:
    IVelmarGuiService() = default;
    IVelmarGuiService(const IVelmarGuiService&) = default;
    IVelmarGuiService& operator=(const IVelmarGuiService&) = default;
};

/// Tells the components how much the operator may do.
class GUICOMPONENTBASE_EXPORT IVelmarGuiUserInputControlService : public IVelmarGuiService
{
public:
    ~IVelmarGuiUserInputControlService() override;

    enum eUserInputMode : int
    {
        FullInput = 0,       ///< everything
        RestrictedInput = 1, ///< what does not disturb a running job
        LockedInput = 2,     ///< nothing: settings are shown only
        ViewSwitchInput = 3, ///< switching views only
    };

    /// The object that emits si_setUserInputMode(IVelmarGuiUserInputControlService::eUserInputMode); lives as long as
    /// the service.
    virtual QObject* GetQObject() = 0;
};

} // namespace VelmarGui
