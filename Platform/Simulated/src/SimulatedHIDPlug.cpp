#include "SimulatedHIDPlug.h"

#include <utility>

#include "SimulatedHIDConditions.h"
#include "TargetMouse.h"

namespace tessara {
namespace {

constexpr std::size_t vendorInterface = 2;

std::array<HIDInterfaceProperties, SimulatedHIDPlug::interfaceCount> describedInterfaces() {
    const HIDInterfaceProperties common{.vendorID = targetVendorID,
                                        .productID = targetProductID,
                                        .product = "Gaming Mouse",
                                        .manufacturer = "Simulated",
                                        .serialNumber = "0123456789AB",
                                        .locationID = 0x14100000};
    const auto describe = [&](std::vector<HIDUsagePair> usages, std::int64_t inputSize,
                              std::int64_t outputSize) {
        HIDInterfaceProperties described = common;
        described.primaryUsagePage = usages.front().usagePage;
        described.primaryUsage = usages.front().usage;
        described.maxInputReportSize = inputSize;
        described.maxOutputReportSize = outputSize;
        described.usagePairs = std::move(usages);
        return described;
    };
    return {describe({{0x01, 0x02}, {0x01, 0x01}}, 8, 0),
            describe({{0x01, 0x06}, {0x0C, 0x01}}, 8, 1),
            describe({{0xFF00, 0x01}, {0xFF00, 0x02}}, 20, 20)};
}

}  // namespace

/// One opener's view of an interface.
class SimulatedHIDInterface final : public HIDInterface,
                                    public std::enable_shared_from_this<SimulatedHIDInterface> {
  public:
    SimulatedHIDInterface(std::shared_ptr<SimulatedHIDConditions> conditions,
                          std::shared_ptr<SimulatedHIDPlug> plug, std::size_t index,
                          HIDInterfaceProperties properties)
        : conditions_(std::move(conditions)),
          plug_(std::move(plug)),
          index_(index),
          properties_(std::move(properties)) {}
    ~SimulatedHIDInterface() override { close(); }

    const HIDInterfaceProperties& properties() const noexcept override { return properties_; }
    std::uint64_t registryID() const noexcept override { return plug_->registryID(index_); }

    IOReturn open() override {
        if (plug_->isGone()) return IOReturn::noDevice;
        if (conditions_->access != HIDListenEventAccess::granted) return IOReturn::notPermitted;
        if (conditions_->opens.refuses()) return IOReturn::exclusiveAccess;
        if (!isOpen_.exchange(true)) ++conditions_->openCount;
        return IOReturn::success;
    }

    void close() override {
        stopInput();
        if (isOpen_.exchange(false)) --conditions_->openCount;
    }

    void startInput(std::shared_ptr<DispatchQueue> queue, InputHandler handler) override {
        {
            MutexLock lock(mutex_);
            queue_ = std::move(queue);
            handler_ = std::make_shared<InputHandler>(std::move(handler));
        }
        if (index_ == vendorInterface) plug_->addListener(shared_from_this());
    }

    void stopInput() override {
        std::shared_ptr<InputHandler> ended;  // destroyed once the lock is let go
        MutexLock lock(mutex_);
        ended.swap(handler_);
        queue_.reset();
    }

    IOReturn writeReport(std::uint8_t reportID, std::span<const std::uint8_t> report) override {
        if (!isOpen_) return plug_->isGone() ? IOReturn::noDevice : IOReturn::notOpen;
        if (report.empty() || report.front() != reportID) return IOReturn::badArgument;
        conditions_->writeGate.pass();
        if (plug_->isGone()) return IOReturn::noDevice;
        if (conditions_->writes.refuses()) return IOReturn::timeout;
        if (index_ == vendorInterface) plug_->mouse().receive(report);
        return IOReturn::success;
    }

    /// Sends a report of the mouse on its way to the handler, if there is one: to this one and to
    /// no later one.
    void deliver(const SimulatedMouse::Bytes& report, std::chrono::nanoseconds delay) {
        std::shared_ptr<DispatchQueue> queue;
        std::weak_ptr<InputHandler> listening;
        {
            MutexLock lock(mutex_);
            if (!handler_) return;
            queue = queue_;
            listening = handler_;
        }
        auto arrive = [plug = plug_, listening = std::move(listening), report] {
            const auto handler = listening.lock();
            if (!handler || plug->isGone()) return;
            const std::span<const std::uint8_t> bytes(report);
            (*handler)(report.front(), plug->stripsReportIDs() ? bytes.subspan(1) : bytes);
        };
        if (delay == delay.zero()) {
            queue->post(std::move(arrive));
        } else {
            queue->postAt(queue->clock().now() + delay, std::move(arrive));
        }
    }

  private:
    const std::shared_ptr<SimulatedHIDConditions> conditions_;
    const std::shared_ptr<SimulatedHIDPlug> plug_;
    const std::size_t index_;
    const HIDInterfaceProperties properties_;
    std::atomic<bool> isOpen_{false};
    Mutex mutex_;
    std::shared_ptr<DispatchQueue> queue_ TESSARA_GUARDED_BY(mutex_);
    std::shared_ptr<InputHandler> handler_ TESSARA_GUARDED_BY(mutex_);
};

void SimulatedHIDPlug::pull() {
    isGone_ = true;
    mouse_.disconnect();
}

std::array<std::shared_ptr<HIDInterface>, SimulatedHIDPlug::interfaceCount>
SimulatedHIDPlug::interfaces(const std::shared_ptr<SimulatedHIDConditions>& conditions) {
    std::array<std::shared_ptr<HIDInterface>, interfaceCount> found;
    auto described = describedInterfaces();
    for (std::size_t index = 0; index < interfaceCount; ++index) {
        found[index] = std::make_shared<SimulatedHIDInterface>(conditions, shared_from_this(),
                                                               index, std::move(described[index]));
    }
    return found;
}

void SimulatedHIDPlug::addListener(const std::shared_ptr<SimulatedHIDInterface>& listener) {
    MutexLock lock(mutex_);
    std::erase_if(listeners_, [&](const auto& weakKnown) {
        const auto known = weakKnown.lock();
        return !known || known == listener;
    });
    listeners_.push_back(listener);
}

void SimulatedHIDPlug::deliver(const SimulatedMouse::Bytes& report,
                               std::chrono::nanoseconds delay) {
    std::vector<std::weak_ptr<SimulatedHIDInterface>> listeners;
    {
        MutexLock lock(mutex_);
        listeners = listeners_;
    }
    for (const auto& weakListener : listeners) {
        if (const auto listener = weakListener.lock()) listener->deliver(report, delay);
    }
}

}  // namespace tessara
