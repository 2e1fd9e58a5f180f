#include "Bench.h"

#include <Orv/Utility/SafeBase64.h>

using Orv::Utitlity::SafeBase64;

namespace {

template <class Work> void run(benchmark::State& state, const QByteArray& input, Work work)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(work(input));
    state.SetBytesProcessed(state.iterations() * input.size());
}

} // namespace

void addSafeBase64Rows()
{
    QByteArray bytes;
    for (unsigned i = 0; i < 1000000; ++i)
        bytes += static_cast<char>(i * 7919 >> 3); // covers every Base64 digit
    const QByteArray text = bytes.toBase64();
    const QByteArray safeText = SafeBase64(bytes).to();

    const auto add = [](const char* subject, const char* variant, const QByteArray& input, auto work) {
        addRow(subject, variant, [=](benchmark::State& state) { run(state, input, work); });
    };
    const char* const to = "Base64 encoding, 1 MB";
    add(to, "orvCore", bytes, [](const QByteArray& input) { return SafeBase64(input).to(); });
    add(to, "QByteArray::toBase64", bytes, [](const QByteArray& input) { return input.toBase64(); });
    const char* const from = "Base64 decoding, 1 MB";
    add(from, "orvCore", safeText, [](const QByteArray& input) { return SafeBase64(input).from(); });
    add(from, "QByteArray::fromBase64", text, [](const QByteArray& input) { return QByteArray::fromBase64(input); });
}
