#pragma once

#include <QtGlobal>

#if defined(DEVICECONTROL_BUILD)
#define DEVICECONTROL_EXPORT Q_DECL_EXPORT
#else
#define DEVICECONTROL_EXPORT Q_DECL_IMPORT
#endif
