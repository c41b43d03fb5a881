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
/// The same for a button.
struct HandledButton {
    ButtonChange change;
    bool passes = true;
};

/// A motion, which always travels on, and the movement that it has from then on.
struct HandledMotion {
    MouseMotion motion;
    MouseMotion out;
};

// What the program asked to be posted to the applications, as it asked for it: how the desktop
// makes events of it shows in what is received.

/// A step of a glide.
struct PostedScroll {
    ScrollAxis axis = ScrollAxis::vertical;
    std::int64_t pixels = 0;  ///< 0 in a step that closes a gesture
    ScrollPhase phase = ScrollPhase::changed;
    ModifierFlags modifiers = ModifierFlags::none;
};
/// A key gone down or up.
struct PostedKey {
    std::uint16_t code = 0;  ///< a virtual key code
    bool isDown = false;
    ModifierFlags modifiers = ModifierFlags::none;
};
/// A button gone down or up that the hand did not press.
struct PostedButton {
    std::int64_t number = 0;  ///< as in `ButtonChange`
    bool isDown = false;
};

// What the program asked of the mouse and of the desktop. None of it is done in a replay.

/// A resolution for the mouse.
struct RequestedDPI {
    std::int64_t dpi = 0;  ///< in counts per inch
};
/// An application to start or bring to the front.
struct LaunchedApp {
    std::string bundleID;
};
/// A shortcut of the system to run.
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

/// Takes the records of a replay one by one, in the order in which they happen: their times never
/// go back, and an input comes ahead of what it causes at the same time.
using ReplayListener = std::function<void(const ReplayRecord&)>;

}  // namespace tessara
