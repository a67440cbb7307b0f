#pragma once

#include <QtGlobal>

#if defined(REPORTGENERATOR_BUILD)
#define REPORTGENERATOR_EXPORT Q_DECL_EXPORT
#else
#define REPORTGENERATOR_EXPORT Q_DECL_IMPORT
#endif
