#pragma once

#include <QtGlobal>

/// Exports a symbol from the shared library. All other symbols are hidden.
#ifdef ORV_BUILDING_LIBRARY
#define ORV_EXPORT Q_DECL_EXPORT
#else
#define ORV_EXPORT Q_DECL_IMPORT
#endif
