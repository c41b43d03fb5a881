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

/// The services of the platform that the engine runs on, chosen once by the program. All of them
/// outlive the engine.
struct EnginePlatform {
    Dispatcher& dispatcher;
    /// The main executor: every method of the engine runs on it.
    std::shared_ptr<DispatchQueue> mainQueue;
    EventTapService& eventTaps;
    EventServices& events;
    /// Absent where rewriting a motion event moves the cursor by itself.
    CursorService* cursor;
    HIDEventSystem& hidEvents;
    /// The way to the mouse's own protocol.
    std::shared_ptr<const HIDPPRunLoop> hidRunLoop;
    PermissionService& permissions;
    WorkspaceService& workspace;
    ShortcutsRunner& shortcuts;
};

}  // namespace tessara
