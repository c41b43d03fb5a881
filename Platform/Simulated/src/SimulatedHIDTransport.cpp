#include "Platform/Simulated/SimulatedHIDTransport.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <utility>

#include "Platform/Simulated/SimulatedMouse.h"

namespace tessara {
namespace {

constexpr std::int64_t simulatedVendorID = 0x046D;
constexpr std::int64_t simulatedProductID = 0xC099;

/// Pointer, keyboard and vendor interface, in the order in which they are found.
std::vector<HIDInterfaceProperties> interfacesOfOnePlug() {
    HIDInterfaceProperties common{.vendorID = simulatedVendorID,
                                  .productID = simulatedProductID,
                                  .product = "Gaming Mouse",
                                  .manufacturer = "Simulated",
                                  .serialNumber = "0123456789AB",
                                  .locationID = 0x14100000};
    HIDInterfaceProperties pointer = common;
    pointer.primaryUsagePage = 0x01;
    pointer.primaryUsage = 0x02;
    pointer.maxInputReportSize = 8;
    pointer.maxOutputReportSize = 0;
    pointer.usagePairs = {{0x01, 0x02}, {0x01, 0x01}};
    HIDInterfaceProperties keyboard = common;
    keyboard.primaryUsagePage = 0x01;
    keyboard.primaryUsage = 0x06;
    keyboard.maxInputReportSize = 8;
    keyboard.maxOutputReportSize = 1;
    keyboard.usagePairs = {{0x01, 0x06}, {0x0C, 0x01}};
    HIDInterfaceProperties vendor = common;
    vendor.primaryUsagePage = 0xFF00;
    vendor.primaryUsage = 0x01;
    vendor.maxInputReportSize = 20;
    vendor.maxOutputReportSize = 20;
    vendor.usagePairs = {{0xFF00, 0x01}, {0xFF00, 0x02}};
    return {pointer, keyboard, vendor};
}

constexpr std::size_t vendorInterface = 2;

}  // namespace

/// What all interfaces and watches share, and what outlives the transport as long as they do.
struct SimulatedHIDTransport::System {
    SimulatedRefusal opens;
    SimulatedRefusal writes;
    std::atomic<HIDListenEventAccess> access{HIDListenEventAccess::granted};
    std::atomic<bool> stripsReportIDs{false};
    std::atomic<std::int64_t> openCount{0};

    mutable Mutex mutex;
    std::uint64_t lastRegistryID TESSARA_GUARDED_BY(mutex) = 0x100;
    std::vector<std::shared_ptr<Plug>> plugs TESSARA_GUARDED_BY(mutex);
    std::vector<std::weak_ptr<Watch>> watches TESSARA_GUARDED_BY(mutex);

    void announceArrival();
    void announceDeparture(std::uint64_t registryID);
    void unplug(const SimulatedMouse& mouse);
    [[nodiscard]] std::vector<std::shared_ptr<Watch>> liveWatches();
};

/// One stay of a mouse in its socket: where its reports go as long as it lasts.
class SimulatedHIDTransport::Plug {
  public:
    Plug(SimulatedMouse& mouse, std::uint64_t firstRegistryID, bool stripsReportIDs)
        : mouse_(mouse), firstRegistryID_(firstRegistryID), stripsReportIDs_(stripsReportIDs) {}

    [[nodiscard]] SimulatedMouse& mouse() const { return mouse_; }
    [[nodiscard]] std::uint64_t registryID(std::size_t index) const {
        return firstRegistryID_ + index;
    }
    [[nodiscard]] bool isGone() const { return isGone_; }
    void pull() { isGone_ = true; }
    [[nodiscard]] bool stripsReportIDs() const { return stripsReportIDs_; }

    void addListener(std::weak_ptr<Interface> listener) {
        MutexLock lock(mutex_);
        std::erase_if(listeners_, [](const auto& known) { return known.expired(); });
        listeners_.push_back(std::move(listener));
    }
    void deliver(const SimulatedMouse::Bytes& report, std::chrono::nanoseconds delay);

