#pragma once

#include <QByteArray>

#include <benchmark/benchmark.h>

#include <string>
#include <utility>

/// Registers a row named "subject/variant". Rows with the same subject do the same work; the library's variant is
/// "orvCore".
template <class Work>
benchmark::internal::Benchmark* addRow(const std::string& subject, const std::string& variant, Work work)
{
    return benchmark::RegisterBenchmark((subject + '/' + variant).c_str(), std::move(work));
}

/// The array's bytes, as Crypto++ and OpenSSL expect them.
inline const unsigned char* bytes(const QByteArray& array)
{
    return reinterpret_cast<const unsigned char*>(array.constData());
}

/// Each function registers the rows of its subjects.
void addEncryptionRows();
void addEndianRows();
void addEndpointHelperRows();
void addFileInfoRows();
void addKeyRows();
void addLiveHashTreeRows();
void addLoggingRows();
void addSafeBase64Rows();
void addStreamCopyRows();
