#include <chrono>
#include <limits>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Platform/Simulated/SimulatedDesktop.h"
#include "Support/ProcessResources.h"
#include "Support/TestDispatcher.h"
#include "TessaraEngine/EventTapController.h"

namespace tessara {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using StartError = EventTapController::StartError;

class EventTapControllerTest : public testing::VirtualTimeTest {
  protected:
    EventTapControllerTest() {
        desktop.workspace().bringToFront(application);
        makeTap();
    }

    void makeTap() {
        tap = std::make_unique<EventTapController>(
            EventTapController::Configuration{}, desktop.taps(), dispatcher,
            [this](TapDisableReason reason) { reasons.push_back(reason); },
            [this](CGEventType, CGEvent& event) { return onEvent(event); });
    }

    /// One event of the mouse; whether the application received it as the mouse sent it.
    bool passesUntouched() {
        desktop.events().takeJournal();
        mouse.spin(1);
        dispatcher.runReady();
        const auto journal = desktop.events().takeJournal();
        return journal.size() == 1 && journal.front().delivered == journal.front().entered;
    }

    SimulatedDesktop desktop{dispatcher};
    SimulatedApplication& application = desktop.workspace().install("org.example.a", "A");
    SimulatedPointingDevice& mouse = desktop.attachTargetMouse();
    std::vector<TapDisableReason> reasons;
    int handled = 0;
    std::function<TapVerdict(CGEvent&)> onEvent = [this](CGEvent&) {
        ++handled;
        return TapVerdict::pass;
    };
    std::unique_ptr<EventTapController> tap;
};

TEST(EventTapController, masks_have_one_bit_per_type_and_none_for_the_notices) {
    EXPECT_EQ(EventTapController::scrollAndButtonEventMask, 0x640001EU);
    EXPECT_EQ(EventTapController::pointerMotionEventMask, 0x80000E0U);
    EXPECT_EQ(EventTapController::defaultEventMask, 0xE4000FEU);
    EXPECT_EQ(EventTapController::eventMask(
                  {CGEventType{63}, CGEventType{64}, CGEventType::tapDisabledByTimeout}),
              std::uint64_t{1} << 63);
}

TEST_F(EventTapControllerTest, events_take_the_way_that_the_handler_says) {
    ASSERT_TRUE(tap->start());
    EXPECT_TRUE(tap->isRunning());
    EXPECT_TRUE(tap->isTapEnabled());
    EXPECT_TRUE(passesUntouched());

    onEvent = [](CGEvent&) { return TapVerdict::suppress; };
    mouse.spin(1);
    onEvent = [](CGEvent& event) {
        event.flags = 7;
        return TapVerdict::pass;
    };
    application.takeReceived();
    mouse.spin(1);
    dispatcher.runReady();
    const auto received = application.takeReceived();
    ASSERT_EQ(received.size(), 2U);
    EXPECT_EQ(received.back().flags, 7U);
    EXPECT_EQ(tap->snapshotMetrics().events, 3);

    tap->stop();
    EXPECT_FALSE(tap->isRunning());
    EXPECT_FALSE(tap->isTapEnabled());
    EXPECT_TRUE(passesUntouched());
    EXPECT_EQ(tap->snapshotMetrics().events, 3);
    tap->resetMetrics();
    EXPECT_EQ(tap->snapshotMetrics(), TapMetrics{});
}

TEST_F(EventTapControllerTest, a_start_that_fails_says_why_and_leaves_nothing_running) {
    desktop.permissions().revokeAccessibility();
    const auto failed = tap->start();
    ASSERT_FALSE(failed);
    EXPECT_EQ(EventTapController::description(failed.error()),
              "CGEvent.tapCreate returned nil — Accessibility (and Input Monitoring) must be "
              "granted");
    EXPECT_FALSE(tap->isRunning());
    EXPECT_FALSE(tap->isTapEnabled());
    EXPECT_FALSE(tap->perform([] {}));

    desktop.permissions().grantAccessibility();
    ASSERT_TRUE(tap->start());
    const auto again = tap->start();
    ASSERT_FALSE(again);
    EXPECT_EQ(again.error(), StartError::alreadyRunning);
    EXPECT_EQ(EventTapController::description(again.error()), "the tap is already running");
    EXPECT_TRUE(passesUntouched());
    EXPECT_EQ(handled, 1) << "the first start is unaffected";
}

TEST_F(EventTapControllerTest, a_tap_that_the_system_disables_is_back_at_once) {
    ASSERT_TRUE(tap->start());
    desktop.disableTapsByTimeout();
    EXPECT_FALSE(tap->isTapEnabled());
    dispatcher.runReady();
    EXPECT_TRUE(tap->isTapEnabled());
    desktop.disableTapsByUserInput();
    dispatcher.runReady();
    EXPECT_TRUE(tap->isTapEnabled());
    EXPECT_THAT(reasons, ElementsAre(TapDisableReason::timeout, TapDisableReason::userInput));
    EXPECT_EQ(tap->snapshotMetrics(),
              (TapMetrics{.disabledByTimeout = 1, .disabledByUserInput = 1, .reEnables = 2}));
    EXPECT_TRUE(passesUntouched());
    EXPECT_EQ(handled, 1);
}

TEST_F(EventTapControllerTest, a_notice_that_comes_after_the_stop_does_not_revive_the_tap) {
    ASSERT_TRUE(tap->start());
    desktop.disableTapsByTimeout();
    tap->stop();
    dispatcher.runReady();
    EXPECT_FALSE(tap->isTapEnabled());
    EXPECT_THAT(reasons, IsEmpty());
}

TEST_F(EventTapControllerTest, a_callback_of_exactly_the_budget_is_no_overrun) {
    nanoseconds takes{};
    onEvent = [&](CGEvent&) {
        dispatcher.advance(takes);
        return TapVerdict::suppress;
    };
    EXPECT_EQ(tap->snapshotMetrics().meanCallbackMicros(), 0);
    EXPECT_EQ(tap->snapshotMetrics().watchdogHeadroomFactor(),
              std::numeric_limits<double>::infinity());
    CGEvent event;
    constexpr nanoseconds budget = milliseconds(2);
    for (const nanoseconds length :
         {budget - nanoseconds(1), budget, budget + nanoseconds(1), budget}) {
        takes = length;
        EXPECT_FALSE(tap->dispatch(CGEventType::scrollWheel, event));
    }
    const TapMetrics metrics = tap->snapshotMetrics();
    EXPECT_EQ(metrics, (TapMetrics{.events = 4,
                                   .maxCallbackNanos = 2'000'001,
                                   .totalCallbackNanos = 8'000'000,
                                   .budgetOverruns = 1,
                                   .worstOverrunNanos = 2'000'001}));
    EXPECT_DOUBLE_EQ(metrics.meanCallbackMicros(), 2000);
    EXPECT_DOUBLE_EQ(metrics.watchdogHeadroomFactor(), 1e9 / 2'000'001);
}

TEST_F(EventTapControllerTest, performed_blocks_run_on_the_tap_thread_between_two_callbacks) {
    ASSERT_TRUE(tap->start());
    std::vector<int> order;
    onEvent = [&](CGEvent&) {
        EXPECT_TRUE(EventTapController::isOnTapThread());
        order.push_back(1);
        EXPECT_TRUE(tap->perform([&] { order.push_back(2); }));
        order.push_back(3);
        return TapVerdict::pass;
    };
    mouse.spin(1);
    dispatcher.runReady();
    EXPECT_THAT(order, ElementsAre(1, 3, 2));
    EXPECT_FALSE(EventTapController::isOnTapThread());

    std::optional<bool> wasOnTapThread;
    tap->perform([&] { wasOnTapThread = EventTapController::isOnTapThread(); });
    tap->stop();
    EXPECT_FALSE(tap->perform([&] { ADD_FAILURE() << "there is no tap thread any more"; }));
    dispatcher.runReady();
    EXPECT_EQ(wasOnTapThread, true) << "what was performed before the stop still runs";
}

TEST_F(EventTapControllerTest, a_handler_may_stop_its_tap_or_end_its_controller) {
    ASSERT_TRUE(tap->start());
    onEvent = [&](CGEvent&) {
        tap->stop();
        return TapVerdict::pass;
    };
    EXPECT_TRUE(passesUntouched());
    EXPECT_FALSE(tap->isTapEnabled());

    makeTap();
    ASSERT_TRUE(tap->start());
    onEvent = [&](CGEvent&) {
        tap.reset();
        return TapVerdict::pass;
    };
    EXPECT_TRUE(passesUntouched());
    EXPECT_EQ(desktop.taps().count(), 0U);
    EXPECT_TRUE(passesUntouched());
}

TEST(EventTapControllerThreads, starts_stops_and_events_race_and_every_event_arrives) {
    constexpr int eventCount = 2000;
    const testing::NoLeakedResources nothingLeaks;
    ThreadedDispatcher dispatcher;
    SimulatedDesktop desktop(dispatcher);
    SimulatedPointingDevice& mouse = desktop.attachTargetMouse();
    {
        const std::jthread hand([&] {
            for (int i = 0; i < eventCount; ++i)
                mouse.spin(1);
        });
        for (int round = 0; round < 60; ++round) {
            int handled = 0;  // goes with the controller: a late callback would write to it
            int disabled = 0;
            EventTapController tap(
                {}, desktop.taps(), dispatcher, [&](TapDisableReason) { ++disabled; },
                [&](CGEventType, CGEvent&) {
                    ++handled;
                    return TapVerdict::pass;
                });
            ASSERT_TRUE(tap.start());
            if (round % 3 == 0) desktop.disableTapsByTimeout();
            tap.perform([&] { ++handled; });
            if (round % 2 == 0) {
                tap.stop();
                tap.drain();
                EXPECT_GE(handled, 1) << "drained, the performed block has run";
                EXPECT_FALSE(tap.isTapEnabled());
            }
        }
    }
    desktop.settle();
    const auto journal = desktop.events().takeJournal();
    EXPECT_EQ(journal.size(), std::size_t{eventCount});
    for (const SimulatedPassage& passage : journal)
        ASSERT_EQ(passage.delivered, passage.entered);
}

}  // namespace
}  // namespace tessara
