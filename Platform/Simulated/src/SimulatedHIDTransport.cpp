#include "Platform/Simulated/SimulatedHIDTransport.h"

#include <algorithm>
#include <atomic>
#include <iterator>
#include <utility>

#include "Platform/Simulated/SimulatedMouse.h"
#include "SimulatedHIDConditions.h"
#include "SimulatedHIDPlug.h"
#include "TargetMouse.h"

namespace tessara {
namespace {

bool isOfTarget(std::int64_t vendorID, std::int64_t productID) {
    return vendorID == targetVendorID && productID == targetProductID;
}

}  // namespace

/// What the transport shares with the mice that are plugged in, any of which may pull itself out.
struct SimulatedHIDTransport::System {
    const std::shared_ptr<SimulatedHIDConditions> conditions =
        std::make_shared<SimulatedHIDConditions>();
    std::atomic<bool> stripsReportIDs{false};

    mutable Mutex mutex;
    std::uint64_t lastRegistryID TESSARA_GUARDED_BY(mutex) = 0x100;
    std::vector<std::shared_ptr<SimulatedHIDPlug>> plugs TESSARA_GUARDED_BY(mutex);
    std::vector<std::weak_ptr<Watch>> watches TESSARA_GUARDED_BY(mutex);

    /// The place of the mouse's plug, or the end.
    [[nodiscard]] auto find(const SimulatedMouse& mouse) const TESSARA_REQUIRES(mutex) {
        return std::ranges::find_if(plugs,
                                    [&](const auto& plug) { return &plug->mouse() == &mouse; });
    }
    void unplug(const SimulatedMouse& mouse);
    [[nodiscard]] std::vector<std::shared_ptr<Watch>> liveWatches();
};

/// A listener to plugs and unplugs. The transport and its owner both know it; only the owner's end
/// ends it.
class SimulatedHIDTransport::Watch final : public std::enable_shared_from_this<Watch> {
  public:
    /// What the owner holds.
    class Handle final : public HIDHotplugWatch {
      public:
        explicit Handle(std::shared_ptr<Watch> watch) : watch_(std::move(watch)) {}
        ~Handle() override { watch_->hasEnded_ = true; }

      private:
        const std::shared_ptr<Watch> watch_;
    };

    Watch(std::shared_ptr<DispatchQueue> queue, HIDHotplugHandlers handlers)
        : queue_(std::move(queue)), handlers_(std::move(handlers)) {}

    void arrived() {
        queue_->post([self = shared_from_this()] {
            if (!self->hasEnded_) self->handlers_.arrived();
        });
    }
    void departed(std::uint64_t registryID) {
        queue_->post([self = shared_from_this(), registryID] {
            if (!self->hasEnded_) self->handlers_.departed(registryID);
        });
    }

