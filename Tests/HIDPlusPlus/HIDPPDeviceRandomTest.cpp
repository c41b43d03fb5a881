#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <thread>

#include <gtest/gtest.h>

#include "HIDPlusPlus/HIDPPDevice.h"
#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Platform/Dispatch/ManualDispatcher.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Platform/Simulated/SimulatedHIDTransport.h"
#include "Platform/Simulated/SimulatedMouse.h"
#include "RandomOperations.h"

namespace tessara {
namespace {

using namespace std::chrono_literals;

constexpr auto timeout = 100ms;
constexpr double timeoutSeconds = 0.1;

/// Lets something be wrong with the next reply: any fault, or a delay that is short or close to the
/// timeout.
void meddle(SimulatedMouse& mouse, Random& random) {
    using enum SimulatedMouse::Fault;
    constexpr SimulatedMouse::Fault faults[] = {noReply,           replyTwice, shortReply,
                                                wrongFeatureIndex, error10,    error20};
    if (below(random, 2) == 0) {
        mouse.injectFault(faults[below(random, std::size(faults))]);
    } else {
        // What is late is so by less than the pause that follows a timeout.
        mouse.setLateness(below(random, 2) == 0 ? below(random, 4) * 1ms
                                                : timeout + below(random, 30) * 1ms);
        mouse.injectFault(lateReply);
    }
}

/// Operations, faults, plugs, unplugs, connects and disconnects in any order, in virtual time.
class RandomSession {
  public:
    explicit RandomSession(std::uint64_t seed) : random_(seed) {
        device_->setDefaultTimeout(timeoutSeconds);
        subscription_ =
            device_->makeEventStream(caller_, [this](const HIDPPEvent& event) { listen(event); });
    }

    ~RandomSession() {
        subscription_.cancel();
        device_ = nullptr;
        dispatcher_.advance(5s);
        EXPECT_EQ(dispatcher_.pendingCount(), 0U);
        EXPECT_EQ(transport_.openInterfaceCount(), 0);
        // Nothing holds on to what it was called with.
        EXPECT_EQ(runLoop_.use_count(), 1);
    }

