#pragma once

#include <QtGlobal>

#if defined(VALUEFRAMEWORK_BUILD)
#define VALUEFRAMEWORK_EXPORT Q_DECL_EXPORT
#else
#define VALUEFRAMEWORK_EXPORT Q_DECL_IMPORT
#endif
