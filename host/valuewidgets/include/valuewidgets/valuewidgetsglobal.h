#pragma once

#include <QtGlobal>

#if defined(VALUEWIDGETS_BUILD)
#define VALUEWIDGETS_EXPORT Q_DECL_EXPORT
#else
#define VALUEWIDGETS_EXPORT Q_DECL_IMPORT
#endif
