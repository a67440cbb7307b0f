#pragma once

#include "guicomponentbase/ivelmarguiservice.h"

#include <QObject>

namespace workbench {

// The signal's signature is matched as text: the enumeration must be spelt as the components spell it.
using VelmarGui::IVelmarGuiUserInputControlService;

/// Tells the components how much the operator may do: everything at first.
class UserInputControl final : public QObject, public IVelmarGuiUserInputControlService
{
    Q_OBJECT
public:
    QObject* GetQObject() override { return this; }

    [[nodiscard]] eUserInputMode mode() const { return m_mode; }
    /// Emits si_setUserInputMode() when the mode is another one than before.
    void setMode(eUserInputMode mode);

signals:
    void si_setUserInputMode(IVelmarGuiUserInputControlService::eUserInputMode mode);

private:
    eUserInputMode m_mode = FullInput;
};

} // namespace workbench
