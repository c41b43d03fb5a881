#pragma once

#include <memory>

namespace tessara {

class CursorService;
class DispatchQueue;
class Dispatcher;
class EventServices;
class EventTapService;
class HIDEventSystem;
class HIDPPRunLoop;
class PermissionService;
class ShortcutsRunner;
class WorkspaceService;

/// The services of the platform that the engine runs on, chosen once by the program: the one place
/// where the engine meets a platform, and no more than a list. All of them outlive the engine;
/// which thread may call what, each service says itself.
struct EnginePlatform {
    /// Makes the queues of the event path, and has the clock that all times are of.
    Dispatcher& dispatcher;
    /// The main executor: every method of the engine runs on it.
    std::shared_ptr<DispatchQueue> mainQueue;
    /// Puts the tap into the stream of events.
    EventTapService& eventTaps;
    /// Makes events and knows where the cursor is, for a cursor that the engine moves itself.
    EventServices& events;
    /// Absent where rewriting a motion event moves the cursor by itself.
    CursorService* cursor;
    /// Says which device an event is of, and which devices there are.
    HIDEventSystem& hidEvents;
    /// The way to the mouse's own protocol.
    std::shared_ptr<const HIDPPRunLoop> hidRunLoop;
    /// What the user has granted.
    PermissionService& permissions;
    /// Which application is in front, and how one is started.
    WorkspaceService& workspace;
    /// Runs what the user has named in a macro.
    ShortcutsRunner& shortcuts;
};

}  // namespace tessara
