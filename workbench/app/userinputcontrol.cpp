#include "app/userinputcontrol.h"

namespace workbench {

void UserInputControl::setMode(eUserInputMode mode)
{
    if (mode == m_mode)
        return;
    m_mode = mode;
    emit si_setUserInputMode(mode);
}

} // namespace workbench
