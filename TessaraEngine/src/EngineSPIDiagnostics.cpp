#include "TessaraEngine/EngineSPIDiagnostics.h"

#include "HIDValueReading.h"
#include "Platform/HIDEventSystem.h"

namespace tessara {

std::vector<std::string> EngineSPIDiagnostics::missingSymbols(const HIDEventSystem& system) {
    std::vector<std::string> missing;
    for (const auto& [symbol, name] : hidSymbolNames) {
        if (!system.resolves(symbol)) missing.emplace_back(name);
    }
    return missing;
}

bool EngineSPIDiagnostics::hasLegacyCGEventGetIOHIDEvent(const HIDEventSystem& system) {
    return system.hasLegacyCGEventGetIOHIDEvent();
}

bool EngineSPIDiagnostics::canSetServiceProperties(const HIDEventSystem& system) {
    return system.resolves(HIDSymbol::ioHIDServiceClientSetProperty);
}

std::vector<std::shared_ptr<HIDService>> EngineSPIDiagnostics::services(HIDEventSystem& system) {
    if (!system.resolves(HIDSymbol::ioHIDEventSystemClientCreateSimpleClient) ||
        !system.resolves(HIDSymbol::ioHIDEventSystemClientCopyServices)) {
        return {};
    }
    return system.services().value_or(std::vector<std::shared_ptr<HIDService>>{});
}

std::optional<std::uint64_t> EngineSPIDiagnostics::registryID(const HIDEventSystem& system,
                                                              const HIDService& service) {
    if (!system.resolves(HIDSymbol::ioHIDServiceClientGetRegistryIDRaw)) return std::nullopt;
    return registryIDFrom(service.registryID());
}

}  // namespace tessara
