#include "HIDValueReading.h"

#include <utility>
#include <variant>

namespace tessara {

std::optional<std::int64_t> integerFrom(const HIDValue& value) {
    if (const auto* integer = std::get_if<std::int64_t>(&value)) return *integer;
    if (const auto* real = std::get_if<double>(&value)) {
        constexpr double limit = 0x1p63;
        if (*real >= -limit && *real < limit) return static_cast<std::int64_t>(*real);
    }
    return std::nullopt;
}

std::optional<std::string> textFrom(HIDValue value) {
    if (auto* text = std::get_if<std::string>(&value)) return std::move(*text);
    return std::nullopt;
}

std::optional<std::uint64_t> registryIDFrom(const HIDValue& value) {
    const auto number = integerFrom(value);
    if (!number || *number == 0) return std::nullopt;
    return static_cast<std::uint64_t>(*number);
}

}  // namespace tessara
