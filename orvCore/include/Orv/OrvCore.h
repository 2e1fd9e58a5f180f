#pragma once

/// Includes every other header of the library.
#include <Orv/Core/Compression.h>
#include <Orv/Core/Encryption/Algorithm.h>
#include <Orv/Core/Encryption/EncryptorBase.h>
#include <Orv/Core/Encryption/Encryptors.h>
#include <Orv/Core/Encryption/Key.h>
#include <Orv/Core/GlobalConfig.h>
#include <Orv/Core/ModuleName.h>
#include <Orv/Core/Platform.h>
#include <Orv/Core/Version.h>
#include <Orv/Exception.h>
#include <Orv/Export.h>
#include <Orv/Log/CrashHandler.h>
#include <Orv/Log/LogManager.h>
#include <Orv/Log/LogRollout.h>
#include <Orv/Log/MessageHandlers.h>
#include <Orv/Log/OrvDebug.h>
#include <Orv/Utility/RandomByteArray.h>
#include <Orv/Utility/RandomString.h>
