#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <variant>

#include "Platform/CGEvent.h"
#include "Platform/Dispatch/Clock.h"
#include "TessaraCore/ModifierFlags.h"
#include "TessaraCore/ScrollAxis.h"
#include "TessaraCore/ScrollPlan.h"
#include "TessaraReplay/FrameAssembler.h"

namespace tessara {

/// An input, and whether the applications still get it (`passes`) or the program took it.
struct HandledWheel {
    WheelTurn turn;
    bool passes = true;
};
struct HandledButton {
    ButtonChange change;
    bool passes = true;
};

/// A motion, which always travels on, and the movement that it has from then on.
struct HandledMotion {
    MouseMotion motion;
    MouseMotion out;
};

/// What the program asked to be posted to the applications.
struct PostedScroll {
    ScrollAxis axis = ScrollAxis::vertical;
    std::int64_t pixels = 0;
    ScrollPhase phase = ScrollPhase::changed;
    ModifierFlags modifiers = ModifierFlags::none;
};
struct PostedKey {
    std::uint16_t code = 0;
    bool isDown = false;
    ModifierFlags modifiers = ModifierFlags::none;
};
struct PostedButton {
    std::int64_t number = 0;
    bool isDown = false;
};

/// What the program asked of the mouse and of the desktop.
struct RequestedDPI {
    std::int64_t dpi = 0;
};
struct LaunchedApp {
    std::string bundleID;
};
struct RanShortcut {
    std::string name;
};

/// The application in front has received an event, posted or the hand's own.
struct ReceivedEvent {
    CGEvent event;
};

/// The recording is over and quiet, and everything is about to be let go.
struct FinalReset {};

/// One thing that happened in a replay, and the virtual time at which it did.
struct ReplayRecord {
    TimePoint at;
    std::variant<HandledWheel, HandledButton, HandledMotion, PostedScroll, PostedKey, PostedButton,
                 RequestedDPI, LaunchedApp, RanShortcut, ReceivedEvent, FinalReset>
        what;
};

/// Takes the records of a replay one by one, in the order in which they happen.
using ReplayListener = std::function<void(const ReplayRecord&)>;

}  // namespace tessara
