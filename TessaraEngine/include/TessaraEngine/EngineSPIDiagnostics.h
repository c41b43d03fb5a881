#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tessara {

class HIDEventSystem;
class HIDService;

/// What may be asked about the calls that tell devices apart, none of which a system has to have.
/// For the status display and for whoever sets the properties of devices; the event path asks
/// `DeviceScope`. Any thread but the tap's.
namespace EngineSPIDiagnostics {

/// The names of the calls that the system lacks, in the order of `hidSymbolNames`.
[[nodiscard]] std::vector<std::string> missingSymbols(const HIDEventSystem& system);

/// Whether the system has the predecessor of the call that gives an event's device. It is never
/// used.
[[nodiscard]] bool hasLegacyCGEventGetIOHIDEvent(const HIDEventSystem& system);

/// Whether properties of devices can be set at all.
[[nodiscard]] bool canSetServiceProperties(const HIDEventSystem& system);

/// All devices, as the system has them now; none on any failure. Slow.
[[nodiscard]] std::vector<std::shared_ptr<HIDService>> services(HIDEventSystem& system);

/// The number that the device's events carry as their sender; nothing when it has none or the
/// system cannot tell.
[[nodiscard]] std::optional<std::uint64_t> registryID(const HIDEventSystem& system,
                                                      const HIDService& service);

}  // namespace EngineSPIDiagnostics
}  // namespace tessara
