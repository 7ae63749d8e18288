// One commit of the development node, from the change until every subscriber that it concerns has been called, in
// nodes of several sizes.

#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <semaphore>
#include <string>
#include <vector>

#include "Defaults.h"
#include "ModelText.h"
#include "Services.h"

namespace {

using namespace TulNode;

const std::string transport = "ManagedElement=1,Transport=1";
constexpr const char* everyCategory = "^ManagedElement=.*,Transport=.*,DiffServCategory=.*$";
constexpr const char* noCategory = "^ManagedElement=.*,SystemFunctions=.*,SysM=.*,CliSsh=.*$";

std::string category(std::size_t number) {
    return transport + ",DiffServCategory=" + std::to_string(number);
}

/** Given for each call of a subscriber. */
std::counting_semaphore<> called(0);

BryReturnT notify(BryOamSpiEventConsumerHandleT, const char*, BryNameValuePairT**, void*) {
    called.release();
    return BRY_OK;
}

/** A node with so many MOs, and with subscribers of which some want what is changed and others do not. */
class SizedNode {
public:
    SizedNode(std::size_t mos, std::size_t matching, std::size_t others) : _mos(mos), _matching(matching) {
        applyModel(_services.transactions, defaultModel, "built-in model");
        const auto handle = _services.transactions.open(TUL_LOCK_POLICY_SHARED, 3600, "bench");
        for (std::size_t i = 0; i < mos; ++i) {
            _services.transactions.create(handle, category(i), dscp(0));
        }
        _services.transactions.commit(handle);
        _services.router.hold(false);
        subscribe(matching, _wanted);
        subscribe(others, _unwanted);
    }

    void changeOne() {
        ++_changes;
        const auto handle = _services.transactions.open(TUL_LOCK_POLICY_SHARED, 60, "bench");
        _services.transactions.set(handle, category(_changes % _mos), dscp(1 + (_changes / _mos) % 60));
        _services.transactions.commit(handle);
        for (std::size_t i = 0; i < _matching; ++i) {
            called.acquire();
        }
    }

private:
    static Attributes dscp(std::size_t value) {
        return {{"dscp", {TUL_MO_TYPE_UINT8_3, {static_cast<std::int64_t>(value)}}}};
    }

    void subscribe(std::size_t count, BryNameValuePairT** filter) {
        for (std::size_t i = 0; i < count; ++i) {
            _records.push_back(std::make_unique<BryOamSpiEventConsumerRecord>(BryOamSpiEventConsumerRecord{notify}));
            const auto handle = _services.router.registerConsumer(_records.back().get());
            _services.router.addSubscription(handle, BRY_OAM_SPI_CM_EVENT_NOTIFICATION_1, filter);
        }
    }

    BryNameValuePairT _every{BRY_OAM_SPI_CM_EVENT_FILTER_REG_EXP_1, everyCategory};
    BryNameValuePairT _none{BRY_OAM_SPI_CM_EVENT_FILTER_REG_EXP_1, noCategory};
    BryNameValuePairT* _wanted[2] = {&_every, nullptr};
    BryNameValuePairT* _unwanted[2] = {&_none, nullptr};
    std::size_t _mos;
    std::size_t _matching;
    std::size_t _changes = 0;
    std::vector<std::unique_ptr<BryOamSpiEventConsumerRecord>> _records;
    Services _services{""};  // in memory: a disk would hide what grows
};

/** Arguments: MOs, subscribers that match, and others. */
void commit(benchmark::State& state) {
    const auto argument = [&state](std::size_t position) { return static_cast<std::size_t>(state.range(position)); };
    // Kept for the repetitions: to make a large node takes long.
    static std::map<std::vector<std::size_t>, std::unique_ptr<SizedNode>> nodes;
    std::unique_ptr<SizedNode>& node = nodes[{argument(0), argument(1), argument(2)}];
    if (!node) {
        node = std::make_unique<SizedNode>(argument(0), argument(1), argument(2));
    }
    for ([[maybe_unused]] auto _ : state) {
        node->changeOne();
    }
}
BENCHMARK(commit)
    ->Args({100, 1, 0})
    ->Args({100'000, 1, 0})
    ->Args({100, 1000, 0})
    ->Args({100'000, 1000, 0})
    ->Args({100, 1, 999})
    ->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
