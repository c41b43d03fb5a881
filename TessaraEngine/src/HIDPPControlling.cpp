#include "TessaraEngine/HIDPPControlling.h"

#include <utility>

#include <fmt/format.h>

#include "HIDPlusPlus/HIDPPDevice.h"

namespace tessara {

LiveHIDPPControl::LiveHIDPPControl(std::shared_ptr<HIDPPDevice> device)
    : device_(std::move(device)) {}

HIDPPTask<std::int64_t> LiveHIDPPControl::setDPI(std::int64_t dpi) {
    co_return co_await device_->setDPI(dpi);
}

HIDPPTask<void> LiveHIDPPControl::setReportRate(std::int64_t hertz) {
    const auto rate = HIDPPReportRate::fromHertz(hertz);
    if (!rate) {
        co_return std::unexpected(HIDPPError(
            HIDPPError::InvalidArgument{fmt::format("unsupported report rate {} Hz", hertz)}));
    }
    co_return co_await device_->setReportRate(*rate);
}

HIDPPTask<bool> LiveHIDPPControl::setWheelHighResolution(bool isHighResolution) {
    auto mode = co_await device_->setWheelHighResolution(isHighResolution);
    if (!mode) co_return std::unexpected(std::move(mode.error()));
    co_return mode->highResolution;
}

HIDPPTask<std::int64_t> LiveHIDPPControl::readDPI() {
    auto state = co_await device_->dpi();
    if (!state) co_return std::unexpected(std::move(state.error()));
    co_return state->current;
}

bool saysDeviceIsAbsent(const HIDPPError& error) {
    return error.is<HIDPPError::DeviceNotFound>() || error.is<HIDPPError::NotOpen>() ||
           error.is<HIDPPError::NotConnected>() || error.is<HIDPPError::DeviceRemoved>();
}

}  // namespace tessara
