#include "Bench.h"

#include <Orv/Utility/Endian.h>

#include <QtEndian>

using Orv::Utitlity::Endian;

namespace {

constexpr int Count = 1000000;
constexpr int Width = 8; // bytes

void setItems(benchmark::State& state)
{
    state.SetItemsProcessed(state.iterations() * Count);
}

} // namespace

void addEndianRows()
{
    const std::string write = "a million 64-bit writes, little-endian";
    addRow(write, "orvCore", [](benchmark::State& state) {
        QByteArray data(Count * Width, '\0');
        for (auto _ : state) {
            for (int i = 0; i < Count; ++i)
                Endian::WriteBytesLittleEndian(static_cast<unsigned long long>(i), data, i * Width);
            benchmark::ClobberMemory();
        }
        setItems(state);
    });
    addRow(write, "Qt on the array", [](benchmark::State& state) {
        QByteArray data(Count * Width, '\0');
        for (auto _ : state) {
            for (int i = 0; i < Count; ++i)
                qToLittleEndian(static_cast<unsigned long long>(i), data.data() + i * Width);
            benchmark::ClobberMemory();
        }
        setItems(state);
    });
    // What whoever cannot trust the offset has to ask
    addRow(write, "Qt, asking the size", [](benchmark::State& state) {
        QByteArray data(Count * Width, '\0');
        for (auto _ : state) {
            for (int i = 0; i < Count; ++i)
                if (i * Width + Width <= data.size())
                    qToLittleEndian(static_cast<unsigned long long>(i), data.data() + i * Width);
            benchmark::ClobberMemory();
        }
        setItems(state);
    });
    // Without the array in between, the compiler makes the loop one of vector stores.
    addRow(write, "Qt on memory", [](benchmark::State& state) {
        QByteArray data(Count * Width, '\0');
        char* const place = data.data();
        for (auto _ : state) {
            for (int i = 0; i < Count; ++i)
                qToLittleEndian(static_cast<unsigned long long>(i), place + i * Width);
            benchmark::ClobberMemory();
        }
        setItems(state);
    });

    const std::string read = "a million 64-bit reads, big-endian";
    addRow(read, "orvCore", [](benchmark::State& state) {
        const QByteArray data(Count * Width, 'x');
        for (auto _ : state) {
            unsigned long long sum = 0;
            for (int i = 0; i < Count; ++i)
                sum += Endian::ToUInt64BigEndian(data, i * Width);
            benchmark::DoNotOptimize(sum);
        }
        setItems(state);
    });
    addRow(read, "Qt, asking the size", [](benchmark::State& state) {
        const QByteArray data(Count * Width, 'x');
        for (auto _ : state) {
            unsigned long long sum = 0;
            for (int i = 0; i < Count; ++i)
                if (i * Width + Width <= data.size())
                    sum += qFromBigEndian<unsigned long long>(data.constData() + i * Width);
            benchmark::DoNotOptimize(sum);
        }
        setItems(state);
    });
    addRow(read, "Qt on memory", [](benchmark::State& state) {
        const QByteArray data(Count * Width, 'x');
        const char* const place = data.constData();
        for (auto _ : state) {
            unsigned long long sum = 0;
            for (int i = 0; i < Count; ++i)
                sum += qFromBigEndian<unsigned long long>(place + i * Width);
            benchmark::DoNotOptimize(sum);
        }
        setItems(state);
    });
}