  private:
    const std::shared_ptr<DispatchQueue> queue_;
    HIDHotplugHandlers handlers_;  // called on the queue only
    std::atomic<bool> hasEnded_{false};
};

std::vector<std::shared_ptr<SimulatedHIDTransport::Watch>>
SimulatedHIDTransport::System::liveWatches() {
    std::vector<std::shared_ptr<Watch>> live;
    MutexLock lock(mutex);
    std::erase_if(watches, [](const auto& watch) { return watch.expired(); });
    for (const auto& weakWatch : watches) {
        if (auto watch = weakWatch.lock()) live.push_back(std::move(watch));
    }
    return live;
}

void SimulatedHIDTransport::System::unplug(const SimulatedMouse& mouse) {
    std::shared_ptr<SimulatedHIDPlug> plug;
    {
        MutexLock lock(mutex);
        const auto found = find(mouse);
        if (found == plugs.end()) return;
        plug = *found;
        plugs.erase(found);
        plug->pull();
    }
    for (const auto& watch : liveWatches()) {
        for (std::size_t index = 0; index < SimulatedHIDPlug::interfaceCount; ++index)
            watch->departed(plug->registryID(index));
    }
}

SimulatedHIDTransport::SimulatedHIDTransport() : system_(std::make_shared<System>()) {}

SimulatedHIDTransport::~SimulatedHIDTransport() {
    MutexLock lock(system_->mutex);
    for (const auto& plug : system_->plugs)
        plug->pull();
}

void SimulatedHIDTransport::plug(SimulatedMouse& mouse) {
    {
        MutexLock lock(system_->mutex);
        if (system_->find(mouse) != system_->plugs.end()) return;
        const auto plug = std::make_shared<SimulatedHIDPlug>(mouse, system_->lastRegistryID + 1,
                                                             system_->stripsReportIDs.load());
        system_->lastRegistryID += SimulatedHIDPlug::interfaceCount;
        // It is awake before anybody can find it.
        mouse.powerCycle();
        mouse.connect(
            [weakPlug = std::weak_ptr(plug)](const SimulatedMouse::Bytes& report,
                                             std::chrono::nanoseconds delay) {
                if (const auto live = weakPlug.lock()) live->deliver(report, delay);
            },
            [weakSystem = std::weak_ptr(system_), &mouse] {
                if (const auto system = weakSystem.lock()) system->unplug(mouse);
            });
        system_->plugs.push_back(plug);
    }
    for (const auto& watch : system_->liveWatches())
        watch->arrived();
}

void SimulatedHIDTransport::unplug(SimulatedMouse& mouse) {
    system_->unplug(mouse);
}

bool SimulatedHIDTransport::isPlugged(const SimulatedMouse& mouse) const {
    MutexLock lock(system_->mutex);
    return system_->find(mouse) != system_->plugs.end();
}

void SimulatedHIDTransport::stripReportIDs(bool strips) {
    system_->stripsReportIDs = strips;
}

void SimulatedHIDTransport::refuseOpens(std::int64_t count) {
    system_->conditions->opens.refuseNext(count);
}

void SimulatedHIDTransport::refuseWrites(std::int64_t count) {
    system_->conditions->writes.refuseNext(count);
}

void SimulatedHIDTransport::holdWrites() {
    system_->conditions->writeGate.hold();
}

void SimulatedHIDTransport::releaseWrites() {
    system_->conditions->writeGate.release();
}

std::int64_t SimulatedHIDTransport::heldWriteCount() const {
    return system_->conditions->writeGate.waitingCount();
}

void SimulatedHIDTransport::setListenEventAccess(HIDListenEventAccess access) {
    system_->conditions->access = access;
}

std::int64_t SimulatedHIDTransport::openInterfaceCount() const {
    return system_->conditions->openCount;
}

std::vector<std::shared_ptr<HIDInterface>> SimulatedHIDTransport::interfaces(
    std::int64_t vendorID, std::int64_t productID) {
    if (!isOfTarget(vendorID, productID)) return {};
    std::vector<std::shared_ptr<SimulatedHIDPlug>> plugs;
    {
        MutexLock lock(system_->mutex);
        plugs = system_->plugs;
    }
    std::vector<std::shared_ptr<HIDInterface>> found;
    for (const auto& plug : plugs)
        std::ranges::copy(plug->interfaces(system_->conditions), std::back_inserter(found));
    return found;
}

std::unique_ptr<HIDHotplugWatch> SimulatedHIDTransport::watch(std::int64_t vendorID,
                                                              std::int64_t productID,
                                                              std::shared_ptr<DispatchQueue> queue,
                                                              HIDHotplugHandlers handlers) {
    auto watch = std::make_shared<Watch>(std::move(queue), std::move(handlers));
    if (isOfTarget(vendorID, productID)) {
        MutexLock lock(system_->mutex);
        system_->watches.push_back(watch);
    }
    return std::make_unique<Watch::Handle>(std::move(watch));
}

HIDListenEventAccess SimulatedHIDTransport::listenEventAccess() const {
    return system_->conditions->access;
}

}  // namespace tessara
