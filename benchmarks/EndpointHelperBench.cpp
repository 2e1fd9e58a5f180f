#include "Bench.h"

#include <Orv/Utility/EndpointHelper.h>

#include <QUrl>

#include <array>

using Orv::Utitlity::EndpointHelper;

namespace {

const std::array<QString, 4> Addresses = {
    QStringLiteral("https://backup.example.org:8443/api/v2/"),
    QStringLiteral("backup.example.org"),
    QStringLiteral("user:secret@10.1.2.3:8080/some/path"),
    QStringLiteral("//server:443"),
};

} // namespace

void addEndpointHelperRows()
{
    addRow("addresses", "orvCore", [](benchmark::State& state) {
        for (auto _ : state) {
            for (const QString& address : Addresses)
                benchmark::DoNotOptimize(EndpointHelper(address, true).endpointWithScheme());
        }
        state.SetItemsProcessed(state.iterations() * int(Addresses.size()));
    });
    addRow("addresses", "QUrl::fromUserInput", [](benchmark::State& state) {
        for (auto _ : state) {
            for (const QString& address : Addresses)
                benchmark::DoNotOptimize(QUrl::fromUserInput(address).toString());
        }
        state.SetItemsProcessed(state.iterations() * int(Addresses.size()));
    });
}
