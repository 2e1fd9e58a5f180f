#include "Bench.h"

#include <Orv/Core/LiveHashTree.h>

#include <QCryptographicHash>

using Orv::Core::MD5LiveHashTree;

namespace {

void runTree(benchmark::State& state, int leaves)
{
    const QByteArray leaf(16, 'l');
    for (auto _ : state) {
        MD5LiveHashTree tree;
        for (int i = 0; i < leaves; ++i)
            tree.addNextHash(leaf);
        tree.finish();
        benchmark::DoNotOptimize(tree.getFinalHash());
    }
    state.SetItemsProcessed(state.iterations() * leaves);
}

/// A tree of n leaves has n - 1 inner nodes: so many digests of two hashes one after the other.
void runBareMd5(benchmark::State& state, int leaves)
{
    const QByteArray left(16, 'l');
    const QByteArray right(16, 'r');
    for (auto _ : state) {
        for (int i = 1; i < leaves; ++i) {
            QCryptographicHash hash(QCryptographicHash::Md5);
            hash.addData(left);
            hash.addData(right);
            benchmark::DoNotOptimize(hash.result());
        }
    }
    state.SetItemsProcessed(state.iterations() * leaves);
}

} // namespace

void addLiveHashTreeRows()
{
    addRow("hash tree, a million leaves", "orvCore", [](benchmark::State& state) { runTree(state, 1000000); });
    addRow("hash tree, a million leaves", "bare MD5", [](benchmark::State& state) { runBareMd5(state, 1000000); });
    for (const int leaves : {10000, 100000, 1000000, 10000000})
        addRow("growth: hash tree of " + std::to_string(leaves) + " leaves", "orvCore",
            [leaves](benchmark::State& state) { runTree(state, leaves); });
}
