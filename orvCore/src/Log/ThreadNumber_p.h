#pragma once

#include <QtGlobal>

/// The system's number of the calling thread.
quint64 systemThreadNumber();