    void step() {
        if (operations_->outstanding() > 25) dispatcher_.advance(500ms);
        const auto choice = below(random_, 100);
        if (choice < 55) {
            if (below(random_, 100) < faultPercent_) meddle(mouse_, random_);
            operations_->beginAny(random_);
        } else if (choice < 75) {
            dispatcher_.advance(below(random_, 20'000) * 1us);
        } else if (choice < 79) {
            dispatcher_.advance(below(random_, 400) * 1ms);
        } else if (choice < 81) {
            transport_.unplug(mouse_);
        } else if (choice < 88) {
            transport_.plug(mouse_);
        } else if (choice < 89) {
            disconnect();
        } else if (choice < 95) {
            operations_->begin(device_->connect());
        } else if (choice < 97) {
            constexpr std::uint64_t rates[] = {0, 1, 5, 40};
            faultPercent_ = rates[below(random_, 4)];
        } else if (choice < 98) {
            transport_.refuseWrites(anyCount());
        } else if (choice < 99) {
            const bool isGranted = below(random_, 4) > 0;
            transport_.refuseOpens(anyCount());
            transport_.setListenEventAccess(isGranted ? HIDListenEventAccess::granted
                                                      : HIDListenEventAccess::denied);
        } else {
            mouse_.setRatchet(below(random_, 2) == 0);
        }
    }

    /// Ends all faults, waits until nothing goes on, and looks at everything.
    void settle() {
        faultPercent_ = 0;
        mouse_.clearFaults();
        transport_.refuseWrites(0);
        transport_.refuseOpens(0);
        transport_.setListenEventAccess(HIDListenEventAccess::granted);
        dispatcher_.advance(20s);
        EXPECT_EQ(operations_->outstanding(), 0) << "every operation ends exactly once";
        EXPECT_EQ(operations_->misdelivered, 0);
        EXPECT_FALSE(run(device_->isConnecting()));
        const auto state = run(device_->state());
        EXPECT_EQ(state, heardState_) << "the listeners know the state";
        EXPECT_EQ(transport_.openInterfaceCount(), state.isConnected()) << state.description();

        const auto connected = run(device_->connect());
        EXPECT_EQ(connected.has_value(), transport_.isPlugged(mouse_));
        if (!connected) return;
        const auto wanted = 200 + 50 * static_cast<std::int64_t>(below(random_, 500));
        EXPECT_EQ(run(device_->setDPI(wanted)), wanted);
        EXPECT_EQ(mouse_.dpi(), wanted);
        const auto counted = run(device_->transportStatistics());
        EXPECT_LE(counted->repliesMatched, counted->requestsSent);
    }

    int succeeded() const { return operations_->succeeded; }

  private:
    template <typename T>
    T run(asio::awaitable<T> operation) {
        std::optional<T> outcome;
        asio::co_spawn(caller_->executor(), keep(std::move(operation), outcome),
                       RethrowException());
        dispatcher_.advance(5s);
        return std::move(*outcome);
    }

    template <typename T>
    static asio::awaitable<void> keep(asio::awaitable<T> operation, std::optional<T>& outcome) {
        outcome = co_await std::move(operation);
    }

    void disconnect() {
        asio::co_spawn(caller_->executor(), device_->disconnect(), RethrowException());
    }

    std::int64_t anyCount() { return static_cast<std::int64_t>(below(random_, 3)); }

    void listen(const HIDPPEvent& event) {
        if (const auto* changed = std::get_if<HIDPPEvent::StateChanged>(&event.value)) {
            EXPECT_NE(changed->state, heardState_) << "a change that changes nothing";
            heardState_ = changed->state;
        } else if (event.is<HIDPPEvent::DeviceReady>()) {
            EXPECT_TRUE(heardState_.isConnected());
        }
    }

    Random random_;
    ManualDispatcher dispatcher_;
    SimulatedMouse mouse_;
    SimulatedHIDTransport transport_;
    std::uint64_t faultPercent_ = 0;
    std::shared_ptr<HIDPPRunLoop> runLoop_ =
        std::make_shared<HIDPPRunLoop>(dispatcher_, transport_);
    std::shared_ptr<DispatchQueue> caller_ =
        dispatcher_.makeQueue("caller", QualityOfService::standard);
    std::unique_ptr<HIDPPDevice> device_ =
        std::make_unique<HIDPPDevice>(HIDPPDeviceMatch::g502X, runLoop_);
    std::shared_ptr<RandomOperations> operations_ =
        std::make_shared<RandomOperations>(*device_, caller_);
    EventSubscription subscription_;
    HIDPPConnectionState heardState_;
};

TEST(HIDPPDeviceRandom, whatever_happens_every_operation_ends_once_and_with_its_own_reply) {
    constexpr int sessions = 10;
    constexpr int settlements = 20;
    constexpr int stepsBetween = 500;
    int succeeded = 0;
    for (std::uint64_t seed = 1; seed <= sessions; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomSession session(seed);
        for (int settlement = 0; settlement < settlements; ++settlement) {
            for (int i = 0; i < stepsBetween; ++i)
                session.step();
            session.settle();
            if (::testing::Test::HasFailure()) return;
        }
        succeeded += session.succeeded();
    }
    // The session is about a mouse that works now and then, not about one that never does.
    EXPECT_GT(succeeded, sessions * settlements * stepsBetween / 10);
    RecordProperty("succeeded", succeeded);
}

/// The same on real threads, so that the thread sanitizer sees what races with what.
TEST(HIDPPDeviceRandom, operations_plugs_and_disconnects_race_on_real_threads) {
    ThreadedDispatcher dispatcher;
    SimulatedMouse mouse;
    SimulatedHIDTransport transport;
    auto runLoop = std::make_shared<HIDPPRunLoop>(dispatcher, transport);
    const auto linkQueue = runLoop->queue();
    {
        HIDPPDevice device(HIDPPDeviceMatch::g502X, runLoop);
        device.setDefaultTimeout(0.02);
        std::vector<std::shared_ptr<DispatchQueue>> callers;
        std::vector<std::shared_ptr<RandomOperations>> operations;
        for (int i = 0; i < 3; ++i) {
            callers.push_back(dispatcher.makeQueue("caller", QualityOfService::standard));
            operations.push_back(std::make_shared<RandomOperations>(device, callers.back()));
        }
        std::atomic<int> heard = 0;
        auto subscription = device.makeEventStream(callers[0], [&](const HIDPPEvent&) { ++heard; });

        Random random(1);
        for (int round = 0; round < 40; ++round) {
            transport.plug(mouse);
            operations[0]->begin(device.connect());
            for (int i = 0; i < 30; ++i) {
                if (below(random, 100) == 0) meddle(mouse, random);
                operations[below(random, operations.size())]->beginAny(random);
            }
            // Without a wait the plug would be over before anything is under way.
            if (round % 2 == 0) callers[1]->drain();
            if (round % 4 == 3) {
                asio::co_spawn(callers[2]->executor(), device.disconnect(), RethrowException());
            }
            transport.unplug(mouse);
        }
        for (const auto& some : operations) {
            while (some->outstanding() > 0)
                std::this_thread::yield();
            EXPECT_EQ(some->misdelivered, 0);
        }
        // A mouse that stays is connected to in the end, however the race went.
        mouse.clearFaults();
        transport.plug(mouse);
        operations[0]->begin(device.connect());
        while (operations[0]->outstanding() > 0 || heard == 0)
            std::this_thread::yield();
        transport.unplug(mouse);
    }
    // The last words of device and link are spoken on their queues.
    linkQueue->drain();
}

}  // namespace
}  // namespace tessara
