#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "TessaraCore/RawValue.h"

namespace tessara {

struct HIDPPDeviceMatch;

/// The system's properties of one pointer device, by their keys. Numbers are 16.16 fixed point: the
/// value times 65536.
namespace PointerPropertyKey {
/// Counts per inch.
inline constexpr const char* resolution = "HIDPointerResolution";
/// The name of the key under which the device's acceleration stands.
inline constexpr const char* accelerationType = "HIDPointerAccelerationType";
/// That key where the device names none. -1 means no acceleration.
inline constexpr const char* mouseAcceleration = "HIDMouseAcceleration";
}  // namespace PointerPropertyKey

/// One service of a pointer device, for as long as it stays plugged in.
struct PointerServiceIdentity {
    /// Of this plug; the next one has another.
    std::uint64_t registryID = 0;
    std::optional<std::int64_t> vendorID = std::nullopt;
    std::optional<std::int64_t> productID = std::nullopt;
    std::optional<std::string> product = std::nullopt;
    std::optional<std::int64_t> primaryUsagePage = std::nullopt;
    std::optional<std::int64_t> primaryUsage = std::nullopt;

    /// Whether it is a mouse: Generic Desktop, Mouse (HID Usage Tables, page 1, usage 2).
    [[nodiscard]] bool isPointerCollection() const;

    /// Whether vendor and product are those; an id that is absent matches nothing.
    [[nodiscard]] bool matches(const HIDPPDeviceMatch& match) const;

    /// Name, numbers and usage in one line, for people to read.
    [[nodiscard]] std::string label() const;

    bool operator==(const PointerServiceIdentity&) const = default;
};

/// How a write of a property ended.
enum class PointerPropertyWrite : std::uint8_t {
    eventSystem,    ///< taken by the event system, at once in force
    registryEntry,  ///< taken by the registry entry, the second choice
    refused,        ///< taken by neither
    skipped,        ///< not tried
};

template <>
inline constexpr auto rawValues<PointerPropertyWrite> =
    std::to_array<std::string_view>({"eventSystem", "registryEntry", "refused", "skipped"});

/// Reads and writes the properties that the system keeps for each pointer device. Calls block, and
/// are few. Main executor.
class PointerPropertyBackend {
  public:
    virtual ~PointerPropertyBackend() = default;

    /// Whether the system lets properties be written at all.
    [[nodiscard]] virtual bool canWrite() const = 0;

    /// All input devices that are there now, mice or not.
    [[nodiscard]] virtual std::vector<PointerServiceIdentity> services() = 0;

    /// The property of that service; nothing when it has none of that type.
    [[nodiscard]] virtual std::optional<std::int64_t> readNumber(const std::string& key,
                                                                 std::uint64_t registryID) = 0;
    [[nodiscard]] virtual std::optional<std::string> readString(const std::string& key,
                                                                std::uint64_t registryID) = 0;

    /// Writes the property; `refused` when the system does not take it or the service is gone.
    [[nodiscard]] virtual PointerPropertyWrite writeNumber(const std::string& key,
                                                           std::int64_t value,
                                                           std::uint64_t registryID) = 0;
};

}  // namespace tessara
