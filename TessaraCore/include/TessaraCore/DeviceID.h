#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <string>

namespace tessara {

/// The identity of one physical input device for the length of a run. It says nothing about what
/// the device is, and is not the same after the device was unplugged.
///
/// Use it to tell events of different devices apart. To know a mouse again in another run use its
/// vendor and product, which the HID++ client reads. The stored form is the bare number.
struct DeviceID {
    /// Given by the engine; the number itself has no meaning.
    std::uint64_t rawValue = 0;

    /// The device of an event that names none, the number 0. Several devices may hide behind it.
    static const DeviceID unknown;

    /// "DeviceID(17)", for people to read.
    [[nodiscard]] std::string description() const;

    /// By the number. The order has no meaning beyond being one.
    auto operator<=>(const DeviceID&) const = default;
};

inline constexpr DeviceID DeviceID::unknown{0};

}  // namespace tessara

template <>
struct std::hash<tessara::DeviceID> {
    std::size_t operator()(const tessara::DeviceID& id) const noexcept {
        return std::hash<std::uint64_t>{}(id.rawValue);
    }
};
