#include "Platform/Linux/VirtualDevice.h"

#include <cstdint>
#include <utility>

#include "InputFrame.h"

namespace tessara {

VirtualDevice::VirtualDevice(Opener opener, KeyboardState& held)
    : opener_(std::move(opener)), pressed_(held) {}

VirtualDevice::~VirtualDevice() {
    close();
}

std::expected<void, std::error_code> VirtualDevice::open() {
    if (sink_) return {};
    auto opened = opener_();
    if (!opened) return std::unexpected(opened.error());
    sink_ = std::move(*opened);
    return {};
}

void VirtualDevice::close() {
    releaseAll();
    sink_.reset();
    pressed_.clear();  // nothing of a device that is gone is held
}

bool VirtualDevice::write(std::span<const input_event> frame) {
    if (!sink_ || frame.empty()) return false;
    if (frame.back().type != EV_SYN || frame.back().code != SYN_REPORT) return false;
    if (!sink_->write(frame)) return false;
    for (const auto& event : frame) {
        if (event.type == EV_KEY) pressed_.set(event.code, event.value != 0);
    }
    return true;
}

void VirtualDevice::releaseAll() {
    const PressedKeys::Keys held = pressed_.down();
    if (held.none()) return;
    for (std::size_t code = 0; code < held.size(); ++code) {
        if (!held[code]) continue;
        InputFrame frame;
        frame.add(EV_KEY, static_cast<std::uint16_t>(code), 0);
        static_cast<void>(write(frame.finish()));
    }
}

}  // namespace tessara
