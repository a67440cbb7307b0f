#pragma once

#include <QtGlobal>

#if defined(ZTBASE_BUILD)
#define ZTBASE_EXPORT Q_DECL_EXPORT
#else
#define ZTBASE_EXPORT Q_DECL_IMPORT
#endif
