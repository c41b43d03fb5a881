#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <set>

#include "Platform/CGEvent.h"
#include "Platform/Dispatch/Mutex.h"
#include "Platform/Simulated/SimulatedHIDDevice.h"

namespace tessara {

class SimulatedHardware;

/// A mouse or trackpad in the hand of a script. Each action sends the events that the real thing
/// would cause, with the present time, and returns at once; they enter the event stream in the
/// order of the actions. Acting with a device that is not attached stops the process. All
/// operations may be called from any thread.
class SimulatedPointingDevice {
  public:
    SimulatedPointingDevice(std::shared_ptr<const SimulatedHardware> hardware,
                            std::shared_ptr<SimulatedHIDDevice> device);

    /// The device as the event system has it.
    [[nodiscard]] SimulatedHIDDevice& hid() const { return *device_; }
    [[nodiscard]] std::uint64_t id() const { return device_->id(); }

    /// How many points the system moves the cursor for one count; 2 at first.
    void setAcceleration(double pointsPerCount);

    /// Moves by so many sensor counts: `mouseMoved`, or a drag when a button is down. Counts may be
    /// anything, also not finite; only the raw fields show them then, and the cursor stays.
    void move(double xCounts, double yCounts);

    /// Button 0 is the left one, 1 the right one, any other number another one. A button may be
    /// pressed that is down and released that is up: what the script says is what is sent.
    void press(std::int64_t button);
    void release(std::int64_t button);
    /// A press and a release.
    void click(std::int64_t button);

    /// Turns the wheel by so many lines; above zero is up.
    void spin(std::int64_t lines);
    /// Turns or tilts the wheel sideways; above zero is left.
    void spinSideways(std::int64_t lines);

    /// Scrolls by pixels, as fingers on a trackpad do: one continuous gesture of `steps` events (1
    /// or more) that share the way evenly, and one that ends it.
    void swipe(std::int64_t verticalPixels, std::int64_t horizontalPixels, int steps = 1);

    /// Sends an event of the script's making as this device's: type and fields stay as they are,
    /// the rest is filled in as for any other.
    void send(const CGEvent& event);

    /// Unplugs the device. Buttons that are down go up first, as a system sees to that.
    void detach();

    /// Unplugs the device without a word about the buttons that are down.
    void vanish();

  private:
    void sendButton(std::int64_t button, bool isDown);
    void sendWheel(std::int64_t verticalLines, std::int64_t horizontalLines);
    void sendScroll(std::int64_t verticalPixels, std::int64_t horizontalPixels, std::int64_t phase);
    [[nodiscard]] std::set<std::int64_t> takeHeld();

    const std::shared_ptr<const SimulatedHardware> hardware_;
    const std::shared_ptr<SimulatedHIDDevice> device_;
    std::atomic<double> pointsPerCount_{2.0};
    Mutex mutex_;
    std::set<std::int64_t> held_ TESSARA_GUARDED_BY(mutex_);  // buttons that the hand holds down
};

}  // namespace tessara
