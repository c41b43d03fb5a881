#include <chrono>
#include <future>
#include <memory>
#include <optional>
#include <thread>

#include <gtest/gtest.h>

#include "FakeHIDTransport.h"
#include "HIDPlusPlus/HIDPPDevice.h"
#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Platform/Dispatch/ManualDispatcher.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "RandomMouse.h"

namespace tessara {
namespace {

using namespace std::chrono_literals;

constexpr auto timeout = 100ms;
constexpr double timeoutSeconds = 0.1;

/// Operations, faults, plugs, unplugs, connects and disconnects in any order, in virtual time.
class RandomSession {
  public:
    explicit RandomSession(std::uint64_t seed)
        : random_(seed), mouse_(transport_, runLoop_->queue(), seed + 1, timeout) {
        device_->setDefaultTimeout(timeoutSeconds);
        subscription_ =
            device_->makeEventStream(caller_, [this](const HIDPPEvent& event) { listen(event); });
    }

    ~RandomSession() {
        subscription_.cancel();
        device_ = nullptr;
        dispatcher_.advance(5s);
        EXPECT_EQ(transport_.watchCount(), 0U);
        EXPECT_EQ(dispatcher_.pendingCount(), 0U);
        EXPECT_TRUE(!mouse_.mouse.interface || !mouse_.mouse.interface->isOpen);
        // Nothing holds on to what it was called with.
        EXPECT_EQ(runLoop_.use_count(), 1);
    }

    void step() {
        if (operations_->outstanding() > 25) dispatcher_.advance(500ms);
        const auto choice = below(random_, 100);
        if (choice < 55) {
            operations_->beginAny(random_);
        } else if (choice < 75) {
            dispatcher_.advance(below(random_, 20'000) * 1us);
        } else if (choice < 79) {
            dispatcher_.advance(below(random_, 400) * 1ms);
        } else if (choice < 81) {
            if (isPlugged_) mouse_.mouse.unplug();
            isPlugged_ = false;
        } else if (choice < 88) {
            if (!isPlugged_) mouse_.plug();
            isPlugged_ = true;
        } else if (choice < 89) {
            disconnect();
        } else if (choice < 95) {
            operations_->begin(device_->connect());
        } else if (choice < 97) {
            constexpr std::uint64_t rates[] = {0, 1, 5, 40};
            mouse_.faultPercent = rates[below(random_, 4)];
        } else if (choice < 98) {
            setWriteResult(anyResult());
        } else if (choice < 99) {
            setOpenResult(anyResult());
        } else if (isPlugged_) {
            mouse_.mouse.send({0x11, 0xFF, 5, 0x10, 1});
        }
    }

    /// Ends all faults, waits until nothing goes on, and looks at everything.
    void settle() {
        mouse_.faultPercent = 0;
        setWriteResult(IOReturn::success);
        setOpenResult(IOReturn::success);
        dispatcher_.advance(20s);
        EXPECT_EQ(operations_->outstanding(), 0) << "every operation ends exactly once";
        EXPECT_EQ(operations_->misdelivered, 0);
        EXPECT_FALSE(run(device_->isConnecting()));
        const auto state = run(device_->state());
        EXPECT_EQ(state, heardState_) << "the listeners know the state";
        const bool isOpen = isPlugged_ && mouse_.mouse.interface->isOpen;
        EXPECT_EQ(state.isConnected(), isOpen) << state.description();
        EXPECT_LE(transport_.watchCount(), 1U);

        const auto connected = run(device_->connect());
        EXPECT_EQ(connected.has_value(), isPlugged_);
        if (!isPlugged_) return;
        const auto wanted = 200 + 50 * static_cast<std::int64_t>(below(random_, 500));
        EXPECT_EQ(run(device_->setDPI(wanted)), wanted);
        EXPECT_EQ(mouse_.dpi, wanted);
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

    IOReturn anyResult() {
        constexpr IOReturn failures[] = {IOReturn::notPermitted, IOReturn::noDevice,
                                         IOReturn::exclusiveAccess, IOReturn::timeout};
        return below(random_, 4) > 0 ? IOReturn::success
                                     : failures[below(random_, std::size(failures))];
    }

    void setOpenResult(IOReturn result) {
        mouse_.mouse.openResult = result;
        if (mouse_.mouse.interface) mouse_.mouse.interface->openResult = result;
    }

    void setWriteResult(IOReturn result) {
        if (mouse_.mouse.interface) mouse_.mouse.interface->writeResult = result;
    }

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
    FakeHIDTransport transport_;
    std::shared_ptr<HIDPPRunLoop> runLoop_ =
        std::make_shared<HIDPPRunLoop>(dispatcher_, transport_);
    RandomMouse mouse_;
    bool isPlugged_ = false;
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
    FakeHIDTransport transport;
    auto runLoop = std::make_shared<HIDPPRunLoop>(dispatcher, transport);
    const auto linkQueue = runLoop->queue();
    RandomMouse mouse(transport, linkQueue, 1, timeout);
    mouse.faultPercent = 1;
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
            linkQueue->post([&] { mouse.plug(); });
            operations[0]->begin(device.connect());
            for (int i = 0; i < 30; ++i) {
                operations[below(random, operations.size())]->beginAny(random);
            }
            // Without a wait the plug would be over before anything is under way.
            if (round % 2 == 0) callers[1]->drain();
            if (round % 4 == 3) {
                asio::co_spawn(callers[2]->executor(), device.disconnect(), RethrowException());
            }
            linkQueue->post([&] { mouse.mouse.unplug(); });
        }
        for (const auto& some : operations) {
            while (some->outstanding() > 0)
                std::this_thread::yield();
            EXPECT_EQ(some->misdelivered, 0);
        }
        EXPECT_GT(heard, 0);
    }
    // The last words of device and link are spoken on their queues.
    linkQueue->drain();
}

}  // namespace
}  // namespace tessara
