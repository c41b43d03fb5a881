#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Platform/Simulated/SimulatedDesktop.h"

namespace tessara::testing {
namespace {

constexpr std::int64_t tag = 0x7461'6700;
constexpr int steps = 500;

/// Answers each wheel event with two posts of its own, after the manner of the program.
class Answerer {
  public:
    explicit Answerer(SimulatedDesktop& desktop) : desktop_(desktop) {}

    bool handle(CGEventType type, const CGEvent& event) {
        if (type == CGEventType::tapDisabledByTimeout) {
            notices_.fetch_add(1);
            tap_->setEnabled(true);
            return true;
        }
        if (type != CGEventType::scrollWheel) return true;
        if (event.integerValue(CGEventField::eventSourceUserData) == tag) return true;
        for (int half = 0; half < 2; ++half) {
            CGEvent answer = event;
            answer.hidEventReference = 0;
            answer.setIntegerValue(CGEventField::eventSourceUserData, tag);
            answer.setIntegerValue(CGEventField::scrollWheelEventDeltaAxis2, half);
            desktop_.eventServices().post(answer, CGEventTapLocation::session);
        }
        return false;
    }

    void install(const std::shared_ptr<DispatchQueue>& queue) {
        queue->post([this, queue] {
            tap_ = desktop_.taps().makeTap(
                {.eventsOfInterest = ~std::uint64_t{0}}, queue,
                [this](CGEventType type, CGEvent& event) { return handle(type, event); });
            tap_->setEnabled(true);
        });
        queue->drain();
    }

    [[nodiscard]] std::int64_t notices() const { return notices_.load(); }

  private:
    SimulatedDesktop& desktop_;
    std::unique_ptr<EventTap> tap_;  // written before the first event, read on the tap's queue
    std::atomic<std::int64_t> notices_{0};
};

TEST(SimulatedDesktopThreads, every_event_comes_out_once_and_in_order_while_all_act_at_once) {
    ThreadedDispatcher dispatcher;
    SimulatedDesktop desktop(dispatcher);
    auto& editor = desktop.workspace().install("org.example.editor", "Editor");
    auto& browser = desktop.workspace().install("org.example.browser", "Browser");
    auto& mouse = desktop.attachTargetMouse();
    desktop.workspace().bringToFront(editor);

    const auto tapQueue = dispatcher.makeQueue("test.tap", QualityOfService::userInteractive);
    Answerer answerer(desktop);
    answerer.install(tapQueue);

    std::vector<std::thread> hands;
    hands.emplace_back([&] {
        for (int step = 1; step <= steps; ++step)
            mouse.spin(step);
    });
    hands.emplace_back([&] {
        for (int step = 0; step < steps; ++step)
            desktop.keyboard().strike(static_cast<std::uint16_t>(step % 40));
    });
    hands.emplace_back([&] {
        for (int step = 0; step < steps / 10; ++step) {
            desktop.disableTapsByTimeout();
            desktop.workspace().bringToFront(step % 2 == 0 ? browser : editor);
            tapQueue->drain();
        }
    });
    hands.emplace_back([&] {
        for (int step = 0; step < steps / 10; ++step) {
            // Both the tap and its queue go while events are on their way to them.
            const auto queue = dispatcher.makeQueue("test.brief", QualityOfService::standard);
            std::unique_ptr<EventTap> brief;
            queue->post([&] {
                brief = desktop.taps().makeTap(
                    {.location = CGEventTapLocation::hid, .eventsOfInterest = ~std::uint64_t{0}},
                    queue, [](CGEventType, CGEvent&) { return true; });
                brief->setEnabled(true);
            });
            queue->drain();
        }
    });
    for (auto& hand : hands)
        hand.join();
    desktop.settle();

    struct Fate {
        bool isDelivered = false;
        std::vector<std::int64_t> halves;
    };
    std::map<std::int64_t, Fate> fates;
    std::size_t delivered = 0;
    std::int64_t lastSpun = 0;
    for (const auto& passage : desktop.events().journal()) {
        if (passage.delivered) {
            ++delivered;
            EXPECT_EQ(*passage.delivered, passage.entered);
        }
        if (passage.entered.type != CGEventType::scrollWheel) continue;
        const auto number = passage.entered.integerValue(CGEventField::scrollWheelEventDeltaAxis1);
        if (passage.isPosted) {
            fates[number].halves.push_back(
                passage.entered.integerValue(CGEventField::scrollWheelEventDeltaAxis2));
        } else {
            EXPECT_EQ(number, ++lastSpun);
            fates[number].isDelivered = passage.delivered.has_value();
        }
    }

    EXPECT_EQ(fates.size(), static_cast<std::size_t>(steps));
    for (const auto& [number, fate] : fates) {
        // The event itself or its two answers; both, when the tap was cut off as it answered.
        if (!fate.isDelivered || !fate.halves.empty()) {
            EXPECT_THAT(fate.halves, ::testing::ElementsAre(0, 1)) << number;
        }
    }
    EXPECT_EQ(editor.received().size() + browser.received().size(), delivered);
    EXPECT_GT(answerer.notices(), 0);
    EXPECT_TRUE(desktop.sessionState().keysDown().empty());
}

TEST(SimulatedDesktopThreads, a_tap_that_hangs_holds_the_stream_until_the_system_disables_it) {
    ThreadedDispatcher dispatcher;
    SimulatedDesktop desktop(dispatcher);
    auto& editor = desktop.workspace().install("org.example.editor", "Editor");
    desktop.workspace().bringToFront(editor);
    auto& mouse = desktop.attachTargetMouse();

    const auto queue = dispatcher.makeQueue("test.tap", QualityOfService::userInteractive);
    std::atomic<bool> isHanging{false};
    std::atomic<bool> mayGoOn{false};
    std::unique_ptr<EventTap> tap;
    queue->post([&] {
        tap = desktop.taps().makeTap({.eventsOfInterest = ~std::uint64_t{0}}, queue,
                                     [&](CGEventType, CGEvent&) {
                                         isHanging.store(true);
                                         isHanging.notify_all();
                                         mayGoOn.wait(false);
                                         return false;
                                     });
        tap->setEnabled(true);
    });
    queue->drain();

    mouse.spin(1);
    mouse.spin(2);
    isHanging.wait(false);
    EXPECT_TRUE(editor.received().empty());
    desktop.disableTapsByTimeout();
    desktop.settle();
    EXPECT_EQ(editor.received().size(), 2U);

    mayGoOn.store(true);
    mayGoOn.notify_all();
    queue->drain();
    tap.reset();
    desktop.settle();
    EXPECT_EQ(editor.received().size(), 2U);
}

}  // namespace
}  // namespace tessara::testing
