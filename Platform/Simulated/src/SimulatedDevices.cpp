#include "Platform/Simulated/SimulatedDevices.h"

#include <utility>

namespace tessara {
namespace {

/// Identifiers of devices are larger than any other number about, as on a real system, so that
/// nothing else is taken for one.
constexpr std::uint64_t firstID = 0x1'0000'0300;

}  // namespace

SimulatedDevices::SimulatedDevices() : lastID_(firstID) {}

std::shared_ptr<SimulatedHIDDevice> SimulatedDevices::attach(
    const SimulatedDeviceDescription& description) {
    MutexLock lock(mutex_);
    attached_.push_back(std::make_shared<SimulatedHIDDevice>(++lastID_, description));
    return attached_.back();
}

void SimulatedDevices::detach(SimulatedHIDDevice& device) {
    MutexLock lock(mutex_);
    device.markDetached();
    std::erase_if(attached_, [&](const auto& held) { return held.get() == &device; });
}

std::vector<std::shared_ptr<SimulatedHIDDevice>> SimulatedDevices::attached() const {
    MutexLock lock(mutex_);
    return attached_;
}

std::uint32_t SimulatedDevices::bit(HIDSymbol symbol) {
    return 1U << static_cast<std::uint32_t>(symbol);
}

void SimulatedDevices::hide(HIDSymbol symbol) {
    hiddenSymbols_.fetch_or(bit(symbol));
}

void SimulatedDevices::reveal(HIDSymbol symbol) {
    hiddenSymbols_.fetch_and(~bit(symbol));
}

void SimulatedDevices::reportSendersBy(SenderReporting reporting) {
    senderReporting_.store(reporting);
}

SenderReporting SimulatedDevices::senderReporting() const {
    return senderReporting_.load();
}

void SimulatedDevices::refuseEnumerations(std::int64_t count) {
    enumerations_.refuseNext(count);
}

void SimulatedDevices::enumerateNothing(bool isEmpty) {
    enumeratesNothing_.store(isEmpty);
}

void SimulatedDevices::duringNextEnumeration(std::function<void()> hook) {
    MutexLock lock(mutex_);
    duringNextEnumeration_ = std::move(hook);
}

std::int64_t SimulatedDevices::enumerationCount() const {
    return enumerationCount_.load();
}

bool SimulatedDevices::resolves(HIDSymbol symbol) const {
    return (hiddenSymbols_.load() & bit(symbol)) == 0;
}

std::optional<std::uint64_t> SimulatedDevices::senderID(const CGEvent& event) const {
    if (event.hidEventReference == 0) return std::nullopt;
    return event.hidEventReference;
}

std::optional<std::vector<std::shared_ptr<HIDService>>> SimulatedDevices::services() {
    enumerationCount_.fetch_add(1);
    std::vector<std::shared_ptr<HIDService>> found;
    std::function<void()> hook;
    {
        MutexLock lock(mutex_);
        hook.swap(duringNextEnumeration_);
        found.assign(attached_.begin(), attached_.end());
    }
    if (hook) hook();
    if (enumerations_.refuses()) return std::nullopt;
    if (enumeratesNothing_.load()) found.clear();
    return found;
}

}  // namespace tessara