  private:
    SimulatedMouse& mouse_;
    const std::uint64_t firstRegistryID_;
    const bool stripsReportIDs_;
    std::atomic<bool> isGone_{false};
    Mutex mutex_;
    std::vector<std::weak_ptr<Interface>> listeners_ TESSARA_GUARDED_BY(mutex_);
};

/// One opener's view of an interface.
class SimulatedHIDTransport::Interface final : public HIDInterface,
                                               public std::enable_shared_from_this<Interface> {
  public:
    Interface(std::shared_ptr<System> system, std::shared_ptr<Plug> plug, std::size_t index,
              HIDInterfaceProperties properties)
        : system_(std::move(system)),
          plug_(std::move(plug)),
          index_(index),
          properties_(std::move(properties)) {}
    ~Interface() override { close(); }

    const HIDInterfaceProperties& properties() const noexcept override { return properties_; }
    std::uint64_t registryID() const noexcept override { return plug_->registryID(index_); }

    IOReturn open() override {
        if (plug_->isGone()) return IOReturn::noDevice;
        if (system_->access != HIDListenEventAccess::granted) return IOReturn::notPermitted;
        if (system_->opens.refuses()) return IOReturn::exclusiveAccess;
        if (!isOpen_.exchange(true)) ++system_->openCount;
        return IOReturn::success;
    }

    void close() override {
        stopInput();
        if (isOpen_.exchange(false)) --system_->openCount;
    }

    void startInput(std::shared_ptr<DispatchQueue> queue, InputHandler handler) override {
        {
            MutexLock lock(mutex_);
            queue_ = std::move(queue);
            handler_ = std::make_shared<InputHandler>(std::move(handler));
        }
        plug_->addListener(weak_from_this());
    }

    void stopInput() override {
        std::shared_ptr<InputHandler> ended;  // destroyed once the lock is let go
        MutexLock lock(mutex_);
        ended.swap(handler_);
        queue_.reset();
    }

    IOReturn writeReport(std::uint8_t reportID, std::span<const std::uint8_t> report) override {
        if (plug_->isGone()) return IOReturn::noDevice;
        if (!isOpen_) return IOReturn::notOpen;
        if (report.empty() || report.front() != reportID) return IOReturn::badArgument;
        if (system_->writes.refuses()) return IOReturn::timeout;
        if (index_ == vendorInterface) plug_->mouse().receive(report);
        return IOReturn::success;
    }

    /// Sends a report of the mouse on its way to the listener, if there is one.
    void deliver(const SimulatedMouse::Bytes& report, std::chrono::nanoseconds delay) {
        std::shared_ptr<DispatchQueue> queue;
        {
            MutexLock lock(mutex_);
            if (!handler_) return;
            queue = queue_;
        }
        auto arrive = [weakSelf = weak_from_this(), report] {
            if (auto self = weakSelf.lock()) self->arrive(report);
        };
        if (delay.count() == 0) {
            queue->post(std::move(arrive));
        } else {
            queue->postAt(queue->clock().now() + delay, std::move(arrive));
        }
    }

  private:
    void arrive(const SimulatedMouse::Bytes& report) {
        std::shared_ptr<InputHandler> handler;
        {
            MutexLock lock(mutex_);
            handler = handler_;
        }
        if (!handler || plug_->isGone()) return;
        const std::span<const std::uint8_t> bytes(report);
        (*handler)(report.front(), plug_->stripsReportIDs() ? bytes.subspan(1) : bytes);
    }

    const std::shared_ptr<System> system_;
    const std::shared_ptr<Plug> plug_;
    const std::size_t index_;
    const HIDInterfaceProperties properties_;
    std::atomic<bool> isOpen_{false};
    Mutex mutex_;
    std::shared_ptr<DispatchQueue> queue_ TESSARA_GUARDED_BY(mutex_);
    std::shared_ptr<InputHandler> handler_ TESSARA_GUARDED_BY(mutex_);
};

void SimulatedHIDTransport::Plug::deliver(const SimulatedMouse::Bytes& report,
                                          std::chrono::nanoseconds delay) {
    std::vector<std::weak_ptr<Interface>> listeners;
    {
        MutexLock lock(mutex_);
        listeners = listeners_;
    }
    for (const auto& weakListener : listeners) {
        if (auto listener = weakListener.lock()) listener->deliver(report, delay);
    }
}

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

void SimulatedHIDTransport::System::announceArrival() {
    for (const auto& watch : liveWatches())
        watch->arrived();
}

void SimulatedHIDTransport::System::announceDeparture(std::uint64_t registryID) {
    for (const auto& watch : liveWatches())
        watch->departed(registryID);
}

void SimulatedHIDTransport::System::unplug(const SimulatedMouse& mouse) {
    std::shared_ptr<Plug> plug;
    {
        MutexLock lock(mutex);
        const auto found = std::ranges::find_if(
            plugs, [&](const auto& candidate) { return &candidate->mouse() == &mouse; });
        if (found == plugs.end()) return;
        plug = *found;
        plugs.erase(found);
    }
    plug->pull();
    plug->mouse().disconnect();
    for (std::size_t index = 0; index <= vendorInterface; ++index) {
        announceDeparture(plug->registryID(index));
    }
}

SimulatedHIDTransport::SimulatedHIDTransport() : system_(std::make_shared<System>()) {}

SimulatedHIDTransport::~SimulatedHIDTransport() {
    MutexLock lock(system_->mutex);
    for (const auto& plug : system_->plugs) {
        plug->pull();
        plug->mouse().disconnect();
    }
}

void SimulatedHIDTransport::plug(SimulatedMouse& mouse) {
    if (isPlugged(mouse)) return;
    std::shared_ptr<Plug> plug;
    {
        MutexLock lock(system_->mutex);
        plug = std::make_shared<Plug>(mouse, system_->lastRegistryID + 1,
                                      system_->stripsReportIDs.load());
        system_->lastRegistryID += vendorInterface + 1;
        system_->plugs.push_back(plug);
    }
    mouse.powerCycle();
    mouse.connect(
        [weakPlug = std::weak_ptr<Plug>(plug)](const SimulatedMouse::Bytes& report,
                                               std::chrono::nanoseconds delay) {
            if (auto live = weakPlug.lock()) live->deliver(report, delay);
        },
        [weakSystem = std::weak_ptr<System>(system_), &mouse] {
            if (auto system = weakSystem.lock()) system->unplug(mouse);
        });
    system_->announceArrival();
}

void SimulatedHIDTransport::unplug(SimulatedMouse& mouse) {
    system_->unplug(mouse);
}

bool SimulatedHIDTransport::isPlugged(const SimulatedMouse& mouse) const {
    MutexLock lock(system_->mutex);
    return std::ranges::any_of(system_->plugs,
                               [&](const auto& plug) { return &plug->mouse() == &mouse; });
}

void SimulatedHIDTransport::stripReportIDs(bool strips) {
    system_->stripsReportIDs = strips;
}

void SimulatedHIDTransport::refuseOpens(std::int64_t count) {
    system_->opens.refuseNext(count);
}

void SimulatedHIDTransport::refuseWrites(std::int64_t count) {
    system_->writes.refuseNext(count);
}

void SimulatedHIDTransport::setListenEventAccess(HIDListenEventAccess access) {
    system_->access = access;
}

std::int64_t SimulatedHIDTransport::openInterfaceCount() const {
    return system_->openCount;
}

std::vector<std::shared_ptr<HIDInterface>> SimulatedHIDTransport::interfaces(
    std::int64_t vendorID, std::int64_t productID) {
    if (vendorID != simulatedVendorID || productID != simulatedProductID) return {};
    std::vector<std::shared_ptr<Plug>> plugs;
    {
        MutexLock lock(system_->mutex);
        plugs = system_->plugs;
    }
    std::vector<std::shared_ptr<HIDInterface>> found;
    for (const auto& plug : plugs) {
        std::size_t index = 0;
        for (auto& properties : interfacesOfOnePlug()) {
            found.push_back(
                std::make_shared<Interface>(system_, plug, index++, std::move(properties)));
        }
    }
    return found;
}

std::unique_ptr<HIDHotplugWatch> SimulatedHIDTransport::watch(std::int64_t vendorID,
                                                              std::int64_t productID,
                                                              std::shared_ptr<DispatchQueue> queue,
                                                              HIDHotplugHandlers handlers) {
    auto watch = std::make_shared<Watch>(std::move(queue), std::move(handlers));
    if (vendorID == simulatedVendorID && productID == simulatedProductID) {
        MutexLock lock(system_->mutex);
        system_->watches.push_back(watch);
    }
    return std::make_unique<Watch::Handle>(std::move(watch));
}

HIDListenEventAccess SimulatedHIDTransport::listenEventAccess() const {
    return system_->access;
}

}  // namespace tessara
