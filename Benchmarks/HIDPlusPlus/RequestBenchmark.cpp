// What the client adds to a device's own answer time: one request and its reply beside a bare write
// and read on the same transport, and what it takes to connect. The argument is the time the device
// takes to answer, in microseconds: 0 shows all of what the client costs, 1000 is what a mouse that
// is polled a thousand times a second takes at least.

#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <semaphore>
#include <span>
#include <utility>
#include <vector>

#include <asio/any_io_executor.hpp>
#include <asio/co_spawn.hpp>
#include <benchmark/benchmark.h>

#include "FakeHIDTransport.h"
#include "HIDPlusPlus/HIDPPDevice.h"
#include "HIDPlusPlus/HIDPPLink.h"
#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Platform/Dispatch/Awaitables.h"
#include "Platform/Dispatch/ManualDispatcher.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "ScriptedMouse.h"

namespace tessara {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// A mouse on a transport whose queues have threads of their own, as in the product.
class ThreadedMouse {
  public:
    explicit ThreadedMouse(std::chrono::microseconds answerTime) {
        mouse.keepsRequests = false;
        mouse.replyDelay = answerTime;
        onLinkQueue([this] { mouse.plug(); });
    }

    /// Runs something on the link queue and waits for it.
    void onLinkQueue(DispatchQueue::Block block) {
        runLoop->perform(std::move(block));
        runLoop->queue()->drain();
    }

    ThreadedDispatcher dispatcher;
    FakeHIDTransport transport;
    std::shared_ptr<HIDPPRunLoop> runLoop = std::make_shared<HIDPPRunLoop>(dispatcher, transport);
    ScriptedMouse mouse{transport, runLoop->queue()};
};

/// Writes a ping `write`'s way and waits until its reply is there, again and again.
void writeAndRead(benchmark::State& state,
                  const std::function<void(ThreadedMouse&, DispatchQueue::Block)>& write) {
    ThreadedMouse threaded{std::chrono::microseconds(state.range(0))};
    auto& interface = *threaded.mouse.interface;
    std::binary_semaphore answered(0);
    threaded.onLinkQueue([&] {
        static_cast<void>(interface.open());
        interface.startInput(
            threaded.runLoop->queue(),
            [&](std::uint8_t, std::span<const std::uint8_t>) { answered.release(); });
    });
    const Bytes ping{0x10, 0xFF, 0, 0x11, 0, 0, 0x5A};
    for (auto _ : state) {
        write(threaded, [&] { static_cast<void>(interface.writeReport(0x10, ping)); });
        answered.acquire();
    }
    threaded.onLinkQueue([&] { interface.close(); });
}

/// The floor: write here, and wait.
void bareWriteAndRead(benchmark::State& state) {
    writeAndRead(state, [](ThreadedMouse&, DispatchQueue::Block write) { write(); });
}

/// The floor for a client with one thread for its state that must not be the one that writes: the
/// same by way of these two, which change four times instead of twice.
void bareByWayOfTwoQueues(benchmark::State& state) {
    const std::shared_ptr<DispatchQueue> sendQueue =
        ThreadedDispatcher().makeQueue("send", QualityOfService::userInitiated);
    writeAndRead(state, [&](ThreadedMouse& threaded, DispatchQueue::Block write) {
        threaded.runLoop->perform([&sendQueue, write = std::move(write)]() mutable {
            sendQueue->post(std::move(write));
        });
    });
}

/// The link alone: from a request on its queue to the completion there.
void linkRequest(benchmark::State& state) {
    ThreadedMouse threaded{std::chrono::microseconds(state.range(0))};
    const auto link = std::make_shared<HIDPPLink>(threaded.runLoop, threaded.mouse.interface);
    threaded.onLinkQueue([&] { static_cast<void>(link->open()); });
    std::binary_semaphore answered(0);
    for (auto _ : state) {
        threaded.runLoop->perform([&] {
            link->enqueue({.deviceIndex = 0xFF,
                           .function = 1,
                           .parameters = {0, 0, 0x5A},
                           .timeout = 1,
                           .label = "ping"},
                          [&](const HIDPPLink::Reply& reply) {
                              if (!reply) state.SkipWithError("no reply");
                              answered.release();
                          });
        });
        answered.acquire();
    }
    threaded.onLinkQueue([&] { link->close(); });
}

/// A coroutine of another queue that asks one thing after the other, as the program does.
asio::awaitable<void> askAgainAndAgain(HIDPPDevice& device, benchmark::State& state) {
    const auto connected = co_await device.connect();
    if (!connected) state.SkipWithError("not connected");
    for (auto _ : state) {
        const auto version = co_await device.ping();
        if (!version) state.SkipWithError("no reply");
    }
}

void deviceRequest(benchmark::State& state) {
    ThreadedMouse threaded{std::chrono::microseconds(state.range(0))};
    const auto caller = threaded.dispatcher.makeQueue("caller", QualityOfService::standard);
    {
        HIDPPDevice device(HIDPPDeviceMatch::g502X, threaded.runLoop);
        std::binary_semaphore ended(0);
        asio::co_spawn(caller->executor(), askAgainAndAgain(device, state),
                       [&](std::exception_ptr) { ended.release(); });
        ended.acquire();
        asio::co_spawn(caller->executor(), device.disconnect(),
                       [&](std::exception_ptr) { ended.release(); });
        ended.acquire();
    }
    threaded.runLoop->queue()->drain();
}

BENCHMARK(bareWriteAndRead)->Arg(0)->Arg(1000)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(bareByWayOfTwoQueues)->Arg(0)->Arg(1000)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(linkRequest)->Arg(0)->Arg(1000)->UseRealTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(deviceRequest)->Arg(0)->Arg(1000)->UseRealTime()->Unit(benchmark::kMicrosecond);

/// Connecting in virtual time, to a mouse with that many features: what the client itself takes,
/// and how many exchanges it makes beside how many there have to be (ping, place and size of the
/// table, and each of its rows).
void connecting(benchmark::State& state) {
    ManualDispatcher dispatcher;
    FakeHIDTransport transport;
    const auto runLoop = std::make_shared<HIDPPRunLoop>(dispatcher, transport);
    ScriptedMouse mouse(transport, runLoop->queue());
    mouse.table.resize(static_cast<std::size_t>(state.range(0)), 0x18B1);
    mouse.plug();
    const auto caller = dispatcher.makeQueue("caller", QualityOfService::standard);
    HIDPPDevice device(HIDPPDeviceMatch::g502X, runLoop);
    std::size_t exchanges = 0;
    for (auto _ : state) {
        bool isConnected = false;
        asio::co_spawn(caller->executor(), device.connect(),
                       [&](std::exception_ptr, const HIDPPResult<void>& result) {
                           isConnected = result.has_value();
                       });
        dispatcher.runReady();
        if (!isConnected) state.SkipWithError("not connected");
        state.PauseTiming();
        exchanges = mouse.takeRequests().size();
        asio::co_spawn(caller->executor(), device.disconnect(), [](std::exception_ptr) {});
        dispatcher.runReady();
        state.ResumeTiming();
    }
    state.counters["exchanges"] = static_cast<double>(exchanges);
    state.counters["needed"] = static_cast<double>(3 + mouse.table.size());
}

BENCHMARK(connecting)->Arg(9)->Arg(30)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tessara
