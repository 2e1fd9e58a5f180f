#include "Bench.h"

#include <Orv/Utility/Endian.h>

#include <QtEndian>

using Orv::Utitlity::Endian;

namespace {

using Number = unsigned long long;

constexpr int Count = 1000000;
constexpr int Width = sizeof(Number);

/// `write` is called with the array, a pointer to its first byte, the value, and the offset.
template <class Write> void addWrites(const char* variant, Write write)
{
    addRow("a million 64-bit writes, little-endian", variant, [write](benchmark::State& state) {
        QByteArray data(Count * Width, '\0');
        char* const memory = data.data();
        for (auto _ : state) {
            for (int i = 0; i < Count; ++i)
                write(data, memory, Number(i), i * Width);
            benchmark::ClobberMemory();
        }
        state.SetItemsProcessed(state.iterations() * Count);
    });
}

/// `read` is called with the array, a pointer to its first byte, and the offset.
template <class Read> void addReads(const char* variant, Read read)
{
    addRow("a million 64-bit reads, big-endian", variant, [read](benchmark::State& state) {
        const QByteArray data(Count * Width, 'x');
        const char* const memory = data.constData();
        for (auto _ : state) {
            Number sum = 0;
            for (int i = 0; i < Count; ++i)
                sum += read(data, memory, i * Width);
            benchmark::DoNotOptimize(sum);
        }
        state.SetItemsProcessed(state.iterations() * Count);
    });
}

} // namespace

void addEndianRows()
{
    // The size check is the baseline for callers that cannot trust the offset. "On memory" bypasses the array, so the
    // compiler can vectorise the loop.
    addWrites("orvCore",
        [](QByteArray& data, char*, Number value, int offset) { Endian::WriteBytesLittleEndian(value, data, offset); });
    addWrites("Qt on the array",
        [](QByteArray& data, char*, Number value, int offset) { qToLittleEndian(value, data.data() + offset); });
    addWrites("Qt with a size check", [](QByteArray& data, char*, Number value, int offset) {
        if (offset >= 0 && offset <= data.size() - Width)
            qToLittleEndian(value, data.data() + offset);
    });
    addWrites("Qt on memory",
        [](QByteArray&, char* memory, Number value, int offset) { qToLittleEndian(value, memory + offset); });

    addReads("orvCore",
        [](const QByteArray& data, const char*, int offset) { return Endian::ToUInt64BigEndian(data, offset); });
    addReads("Qt with a size check", [](const QByteArray& data, const char*, int offset) {
        return offset >= 0 && offset <= data.size() - Width ? qFromBigEndian<Number>(data.constData() + offset) : 0;
    });
    addReads("Qt on memory",
        [](const QByteArray&, const char* memory, int offset) { return qFromBigEndian<Number>(memory + offset); });
}
