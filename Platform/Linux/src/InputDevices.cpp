#include "Platform/Linux/InputDevices.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <system_error>
#include <utility>

#include <linux/input.h>

#include "Platform/Linux/Udev.h"
#include "Platform/Linux/VirtualDeviceIdentity.h"
#include "Platform/Linux/VirtualMouse.h"

namespace tessara {
namespace {

constexpr unsigned bitsPerWord = sizeof(unsigned long) * 8;  // of the kernel's capability files

template <typename Number>
std::optional<Number> parsed(std::string_view text, int base) {
    Number number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return number;
}

std::uint16_t hexAttribute(const UdevDevice& device, const char* name) {
    return parsed<std::uint16_t>(device.attribute(name).value_or(""), 16).value_or(0);
}

CapabilityBits capabilities(const UdevDevice& device, const char* name) {
    return CapabilityBits(device.attribute(name).value_or(""));
}

/// Whether the virtual mouse can say all that a node with these capabilities can.
bool isPassable(const CapabilityBits& keys, const CapabilityBits& relativeAxes,
                const CapabilityBits& absoluteAxes) {
    constexpr unsigned lastButton = BTN_LEFT + VirtualMouse::buttonCount - 1;
    if (keys.hasOutside(BTN_LEFT, lastButton) || !absoluteAxes.areNone()) return false;
    constexpr unsigned carried[]{REL_X,     REL_Y, REL_WHEEL, REL_WHEEL_HI_RES, REL_HWHEEL_HI_RES,
                                 REL_HWHEEL};
    for (unsigned axis = 0; axis < REL_CNT; ++axis) {
        if (relativeAxes.has(axis) && std::ranges::find(carried, axis) == std::end(carried))
            return false;
    }
    return true;
}

}  // namespace

CapabilityBits::CapabilityBits(const std::string& text) {
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find(' ', begin), text.size());
        const auto word =
            parsed<std::uint64_t>(std::string_view(text).substr(begin, end - begin), 16);
        if (!word) {
            words_.clear();
            return;
        }
        words_.push_back(*word);
        begin = end + 1;
    }
    std::ranges::reverse(words_);
}

bool CapabilityBits::has(unsigned bit) const {
    const std::size_t word = bit / bitsPerWord;
    return word < words_.size() && (words_[word] >> (bit % bitsPerWord) & 1U) != 0;
}

bool CapabilityBits::areNone() const {
    return std::ranges::all_of(words_, [](std::uint64_t word) { return word == 0; });
}

bool CapabilityBits::hasOutside(unsigned first, unsigned last) const {
    const auto end = static_cast<unsigned>(words_.size()) * bitsPerWord;
    for (unsigned bit = 0; bit < end; ++bit) {
        if ((bit < first || bit > last) && has(bit)) return true;
    }
    return false;
}

std::optional<std::uint64_t> inputDeviceID(const std::string& sysPath) {
    constexpr std::string_view parent = "/input";
    const std::size_t slash = sysPath.rfind('/');
    if (slash == std::string::npos || !sysPath.substr(slash).starts_with("/event"))
        return std::nullopt;
    const std::string_view above = std::string_view(sysPath).substr(0, slash);
    const std::size_t begin = above.rfind(parent);
    if (begin == std::string_view::npos) return std::nullopt;
    // The kernel counts input devices from 0 up and gives no number twice.
    const auto number = parsed<std::uint32_t>(above.substr(begin + parent.size()), 10);
    if (!number) return std::nullopt;
    return std::uint64_t{*number} + 1;
}

InputRole inputRole(const CapabilityBits& keys, const CapabilityBits& relativeAxes) {
    if (relativeAxes.has(REL_X) && relativeAxes.has(REL_Y) && keys.has(BTN_LEFT))
        return InputRole::pointer;
    if (keys.has(KEY_LEFTSHIFT) || keys.has(KEY_LEFTCTRL)) return InputRole::keyboard;
    return InputRole::other;
}

std::optional<InputDevice> describeInputDevice(const UdevDevice& device) {
    const auto id = inputDeviceID(device.sysPath());
    const auto input = device.parent("input");
    if (!id || !input || device.node().empty()) return std::nullopt;

    const auto keys = capabilities(*input, "capabilities/key");
    const auto relativeAxes = capabilities(*input, "capabilities/rel");
    InputDevice described;
    described.id = *id;
    described.node = device.node();
    described.sysPath = device.sysPath();
    described.name = input->attribute("name").value_or("");
    described.phys = input->attribute("phys").value_or("");
    described.bus = hexAttribute(*input, "id/bustype");
    described.vendor = hexAttribute(*input, "id/vendor");
    described.product = hexAttribute(*input, "id/product");
    described.role = inputRole(keys, relativeAxes);
    described.isOurs = isOurs({.bustype = described.bus,
                               .vendor = described.vendor,
                               .product = described.product,
                               .version = 0});
    described.isPassable = described.role == InputRole::pointer &&
                           isPassable(keys, relativeAxes, capabilities(*input, "capabilities/abs"));
    described.seat = device.property("ID_SEAT").value_or(firstSeat);
    if (const auto hid = input->parent("hid"))
        described.hidDriver = hid->property("DRIVER").value_or("");
    return described;
}

std::vector<InputDevice> inputDevices(const Udev& udev) {
    std::vector<InputDevice> found;
    for (const UdevDevice& device : udev.devices("input")) {
        if (auto described = describeInputDevice(device)) found.push_back(*std::move(described));
    }
    return found;
}

bool kernelManagesWheel(const InputDevice& device) {
    return !device.hidDriver.empty() && device.hidDriver != "hid-generic";
}

}  // namespace tessara
