#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <utility>

/// A row is named "subject/variant"; rows of one subject do the same work. The variant of the library is "orvCore".
template <class Work>
benchmark::internal::Benchmark* addRow(const std::string& subject, const std::string& variant, Work work)
{
    return benchmark::RegisterBenchmark((subject + '/' + variant).c_str(), std::move(work));
}

/// Each registers the rows of its subject.
void addEncryptionRows();
void addEndianRows();
void addEndpointHelperRows();
void addFileInfoRows();
void addKeyRows();
void addLiveHashTreeRows();
void addLoggingRows();
void addSafeBase64Rows();
void addStreamCopyRows();
