#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <asio/co_spawn.hpp>
#include <asio/detached.hpp>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "EngineWiring/SimulatedHost.h"
#include "HIDPlusPlus/HIDPPDevice.h"
#include "TessaraEngine/CGEventPoster.h"
#include "TessaraEngine/TessaraEngine.h"
#include "TessaraEngine/TessaraEventTag.h"

namespace tessara {

inline constexpr std::uint16_t heldKey = 40;     // by button 3 of the default profile
inline constexpr std::uint16_t macroKey = 41;    // at once, by button 4, up after 200 ms
inline constexpr std::uint16_t delayedKey = 42;  // 100 ms after `macroKey`
inline constexpr std::uint16_t gameKey = 50;     // held by button 4 of the game's profile
inline constexpr std::int64_t shiftedDPI = 400;  // by button 5 of the default profile

/// Two profiles without a tuned pointer: one for all, and one for the game, that scrolls as the
/// system does.
inline Config documentOfTwoProfiles() {
    const std::vector<MacroStep> steps{KeyDownStep{.code = macroKey}, DelayStep{.millis = 100},
                                       KeyStep{.code = delayedKey}, DelayStep{.millis = 100},
                                       KeyUpStep{.code = macroKey}};
    Profile plain{.id = "default",
                  .name = "Default",
                  .pointer = {.isEnabled = false, .dpi = 2000},
                  .buttons = {{.button = 3, .action = HoldAction{.code = heldKey}},
                              {.button = 4, .action = SequenceAction{.steps = steps}},
                              {.button = 5, .action = DPIShiftAction{.toDPI = shiftedDPI}}}};
    Profile game{.id = "game",
                 .name = "Game",
                 .scroll = ScrollSettings::passThrough,
                 .pointer = {.isEnabled = false, .dpi = 1200},
                 .buttons = {{.button = 4, .action = HoldAction{.code = gameKey}}}};
    return {.profiles = {std::move(plain), std::move(game)},
            .ruleSet = {.rules = {{.id = "1",
                                   .pattern = ExactBundleID{"org.example.game"},
                                   .profileID = "game"}},
                        .defaultProfileID = "default"}};
}

/// Documents that a user's edits go back and forth between; all kinds of actions, tuned motion, and
/// the last one disabled.
inline std::vector<Config> documentsOfAUser() {
    Config rich = documentOfTwoProfiles();
    const std::vector<MacroStep> leavesDown{KeyDownStep{.code = 60}, MouseButtonStep{.number = 2},
                                            DelayStep{.millis = 30},
                                            KeyStep{61, ModifierFlags::command}};
    std::vector<ButtonBinding>& buttons = rich.profiles[0].buttons;
    buttons.push_back(
        {.button = 6,
         .action = RepeatWhileHeldAction{.step = KeyStep{.code = 62}, .intervalMillis = 20}});
    buttons.push_back({.button = 7, .action = SequenceAction{.steps = leavesDown}});
    buttons.push_back({.button = 8, .action = KeyStrokeAction{63, ModifierFlags::shift}});
    buttons.push_back({.button = 1,
                       .modifiers = ModifierFlags::control,
                       .action = HoldAction{.code = heldKey, .modifiers = ModifierFlags::option}});
    Config tuned = rich;
    tuned.profiles[0].pointer.isEnabled = true;
    tuned.profiles[1].scroll = ScrollSettings{};
    Config disabled = rich;
    disabled.isEnabled = false;
    return {documentOfTwoProfiles(), rich, tuned, tuned, disabled};
}

// An application's own connection to the mouse.

inline void connect(const std::shared_ptr<HIDPPDevice>& device, DispatchQueue& queue) {
    auto connecting = [](std::shared_ptr<HIDPPDevice> wanted) -> asio::awaitable<void> {
        EXPECT_TRUE(co_await wanted->connect());
    };
    asio::co_spawn(queue.executor(), connecting(device), asio::detached);
}
inline void disconnect(const std::shared_ptr<HIDPPDevice>& device, DispatchQueue& queue) {
    auto disconnecting = [](std::shared_ptr<HIDPPDevice> leaving) -> asio::awaitable<void> {
        co_await leaving->disconnect();
    };
    asio::co_spawn(queue.executor(), disconnecting(device), asio::detached);
}

/// The engine as a program runs it, not yet started, on a desktop with the mouse plugged in and an
/// editor in front; a game and a browser are installed.
class EngineOnDesktop : public SimulatedHost {
  public:
    /// Called ahead of the engine's construction, with all else in place.
    using Adjustment = std::function<void(TessaraEngine::Options&, EngineOnDesktop&)>;

    explicit EngineOnDesktop(Dispatcher& onDispatcher, Config config = documentOfTwoProfiles(),
                             const Adjustment& adjust = {}, PointerHardwareTuning* tuning = nullptr)
        : SimulatedHost(onDispatcher),
          editor(desktop.workspace().install("org.example.editor", "Editor")),
          game(desktop.workspace().install("org.example.game", "Game")),
          browser(desktop.workspace().install("org.example.browser", "Browser")),
          engine(makeEngine(std::move(config), adjust, tuning)) {
        desktop.workspace().bringToFront(editor);
    }

    /// What an application received since the last call, one line each, motion left out.
    static std::vector<std::string> linesOf(SimulatedApplication& application) {
        std::vector<std::string> lines;
        for (const CGEvent& event : application.takeReceived())
            if (auto line = lineOf(event); !line.empty()) lines.push_back(std::move(line));
        return lines;
    }

    SimulatedApplication& editor;
    SimulatedApplication& game;
    SimulatedApplication& browser;
    const std::shared_ptr<TessaraEngine> engine;

  private:
    static std::string lineOf(const CGEvent& event) {
        using enum CGEventType;
        switch (event.type) {
            case keyDown:
            case keyUp:
                return fmt::format("key {} {}",
                                   event.integerValue(CGEventField::keyboardEventKeycode),
                                   event.type == keyDown ? "down" : "up");
            case scrollWheel:
                return isTessaraEmitted(event) ? "glide" : "wheel";
            case otherMouseDown:
            case otherMouseUp:
                return fmt::format("button {} {}",
                                   event.integerValue(CGEventField::mouseEventButtonNumber),
                                   event.type == otherMouseDown ? "down" : "up");
            default:
                return {};
        }
    }

    std::shared_ptr<TessaraEngine> makeEngine(Config config, const Adjustment& adjust,
                                              PointerHardwareTuning* tuning) {
        mouse = &desktop.attachTargetMouse();
        TessaraEngine::Options options;
        options.deviceMatches = {HIDPPDeviceMatch::g502X};
        options.poster =
            std::make_shared<CGEventPoster>(desktop.eventServices(), CGEventTapLocation::session);
        if (adjust) adjust(options, *this);
        return std::make_shared<TessaraEngine>(std::move(config), std::move(options),
                                               enginePlatform(), tuning);
    }
};

}  // namespace tessara
