#include "Platform/Simulated/SimulatedHIDDevice.h"

#include <utility>

#include "TargetMouse.h"

namespace tessara {
namespace {

template <typename Value>
void addIfPresent(std::map<std::string, HIDValue, std::less<>>& properties, const char* key,
                  const std::optional<Value>& value) {
    if (value) properties.emplace(key, *value);
}

}  // namespace

SimulatedDeviceDescription SimulatedDeviceDescription::targetMouse() {
    return {.vendorID = targetVendorID, .productID = targetProductID, .product = "Gaming Mouse"};
}

SimulatedDeviceDescription SimulatedDeviceDescription::foreignMouse() {
    return {.vendorID = 0x1234, .productID = 0x0001, .product = "Office Mouse"};
}

SimulatedDeviceDescription SimulatedDeviceDescription::trackpad() {
    return {.vendorID = 0x1234, .productID = 0x0002, .product = "Trackpad", .transport = "SPI"};
}

SimulatedDeviceDescription SimulatedDeviceDescription::mouseWithoutVendor() {
    return {.vendorID = {}, .productID = {}, .product = "Nameless Mouse"};
}

SimulatedDeviceDescription SimulatedDeviceDescription::keyboard() {
    return {.vendorID = 0x1234, .productID = 0x0003, .product = "Keyboard", .primaryUsage = 6};
}

SimulatedHIDDevice::SimulatedHIDDevice(std::uint64_t id,
                                       const SimulatedDeviceDescription& description)
    : id_(id), registryID_(static_cast<std::int64_t>(id)) {
    addIfPresent(properties_, "VendorID", description.vendorID);
    addIfPresent(properties_, "ProductID", description.productID);
    addIfPresent(properties_, "Product", description.product);
    addIfPresent(properties_, "Transport", description.transport);
    addIfPresent(properties_, "PrimaryUsagePage", description.primaryUsagePage);
    addIfPresent(properties_, "PrimaryUsage", description.primaryUsage);
}

void SimulatedHIDDevice::answerRegistryIDWith(HIDValue value) {
    MutexLock lock(mutex_);
    registryID_ = std::move(value);
}

void SimulatedHIDDevice::give(const std::string& key, HIDValue value) {
    MutexLock lock(mutex_);
    properties_.insert_or_assign(key, std::move(value));
}

HIDValue SimulatedHIDDevice::registryID() const {
    if (!isAttached()) return std::monostate{};
    MutexLock lock(mutex_);
    return registryID_;
}

HIDValue SimulatedHIDDevice::copyProperty(std::string_view key) const {
    if (!isAttached()) return std::monostate{};
    MutexLock lock(mutex_);
    const auto found = properties_.find(key);
    return found == properties_.end() ? HIDValue{} : found->second;
}

bool SimulatedHIDDevice::setProperty(std::string_view key, const HIDValue& value) {
    if (!isAttached()) return false;
    MutexLock lock(mutex_);
    properties_.insert_or_assign(std::string(key), value);
    return true;
}

}  // namespace tessara
