#include "TessaraEngine/DeviceScope.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <utility>

#include "HIDValueReading.h"
#include "Platform/Dispatch/Clock.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/Mutex.h"
#include "Platform/HIDEventSystem.h"
#include "Platform/MouseEvents.h"

namespace tessara {
namespace {

/// Which calls the system has; asked once, since every event needs to know.
struct Abilities {
    explicit Abilities(const HIDEventSystem& system)
        : readsRegistryIDs(system.resolves(HIDSymbol::ioHIDServiceClientGetRegistryIDRaw)),
          readsProperties(system.resolves(HIDSymbol::ioHIDServiceClientCopyProperty)),
          listsServices(system.resolves(HIDSymbol::ioHIDEventSystemClientCreateSimpleClient) &&
                        system.resolves(HIDSymbol::ioHIDEventSystemClientCopyServices)),
          identifiesEvents(readsRegistryIDs && listsServices &&
                           system.resolves(HIDSymbol::cgEventCopyIOHIDEvent) &&
                           system.resolves(HIDSymbol::ioHIDEventGetSenderID)) {}

    bool readsRegistryIDs;
    bool readsProperties;
    bool listsServices;
    bool identifiesEvents;
};

/// The sender's identifier; 0 when the event has none.
std::uint64_t deviceSenderID(const HIDEventSystem& system, const CGEvent& event) {
    const std::uint64_t sender = system.senderID(event).value_or(0);
    if (sender != 0 || !isButtonOrDragEvent(event.type)) return sender;
    const std::int64_t field = event.integerValue(CGEventField::mouseEventSenderID);
    return field >= 1 ? static_cast<std::uint64_t>(field) : 0;
}

}  // namespace

std::int64_t DeviceScope::Counters::total() const {
    return target + foreign + unidentifiedNoHIDEvent + unidentifiedUnknownSender +
           unidentifiedSPIUnavailable;
}

class DeviceScope::Tables : public std::enable_shared_from_this<Tables> {
  public:
    Tables(std::vector<HIDPPDeviceMatch> matches, HIDEventSystem& system, Dispatcher& dispatcher)
        : system_(system),
          abilities_(system),
          clock_(dispatcher.clock()),
          refreshQueue_(
              dispatcher.makeQueue("ai.tessara.device-scope.refresh", QualityOfService::utility)),
          matches_(std::move(matches)) {}

    ScopeDecision decide(const CGEvent& event);
    void countSynthetic();
    void refresh(bool force);
    void refreshNow();

    std::vector<HIDPPDeviceMatch> matches() const;
    void setMatches(std::vector<HIDPPDeviceMatch> matches);
    std::vector<ScopedDevice> knownDevices() const;
    std::vector<ScopedDevice> targetDevices() const;
    bool isTargetAttached() const;
    Counters counters() const;
    void resetCounters();

    const std::shared_ptr<DispatchQueue>& refreshQueue() const { return refreshQueue_; }

  private:
    void performRefresh();
    void replaceTables(std::vector<ScopedDevice> services);
    std::optional<ScopedDevice> describe(const HIDService& service) const;

    HIDEventSystem& system_;
    const Abilities abilities_;
    const Clock& clock_;
    const std::shared_ptr<DispatchQueue> refreshQueue_;

