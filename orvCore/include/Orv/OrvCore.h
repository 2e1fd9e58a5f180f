#pragma once

/// \file
/// Includes every other header of the library.

#include <Orv/Core/Compression.h>
#include <Orv/Core/Encryption/Algorithm.h>
#include <Orv/Core/Encryption/EncryptorBase.h>
#include <Orv/Core/Encryption/Encryptors.h>
#include <Orv/Core/Encryption/Key.h>
#include <Orv/Core/FS/FileInfo.h>
#include <Orv/Core/GlobalConfig.h>
#include <Orv/Core/LiveHashTree.h>
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
#include <Orv/Mac/CheckPackageSignature.h>
#include <Orv/Mac/FileProviderMac.h>
#include <Orv/Mac/SystemInfo.h>
#include <Orv/Utility/DSTSafe.h>
#include <Orv/Utility/DateTimeCompare.h>
#include <Orv/Utility/Endian.h>
#include <Orv/Utility/EndpointHelper.h>
#include <Orv/Utility/FileInfo.h>
#include <Orv/Utility/FileLocks.h>
#include <Orv/Utility/FileTypeCheck.h>
#include <Orv/Utility/MathUtilities.h>
#include <Orv/Utility/Ownership.h>
#include <Orv/Utility/Preallocate.h>
#include <Orv/Utility/RandomByteArray.h>
#include <Orv/Utility/RandomString.h>
#include <Orv/Utility/SafeBase64.h>
#include <Orv/Utility/SizeToString.h>
#include <Orv/Utility/StreamCopy.h>
#include <Orv/Utility/StringFilters.h>
#include <Orv/Utility/SymlinkInfo.h>
#include <Orv/Utility/TemporaryFile.h>
#include <Orv/Utility/TimeDuration.h>
#include <Orv/Utility/Uuid2String.h>

/// \namespace Orv
/// The library. The following are in the global namespace: callbacks of Qt, of the system and of the logging back end,
/// the logging categories, the thread number, and the lock probe.

/// \namespace Orv::Core
/// Product identity, shared settings, and the hash tree.

/// \namespace Orv::Core::FS
/// Snapshots of files.

/// \namespace Orv::Utility
/// Files, links and times, strings for display, and host services.

/// \namespace Orv::Utitlity
/// Encodings that are exchanged with other programs, random data, and the package check. The misspelt name is kept for
/// existing clients.

/// \namespace Extensions
/// Integer arithmetic.
