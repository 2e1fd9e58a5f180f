#pragma once

#include <QtGlobal>

/// Marks what the shared library exports; everything else stays hidden in it.
#ifdef ORV_BUILDING_LIBRARY
#define ORV_EXPORT Q_DECL_EXPORT
#else
#define ORV_EXPORT Q_DECL_IMPORT
#endif
