#include "TessaraEngine/LivePointerPropertyBackend.h"

#include "HIDValueReading.h"
#include "Platform/HIDEventSystem.h"
#include "TessaraEngine/EngineSPIDiagnostics.h"

namespace tessara {

LivePointerPropertyBackend::LivePointerPropertyBackend(HIDEventSystem& system) : system_(system) {}

bool LivePointerPropertyBackend::canWrite() const {
    return EngineSPIDiagnostics::canSetServiceProperties(system_);
}

std::vector<PointerServiceIdentity> LivePointerPropertyBackend::services() {
    renewSession();
    const bool canRead = system_.resolves(HIDSymbol::ioHIDServiceClientCopyProperty);
    std::vector<PointerServiceIdentity> identities;
    for (const auto& service : session_) {
        const auto registryID = EngineSPIDiagnostics::registryID(system_, *service);
        if (!registryID) continue;
        PointerServiceIdentity identity{.registryID = *registryID};
        if (canRead) {
            identity.vendorID = integerFrom(service->copyProperty("VendorID"));
            identity.productID = integerFrom(service->copyProperty("ProductID"));
            identity.product = textFrom(service->copyProperty("Product"));
            identity.primaryUsagePage = integerFrom(service->copyProperty("PrimaryUsagePage"));
            identity.primaryUsage = integerFrom(service->copyProperty("PrimaryUsage"));
        }
        identities.push_back(std::move(identity));
    }
    return identities;
}

std::optional<std::int64_t> LivePointerPropertyBackend::readNumber(const std::string& key,
                                                                   std::uint64_t registryID) {
    if (system_.resolves(HIDSymbol::ioHIDServiceClientCopyProperty)) {
        if (const auto found = service(registryID)) {
            if (const auto number = integerFrom(found->copyProperty(key))) return number;
        }
    }
    return integerFrom(system_.registryProperty(registryID, key));
}

std::optional<std::string> LivePointerPropertyBackend::readString(const std::string& key,
                                                                  std::uint64_t registryID) {
    if (system_.resolves(HIDSymbol::ioHIDServiceClientCopyProperty)) {
        if (const auto found = service(registryID)) {
            if (auto text = textFrom(found->copyProperty(key))) return text;
        }
    }
    return textFrom(system_.registryProperty(registryID, key));
}

PointerPropertyWrite LivePointerPropertyBackend::writeNumber(const std::string& key,
                                                             std::int64_t value,
                                                             std::uint64_t registryID) {
    if (canWrite()) {
        const auto found = service(registryID);
        if (found && found->setProperty(key, value)) return PointerPropertyWrite::eventSystem;
    }
    return system_.setRegistryProperty(registryID, key, value) ? PointerPropertyWrite::registryEntry
                                                               : PointerPropertyWrite::refused;
}

std::shared_ptr<HIDService> LivePointerPropertyBackend::service(std::uint64_t registryID) {
    if (auto found = findInSession(registryID)) return found;
    renewSession();
    return findInSession(registryID);
}

std::shared_ptr<HIDService> LivePointerPropertyBackend::findInSession(
    std::uint64_t registryID) const {
    for (const auto& service : session_) {
        if (EngineSPIDiagnostics::registryID(system_, *service) == registryID) return service;
    }
    return nullptr;
}

void LivePointerPropertyBackend::renewSession() {
    session_ = EngineSPIDiagnostics::services(system_);
}

}  // namespace tessara
