#pragma once

#include <QtGlobal>

#if defined(BRIXAPPSTARTUP_BUILD)
#define BRIXAPPSTARTUP_EXPORT Q_DECL_EXPORT
#else
#define BRIXAPPSTARTUP_EXPORT Q_DECL_IMPORT
#endif
