#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Platform/Dispatch/Mutex.h"
#include "Platform/Simulated/SimulatedApplication.h"
#include "Platform/Simulated/SimulatedDevices.h"
#include "Platform/Simulated/SimulatedDisplays.h"
#include "Platform/Simulated/SimulatedEventServices.h"
#include "Platform/Simulated/SimulatedEventStream.h"
#include "Platform/Simulated/SimulatedEventTaps.h"
#include "Platform/Simulated/SimulatedInputState.h"
#include "Platform/Simulated/SimulatedKeyboard.h"
#include "Platform/Simulated/SimulatedPermissions.h"
#include "Platform/Simulated/SimulatedPointingDevice.h"
#include "Platform/Simulated/SimulatedShortcuts.h"
#include "Platform/Simulated/SimulatedWorkspace.h"

namespace tessara {

class Dispatcher;

/// A whole desktop in memory: devices, keyboard, displays and cursor, the event stream with its
/// taps, applications, permissions and Shortcuts. The program runs on it where there is no other,
/// and tests and demonstrations script it:
///
///     ManualDispatcher dispatcher;
///     SimulatedDesktop desktop(dispatcher);
///     auto& editor = desktop.workspace().install("org.example.editor", "Editor");
///     desktop.workspace().bringToFront(editor);
///     auto& mouse = desktop.attachTargetMouse();
///     mouse.spin(1);
///     desktop.settle();
///     // editor.received() holds the wheel event
///
/// One rule of order: what devices and keyboard do and what is posted goes through the event stream
/// in the order of the calls; all else takes effect at once. Call `settle()` between the two where
/// it matters, such as before another application comes to the front.
///
/// It runs on real threads and in virtual time, as the dispatcher does. All operations may be
/// called from any thread. The desktop outlives whoever holds its services and taps, and is
/// destroyed before the dispatcher.
class SimulatedDesktop {
  public:
    /// One display, a keyboard, no mouse and no application; everything is granted. The window
    /// server has a queue of its own of the dispatcher's.
    explicit SimulatedDesktop(Dispatcher& dispatcher);
    ~SimulatedDesktop();

    SimulatedDesktop(const SimulatedDesktop&) = delete;
    SimulatedDesktop& operator=(const SimulatedDesktop&) = delete;

    /// Attach a device. The reference holds as long as the desktop, also once the device is
    /// detached; plugging the same mouse in again is another device.
    SimulatedPointingDevice& attachTargetMouse();
    SimulatedPointingDevice& attachForeignMouse();
    SimulatedPointingDevice& attachTrackpad();
    SimulatedPointingDevice& attachMouseWithoutVendor();
    /// Of any other description.
    SimulatedPointingDevice& attach(const SimulatedDeviceDescription& description);

    /// Lets an event of the script's making enter at `hid`, with nothing filled in: one without a
    /// HID event, of an unknown type, or with impossible figures.
    void send(const CGEvent& event);

    /// The system takes the taps that may change events out of the stream
    /// (`SimulatedEventStream::disableTaps`).
    void disableTapsByTimeout();
    void disableTapsByUserInput();

    /// Runs the desktop until all events are through (`SimulatedEventStream::settle`).
    void settle();

    [[nodiscard]] SimulatedKeyboard& keyboard() { return *keyboard_; }
    [[nodiscard]] SimulatedEventStream& events() { return *stream_; }
    [[nodiscard]] SimulatedDisplays& displays() { return *displays_; }
    [[nodiscard]] SimulatedDevices& devices() { return *devices_; }
    [[nodiscard]] SimulatedWorkspace& workspace() { return *workspace_; }
    [[nodiscard]] SimulatedShortcuts& shortcuts() { return *shortcuts_; }
    [[nodiscard]] SimulatedPermissions& permissions() { return *permissions_; }
    [[nodiscard]] SimulatedEventTaps& taps() { return *taps_; }
    [[nodiscard]] SimulatedEventServices& eventServices() { return *eventServices_; }

    /// What the hardware holds down, and what applications have been told is held down.
    [[nodiscard]] const SimulatedInputState& hardwareState() const { return *hardwareState_; }
    [[nodiscard]] const SimulatedInputState& sessionState() const { return *sessionState_; }

  private:
    const std::shared_ptr<SimulatedDisplays> displays_;
    const std::shared_ptr<SimulatedDevices> devices_;
    const std::shared_ptr<SimulatedWorkspace> workspace_;
    const std::shared_ptr<SimulatedShortcuts> shortcuts_;
    const std::shared_ptr<SimulatedInputState> hardwareState_;
    const std::shared_ptr<SimulatedInputState> sessionState_;
    const std::shared_ptr<SimulatedPermissions> permissions_;
    const std::shared_ptr<SimulatedEventTaps> taps_;
    const std::shared_ptr<SimulatedEventStream> stream_;
    const std::shared_ptr<SimulatedEventServices> eventServices_;
    const std::shared_ptr<const SimulatedHardware> hardware_;
    const std::unique_ptr<SimulatedKeyboard> keyboard_;
    Mutex mutex_;
    std::vector<std::unique_ptr<SimulatedPointingDevice>> pointingDevices_
        TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
