#pragma once

#include <memory>

#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Platform/Simulated/SimulatedDesktop.h"
#include "Platform/Simulated/SimulatedHIDTransport.h"
#include "Platform/Simulated/SimulatedMouse.h"
#include "TessaraEngine/EnginePlatform.h"

namespace tessara {

/// A simulated computer for an engine to run on: the desktop, the HID side with the mouse's
/// firmware, and a main executor. Programs and tests that run without hardware start from here, on
/// real threads or in virtual time, as the dispatcher has it.
///
/// It outlives the engine, and the dispatcher outlives it.
class SimulatedHost {
  public:
    /// On a dispatcher, with a queue of its own for the main executor.
    explicit SimulatedHost(Dispatcher& on);
    /// With a main executor that the program has.
    SimulatedHost(Dispatcher& on, std::shared_ptr<DispatchQueue> main);

    SimulatedHost(const SimulatedHost&) = delete;
    SimulatedHost& operator=(const SimulatedHost&) = delete;

    /// What an engine is given.
    [[nodiscard]] EnginePlatform enginePlatform();

    /// Plugs the target mouse in, as an input device and as a HID device. Not while it is plugged.
    SimulatedPointingDevice& plugInMouse();
    /// Pulls it out, or lets its input device follow a mouse that has vanished on the HID side.
    void unplugMouse();

    /// Waits until nobody has a connection to the mouse any more, or is about to close one, which
    /// goes on for a moment after its owner has gone. On real threads, ahead of the end; not on one
    /// of the host's queues.
    void awaitEndOfConnections() const;

    Dispatcher& dispatcher;
    /// Where the engine's methods are called.
    const std::shared_ptr<DispatchQueue> mainQueue;
    /// What runs inside the mouse.
    SimulatedMouse firmware;
    /// Where it is plugged in, on the side of HID.
    SimulatedHIDTransport hidTransport;
    SimulatedDesktop desktop;
    const std::shared_ptr<const HIDPPRunLoop> hidRunLoop;
    /// The input device of the mouse's present plug; null while it is out.
    SimulatedPointingDevice* mouse = nullptr;
};

}  // namespace tessara
