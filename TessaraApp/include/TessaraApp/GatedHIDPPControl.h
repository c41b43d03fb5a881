#pragma once

#include <memory>

#include "Platform/Dispatch/Mutex.h"
#include "TessaraEngine/HIDPPControlling.h"

namespace tessara {

/// The control of the mouse behind a gate that the user can close: with the gate closed no setting
/// is written, whoever asks, and reads go on. The engine and the application share one.
///
/// A write that meets a closed gate succeeds and gives back what was asked for. The gate may be
/// moved on any thread; a write that has begun is not held up by it.
class GatedHIDPPControl final : public HIDPPControlling {
  public:
    GatedHIDPPControl(std::shared_ptr<HIDPPDevice> device, bool isEnabled);

    void setEnabled(bool isEnabled);
    [[nodiscard]] bool isEnabled() const;

    HIDPPTask<std::int64_t> setDPI(std::int64_t dpi) override;
    HIDPPTask<void> setReportRate(std::int64_t hertz) override;
    HIDPPTask<bool> setWheelHighResolution(bool isHighResolution) override;
    HIDPPTask<std::int64_t> readDPI() override;

  private:
    LiveHIDPPControl control_;
    mutable Mutex mutex_;
    bool isEnabled_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
