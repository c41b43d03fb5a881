#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "Platform/CGEvent.h"

namespace tessara {

/// The calls by which a system tells which device an event came from. None of them is published, so
/// each may be missing on some system; the program then does without.
enum class HIDSymbol {
    cgEventCopyIOHIDEvent,
    ioHIDEventGetSenderID,
    ioHIDEventSystemClientCreateSimpleClient,
    ioHIDEventSystemClientCopyServices,
    ioHIDServiceClientGetRegistryIDRaw,
    ioHIDServiceClientCopyProperty,
    ioHIDServiceClientSetProperty,
};

/// Every symbol with the name under which the system has it, in the order of the reports.
inline constexpr std::array<std::pair<HIDSymbol, std::string_view>, 7> hidSymbolNames{{
    {HIDSymbol::cgEventCopyIOHIDEvent, "CGEventCopyIOHIDEvent"},
    {HIDSymbol::ioHIDEventGetSenderID, "IOHIDEventGetSenderID"},
    {HIDSymbol::ioHIDEventSystemClientCreateSimpleClient,
     "IOHIDEventSystemClientCreateSimpleClient"},
    {HIDSymbol::ioHIDEventSystemClientCopyServices, "IOHIDEventSystemClientCopyServices"},
    {HIDSymbol::ioHIDServiceClientGetRegistryIDRaw, "IOHIDServiceClientGetRegistryID"},
    {HIDSymbol::ioHIDServiceClientCopyProperty, "IOHIDServiceClientCopyProperty"},
    {HIDSymbol::ioHIDServiceClientSetProperty, "IOHIDServiceClientSetProperty"},
}};

/// What a service's property can hold: nothing of interest, a number, or a text.
using HIDValue = std::variant<std::monostate, std::int64_t, double, std::string>;

/// One input device as the event system has it. Valid as long as it is held; a device that has gone
/// answers with nothing.
class HIDService {
  public:
    virtual ~HIDService() = default;

    /// The service's registry entry number, equal to the sender identifier of its events. An answer
    /// that is no number is possible and means that there is none.
    [[nodiscard]] virtual HIDValue registryID() const = 0;

    /// A property by its name ("VendorID", "ProductID", "Product", "Transport", "PrimaryUsagePage",
    /// "PrimaryUsage", and the pointer's own). Asked only when the symbol resolves.
    [[nodiscard]] virtual HIDValue copyProperty(std::string_view key) const = 0;

    /// Sets a property; false when the system refuses. Asked only when the symbol resolves.
    virtual bool setProperty(std::string_view key, const HIDValue& value) = 0;
};

/// Tells events' devices apart: the sender of an event, and a list of all input devices with their
/// vendor and product numbers.
///
/// `resolves` and `senderID` are called on the tap thread for every event: they must neither
/// allocate nor wait. `services` is slow and is called on a queue of its own.
class HIDEventSystem {
  public:
    virtual ~HIDEventSystem() = default;

    /// Whether the system has the call. The answer never changes in one run of a real system.
    [[nodiscard]] virtual bool resolves(HIDSymbol symbol) const = 0;

    /// The identifier of the device behind the event; 0 or nothing when no HID event is attached.
    /// Asked only when `cgEventCopyIOHIDEvent` and `ioHIDEventGetSenderID` resolve.
    [[nodiscard]] virtual std::optional<std::uint64_t> senderID(const CGEvent& event) const = 0;

    /// All services of a fresh client, in the system's order; nothing when no client or no list
    /// could be had. Asked only when the symbols for both resolve.
    [[nodiscard]] virtual std::optional<std::vector<std::shared_ptr<HIDService>>> services() = 0;

    /// A property of a device's entry in the system's registry, which may know properties that its
    /// service does not; a number or a text. A platform without such a registry leaves it out.
    [[nodiscard]] virtual HIDValue registryProperty([[maybe_unused]] std::uint64_t registryID,
                                                    [[maybe_unused]] std::string_view key) const {
        return {};
    }

    /// Sets a property of the registry entry; false when the system refuses. A platform without a
    /// registry refuses always.
    virtual bool setRegistryProperty([[maybe_unused]] std::uint64_t registryID,
                                     [[maybe_unused]] std::string_view key,
                                     [[maybe_unused]] const HIDValue& value) {
        return false;
    }

    /// Whether the system still has the call that came before `cgEventCopyIOHIDEvent`. A diagnosis;
    /// a platform that knows nothing of it says false.
    [[nodiscard]] virtual bool hasLegacyCGEventGetIOHIDEvent() const { return false; }
};

}  // namespace tessara
