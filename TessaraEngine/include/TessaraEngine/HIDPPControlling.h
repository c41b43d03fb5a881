#pragma once

#include <cstdint>
#include <memory>

#include "HIDPlusPlus/HIDPPTask.h"

namespace tessara {

class HIDPPDevice;

/// The settings of the mouse that the program writes: what stands between the engine and the real
/// device, a gate that the user can close, or a fake. Operations may be awaited on any executor,
/// and besides what is said with each fail as those of `HIDPPDevice` do.
class HIDPPControlling {
  public:
    virtual ~HIDPPControlling() = default;

    /// Writes the resolution nearest to `dpi` that the device has and gives its own afterwards,
    /// both in DPI.
    virtual HIDPPTask<std::int64_t> setDPI(std::int64_t dpi) = 0;

    /// Writes the report rate. Fails with `InvalidArgument` for a rate that is no whole number of
    /// milliseconds, or that the mouse does not offer.
    virtual HIDPPTask<void> setReportRate(std::int64_t hertz) = 0;

    /// Writes whether the wheel runs in high resolution and gives what is then in force.
    virtual HIDPPTask<bool> setWheelHighResolution(bool isHighResolution) = 0;

    /// Reads the resolution, in DPI.
    virtual HIDPPTask<std::int64_t> readDPI() = 0;
};

/// The control of a device, without a gate, for its first sensor.
class LiveHIDPPControl final : public HIDPPControlling {
  public:
    explicit LiveHIDPPControl(std::shared_ptr<HIDPPDevice> device);

    HIDPPTask<std::int64_t> setDPI(std::int64_t dpi) override;
    HIDPPTask<void> setReportRate(std::int64_t hertz) override;
    HIDPPTask<bool> setWheelHighResolution(bool isHighResolution) override;
    HIDPPTask<std::int64_t> readDPI() override;

  private:
    const std::shared_ptr<HIDPPDevice> device_;
};

/// Whether the error (`DeviceNotFound`, `NotOpen`, `NotConnected`, `DeviceRemoved`) only says that
/// the mouse is not there, which is a state and no failure.
[[nodiscard]] bool saysDeviceIsAbsent(const HIDPPError& error);

}  // namespace tessara
