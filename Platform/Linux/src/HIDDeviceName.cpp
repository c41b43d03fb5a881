#include "Platform/Linux/HIDDeviceName.h"

#include <charconv>
#include <system_error>

namespace tessara {
namespace {

/// Takes a number off the front of `text`, and `end` behind it, unless `end` is 0: then the text
/// has to end there.
std::optional<std::uint32_t> takeNumber(std::string_view& text, int base, char end) {
    std::uint32_t number = 0;
    const auto [rest, error] =
        std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc{}) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(rest - text.data()));
    if (end == 0) return text.empty() ? std::optional(number) : std::nullopt;
    if (!text.starts_with(end)) return std::nullopt;
    text.remove_prefix(1);
    return number;
}

std::optional<HIDDeviceName> parsed(std::string_view component) {
    const auto bus = takeNumber(component, 16, ':');
    const auto vendorID = bus ? takeNumber(component, 16, ':') : std::nullopt;
    const auto productID = vendorID ? takeNumber(component, 16, '.') : std::nullopt;
    const auto instance = productID ? takeNumber(component, 16, 0) : std::nullopt;
    if (!instance || *instance == 0) return std::nullopt;
    return HIDDeviceName{*bus, *vendorID, *productID, *instance};
}

}  // namespace

std::optional<HIDDeviceName> HIDDeviceName::inPath(std::string_view path) {
    while (!path.empty()) {
        const auto slash = path.rfind('/');
        const auto begin = slash == std::string_view::npos ? 0 : slash + 1;
        if (const auto name = parsed(path.substr(begin))) return name;
        path = path.substr(0, begin == 0 ? 0 : slash);
    }
    return std::nullopt;
}

std::optional<std::int64_t> locationOfUSBDevice(std::string_view name) {
    constexpr int maxDepth = 6;  // ports from the root hub on, by the bus's own rules
    constexpr std::uint32_t maxByte = 0xFF;
    const auto bus = takeNumber(name, 10, '-');
    if (!bus || *bus > maxByte) return std::nullopt;
    std::int64_t location = *bus;
    bool isWhole = false;
    for (int depth = 0; depth < maxDepth; ++depth) {
        std::int64_t port = 0;
        if (!isWhole) {
            isWhole = name.find('.') == std::string_view::npos;
            const auto number = takeNumber(name, 10, isWhole ? '\0' : '.');
            if (!number || *number == 0 || *number > maxByte) return std::nullopt;
            port = *number;
        }
        location = location << 8 | port;
    }
    return isWhole ? std::optional(location) : std::nullopt;
}

}  // namespace tessara
