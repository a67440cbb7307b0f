#pragma once

#include <QtGlobal>

#if defined(KT270_BUILD)
#define KT270_EXPORT Q_DECL_EXPORT
#else
#define KT270_EXPORT Q_DECL_IMPORT
#endif