    mutable Mutex mutex_;
    std::vector<HIDPPDeviceMatch> matches_ TESSARA_GUARDED_BY(mutex_);
    std::vector<ScopedDevice> services_ TESSARA_GUARDED_BY(mutex_);  // by rising registry ID
    // The registry IDs of all of them and of the targets among them. Sorted and in one piece: a
    // handful of numbers is found faster so than by hashing.
    std::vector<std::uint64_t> knownRegistryIDs_ TESSARA_GUARDED_BY(mutex_);
    std::vector<std::uint64_t> targetRegistryIDs_ TESSARA_GUARDED_BY(mutex_);
    std::optional<TimePoint> lastRefresh_ TESSARA_GUARDED_BY(mutex_);  ///< when it was started
    bool refreshInFlight_ TESSARA_GUARDED_BY(mutex_) = false;
    bool refreshPending_ TESSARA_GUARDED_BY(mutex_) = false;
    Counters counters_ TESSARA_GUARDED_BY(mutex_);
};

ScopeDecision DeviceScope::Tables::decide(const CGEvent& event) {
    if (!abilities_.identifiesEvents) {
        MutexLock lock(mutex_);
        counters_.unidentifiedSPIUnavailable += 1;
        return UnidentifiedDevice{UnidentifiedReason::spiUnavailable};
    }
    const std::uint64_t sender = deviceSenderID(system_, event);
    {
        MutexLock lock(mutex_);
        if (sender == 0) {
            counters_.unidentifiedNoHIDEvent += 1;
            return UnidentifiedDevice{UnidentifiedReason::noHIDEvent};
        }
        if (std::ranges::binary_search(targetRegistryIDs_, sender)) {
            counters_.target += 1;
            return TargetDevice{DeviceID{sender}};
        }
        if (std::ranges::binary_search(knownRegistryIDs_, sender)) {
            counters_.foreign += 1;
            return ForeignDevice{DeviceID{sender}};
        }
        counters_.unidentifiedUnknownSender += 1;
    }
    refresh(false);
    return UnidentifiedDevice{UnidentifiedReason::unknownSender};
}

void DeviceScope::Tables::countSynthetic() {
    MutexLock lock(mutex_);
    counters_.target += 1;
}

void DeviceScope::Tables::refresh(bool force) {
    constexpr std::chrono::duration<double, std::milli> interval{refreshIntervalMillis};
    {
        MutexLock lock(mutex_);
        if (refreshInFlight_) {
            refreshPending_ = refreshPending_ || force;
            return;
        }
        const TimePoint now = clock_.now();
        if (!force && lastRefresh_ && now - *lastRefresh_ < interval) return;
        lastRefresh_ = now;
        refreshInFlight_ = true;
    }
    refreshQueue_->post([weak = weak_from_this()] {
        if (const auto tables = weak.lock()) tables->performRefresh();
    });
}

void DeviceScope::Tables::refreshNow() {
    {
        MutexLock lock(mutex_);
        lastRefresh_ = clock_.now();
        refreshInFlight_ = true;
    }
    performRefresh();
}

void DeviceScope::Tables::performRefresh() {
    if (abilities_.listsServices) {
        if (const auto services = system_.services()) {
            std::map<std::uint64_t, ScopedDevice> described;
            for (const auto& service : *services) {
                if (auto device = describe(*service)) {
                    const std::uint64_t registryID = device->registryID;
                    described.insert_or_assign(registryID, std::move(*device));
                }
            }
            std::vector<ScopedDevice> sorted;
            sorted.reserve(described.size());
            for (auto& [registryID, device] : described)
                sorted.push_back(std::move(device));
            // A system without a single input device is not to be believed.
            if (!sorted.empty()) replaceTables(std::move(sorted));
        }
    }

    bool goesAgain = false;
    {
        MutexLock lock(mutex_);
        goesAgain = std::exchange(refreshPending_, false);
        refreshInFlight_ = false;
    }
    if (goesAgain) refresh(true);
}

void DeviceScope::Tables::replaceTables(std::vector<ScopedDevice> services) {
    // Events wait for the lock, so all the work is done without it. Matches that are set meanwhile
    // force a refresh of their own.
    const std::vector<HIDPPDeviceMatch> wanted = matches();
    std::vector<std::uint64_t> known;
    std::vector<std::uint64_t> targets;
    for (const ScopedDevice& device : services) {
        known.push_back(device.registryID);
        if (std::ranges::any_of(wanted, [&](const auto& match) { return device.matches(match); }))
            targets.push_back(device.registryID);
    }
    MutexLock lock(mutex_);
    services_.swap(services);
    knownRegistryIDs_.swap(known);
    targetRegistryIDs_.swap(targets);
    counters_.refreshes += 1;
}

std::optional<ScopedDevice> DeviceScope::Tables::describe(const HIDService& service) const {
    if (!abilities_.readsRegistryIDs) return std::nullopt;
    const auto registryID = registryIDFrom(service.registryID());
    if (!registryID) return std::nullopt;

    ScopedDevice device;
    device.registryID = *registryID;
    if (!abilities_.readsProperties) return device;
    device.vendorID = integerFrom(service.copyProperty("VendorID"));
    device.productID = integerFrom(service.copyProperty("ProductID"));
    device.product = textFrom(service.copyProperty("Product"));
    device.transport = textFrom(service.copyProperty("Transport"));
    device.primaryUsagePage = integerFrom(service.copyProperty("PrimaryUsagePage"));
    device.primaryUsage = integerFrom(service.copyProperty("PrimaryUsage"));
    return device;
}

std::vector<HIDPPDeviceMatch> DeviceScope::Tables::matches() const {
    MutexLock lock(mutex_);
    return matches_;
}

void DeviceScope::Tables::setMatches(std::vector<HIDPPDeviceMatch> matches) {
    {
        MutexLock lock(mutex_);
        matches_.swap(matches);
    }
    refresh(true);
}

std::vector<ScopedDevice> DeviceScope::Tables::knownDevices() const {
    MutexLock lock(mutex_);
    return services_;
}

std::vector<ScopedDevice> DeviceScope::Tables::targetDevices() const {
    MutexLock lock(mutex_);
    std::vector<ScopedDevice> targets;
    for (const ScopedDevice& device : services_) {
        if (std::ranges::binary_search(targetRegistryIDs_, device.registryID))
            targets.push_back(device);
    }
    return targets;
}

bool DeviceScope::Tables::isTargetAttached() const {
    MutexLock lock(mutex_);
    return !targetRegistryIDs_.empty();
}

DeviceScope::Counters DeviceScope::Tables::counters() const {
    MutexLock lock(mutex_);
    return counters_;
}

void DeviceScope::Tables::resetCounters() {
    MutexLock lock(mutex_);
    counters_ = {};
}

DeviceScope::DeviceScope(std::vector<HIDPPDeviceMatch> matches, HIDEventSystem& system,
                         Dispatcher& dispatcher)
    : tables_(std::make_shared<Tables>(std::move(matches), system, dispatcher)) {
    tables_->refresh(false);
}

DeviceScope::~DeviceScope() {
    const std::shared_ptr<DispatchQueue> queue = tables_->refreshQueue();
    tables_.reset();  // a refresh that has not begun finds nothing to do
    if (!queue->isCurrent()) queue->drain();
}

ScopeDecision DeviceScope::decide(const CGEvent& event) {
    if (syntheticSourceTag &&
        event.integerValue(CGEventField::eventSourceUserData) == *syntheticSourceTag) {
        tables_->countSynthetic();
        return TargetDevice{syntheticDeviceID};
    }
    return tables_->decide(event);
}

void DeviceScope::refresh(bool force) {
    tables_->refresh(force);
}

void DeviceScope::refreshNow() {
    tables_->refreshNow();
}

std::vector<HIDPPDeviceMatch> DeviceScope::matches() const {
    return tables_->matches();
}

void DeviceScope::setMatches(std::vector<HIDPPDeviceMatch> matches) {
    tables_->setMatches(std::move(matches));
}

std::vector<ScopedDevice> DeviceScope::knownDevices() const {
    return tables_->knownDevices();
}

std::vector<ScopedDevice> DeviceScope::targetDevices() const {
    return tables_->targetDevices();
}

bool DeviceScope::isTargetAttached() const {
    return tables_->isTargetAttached();
}

DeviceScope::Counters DeviceScope::snapshotCounters() const {
    return tables_->counters();
}

void DeviceScope::resetCounters() {
    tables_->resetCounters();
}

}  // namespace tessara
