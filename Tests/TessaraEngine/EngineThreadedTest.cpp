#include <chrono>
#include <cstdlib>
#include <random>
#include <thread>

#include <gmock/gmock.h>

#include "EngineOnDesktop.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "WatchedPoster.h"

namespace tessara {
namespace {

using std::chrono::steady_clock;
using ::testing::IsEmpty;

/// The engine on real threads, on the main queue of which all its methods are called.
class EngineOnThreads : public ::testing::Test {
  protected:
    EngineOnThreads() {
        for (Config& document : documents) {
            for (Profile& profile : document.profiles) {
                profile.scroll.durationMillis = 20;
                profile.scroll.frameIntervalMillis = 1;
            }
        }
        onMain([this] {
            on = std::make_unique<EngineOnDesktop>(
                dispatcher, documents[2],
                [this](TessaraEngine::Options& options, EngineOnDesktop&) {
                    options.poster =
                        std::make_shared<WatchedPoster>(std::move(options.poster), gestures);
                });
            foreign = &on->desktop.attachForeignMouse();
        });
    }

    /// Runs a block where the engine's methods may be called, and waits for it.
    template <typename Block>
    void onMain(Block block) {
        const auto queue =
            on ? on->mainQueue : dispatcher.makeQueue("maker", QualityOfService::userInteractive);
        queue->post(std::move(block));
        queue->drain();
    }

    void takeAccount() {
        for (const SimulatedPassage& passage : on->desktop.events().takeJournal()) {
            const bool isGlide = passage.entered.type == CGEventType::scrollWheel;
            if (passage.isPosted && isGlide) ++glideEvents;
            const auto sender = on->desktop.devices().senderID(passage.entered);
            const bool isTargets = !passage.isPosted && sender == on->mouse->id();
            if (!isTargets && passage.delivered != passage.entered) ++touchedEvents;
            if (isTargets && !passage.delivered) ++droppedEvents;
        }
    }

    /// Whether all that was posted has arrived and nothing is down.
    bool isQuiet() {
        on->desktop.settle();
        takeAccount();
        const ScrollPipeline::Metrics& scroll = on->engine->status().scroll;
        return glideEvents == scroll.stepsPosted + scroll.gesturesForceClosed &&
               on->desktop.sessionState().keysDown().empty() &&
               on->desktop.sessionState().buttonsDown().empty();
    }

    static void useAtRandom(SimulatedPointingDevice& device, std::minstd_rand& dice) {
        const auto button = static_cast<std::int64_t>(dice() % 9);
        const auto way = static_cast<std::int64_t>(dice() % 7) - 3;
        switch (dice() % 4) {
            case 0:
                return device.press(button);
            case 1:
                return device.release(button);
            case 2:
                return device.spin(way);
            default:
                return device.move(static_cast<double>(way), 1);
        }
    }

    std::vector<Config> documents = documentsOfAUser();
    testing::GestureChecker gestures;  // used on the scroll queue
    ThreadedDispatcher dispatcher;
    std::unique_ptr<EngineOnDesktop> on;
    SimulatedPointingDevice* foreign = nullptr;
    std::int64_t glideEvents = 0;
    std::int64_t touchedEvents = 0;
    std::int64_t droppedEvents = 0;
};

TEST_F(EngineOnThreads, switches_cuts_stops_and_starts_race_the_users_hand_and_leave_nothing_held) {
    // For a longer look than a test run has time for.
    const char* const stress = std::getenv("TESSARA_STRESS_SECONDS");
    const auto deadline =
        steady_clock::now() + std::chrono::seconds(stress == nullptr ? 0 : std::atoi(stress));
    constexpr int rounds = 300;
    std::int64_t cuts = 0;
    {
        const std::jthread hand([this](const std::stop_token& stop) {
            std::minstd_rand dice(1);
            while (!stop.stop_requested()) {
                for (int action = 0; action < 8; ++action)
                    useAtRandom(dice() % 4 == 0 ? *foreign : *on->mouse, dice);
                on->desktop.settle();
            }
        });
        const std::jthread system([this, &cuts](const std::stop_token& stop) {
            std::minstd_rand dice(2);
            while (!stop.stop_requested()) {
                on->desktop.workspace().bringToFront(dice() % 2 == 0 ? on->game : on->editor);
                if (dice() % 4 == 0) {
                    on->desktop.disableTapsByTimeout();
                    ++cuts;
                }
                on->desktop.settle();
            }
        });
        std::minstd_rand dice(3);
        for (int round = 0; round < rounds || steady_clock::now() < deadline; ++round) {
            onMain([&] {
                TessaraEngine& engine = *on->engine;
                const auto choice = dice() % 8;
                if (choice == 0) engine.stop();
                if (choice == 1) engine.update(documents[dice() % documents.size()]);
                if (choice == 2) engine.activateProfile("org.example.game");
                if (choice == 3) engine.handleDeviceEvent({HIDPPEvent::DeviceRemoved{}});
                if (choice == 4) engine.refreshMetrics();
                if (choice > 4) static_cast<void>(engine.start());
            });
            takeAccount();
        }
    }
    for (std::int64_t button = 0; button < 9; ++button) {
        on->mouse->release(button);
        foreign->release(button);
    }
    on->desktop.settle();
    onMain([this] { on->engine->stop(); });

    bool isDone = false;
    const auto patience = steady_clock::now() + std::chrono::seconds(20);
    while (!isDone && steady_clock::now() < patience) {
        onMain([&] {
            on->engine->refreshMetrics();
            isDone = isQuiet();
        });
    }
    EXPECT_TRUE(isDone) << glideEvents;
    EXPECT_THAT(on->desktop.sessionState().keysDown(), IsEmpty());
    EXPECT_THAT(on->desktop.sessionState().buttonsDown(), IsEmpty());
    EXPECT_THAT(gestures.openAxes(), IsEmpty());
    EXPECT_EQ(touchedEvents, 0);
    EXPECT_EQ(on->desktop.taps().count(), 0U);
    EXPECT_GT(droppedEvents, 0);
    EXPECT_GT(cuts, 0);
}

}  // namespace
}  // namespace tessara
