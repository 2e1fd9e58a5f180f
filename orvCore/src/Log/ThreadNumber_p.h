#pragma once

#include <QtGlobal>

/// Returns the system's number of the calling thread.
quint64 systemThreadNumber();
