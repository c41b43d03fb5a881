#include "TessaraApp/GatedHIDPPControl.h"

#include <utility>

namespace tessara {

GatedHIDPPControl::GatedHIDPPControl(std::shared_ptr<HIDPPDevice> device, bool isEnabled)
    : control_(std::move(device)), isEnabled_(isEnabled) {}

void GatedHIDPPControl::setEnabled(bool isEnabled) {
    MutexLock lock(mutex_);
    isEnabled_ = isEnabled;
}

bool GatedHIDPPControl::isEnabled() const {
    MutexLock lock(mutex_);
    return isEnabled_;
}

HIDPPTask<std::int64_t> GatedHIDPPControl::setDPI(std::int64_t dpi) {
    if (!isEnabled()) co_return dpi;
    co_return co_await control_.setDPI(dpi);
}

HIDPPTask<void> GatedHIDPPControl::setReportRate(std::int64_t hertz) {
    if (!isEnabled()) co_return HIDPPResult<void>();
    co_return co_await control_.setReportRate(hertz);
}

HIDPPTask<bool> GatedHIDPPControl::setWheelHighResolution(bool isHighResolution) {
    if (!isEnabled()) co_return isHighResolution;
    co_return co_await control_.setWheelHighResolution(isHighResolution);
}

HIDPPTask<std::int64_t> GatedHIDPPControl::readDPI() {
    co_return co_await control_.readDPI();
}

}  // namespace tessara
