#pragma once

#include <QtGlobal>

#if defined(JOBXML_BUILD)
#define JOBXML_EXPORT Q_DECL_EXPORT
#else
#define JOBXML_EXPORT Q_DECL_IMPORT
#endif
