#include "Platform/Linux/HidrawTransport.h"

#include <algorithm>
#include <atomic>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "Platform/Linux/HIDDeviceName.h"
#include "Platform/Linux/HIDReportDescriptor.h"
#include "Platform/Linux/HidrawInterface.h"
#include "Platform/Linux/PosixFileSystem.h"
#include "Platform/Linux/Udev.h"
#include "ReadableWatch.h"

namespace tessara {
namespace {

constexpr const char* subsystem = "hidraw";

struct DeviceIDs {
    std::int64_t vendorID = 0;
    std::int64_t productID = 0;
};

struct Node {
    HIDDeviceName name;
    UdevDevice device;
};

/// The name of the device that a node belongs to, if it has these ids.
std::optional<HIDDeviceName> nameOf(const UdevDevice& node, const DeviceIDs& ids) {
    const auto name = HIDDeviceName::inPath(node.sysPath());
    if (!name || name->vendorID != ids.vendorID || name->productID != ids.productID) {
        return std::nullopt;
    }
    return name;
}

/// In the order in which the kernel found them: that of a device's interfaces.
std::vector<Node> nodesOf(const Udev& udev, const DeviceIDs& ids) {
    std::vector<Node> nodes;
    for (auto& device : udev.devices(subsystem)) {
        if (const auto name = nameOf(device, ids)) nodes.push_back({*name, std::move(device)});
    }
    std::ranges::sort(nodes, {}, [](const Node& node) { return node.name.instance; });
    return nodes;
}

std::optional<std::string> notEmpty(std::optional<std::string> text) {
    return text && !text->empty() ? std::move(text) : std::nullopt;
}

std::optional<HIDReportDescriptor> descriptorOf(const UdevDevice& hidDevice) {
    constexpr std::size_t atMost = 1 << 16;  // several times the kernel's limit
    const auto text = PosixFileSystem().read(hidDevice.sysPath() + "/report_descriptor", atMost);
    if (!text) return std::nullopt;
    const std::vector<std::uint8_t> bytes(text->begin(), text->end());
    auto descriptor = HIDReportDescriptor::parse(bytes);
    if (!descriptor) return std::nullopt;
    return std::move(*descriptor);
}

/// Without a descriptor that can be read the interface is known by its ids alone.
std::shared_ptr<HIDInterface> interfaceOf(const Node& node) {
    HIDInterfaceProperties properties{.vendorID = node.name.vendorID,
                                      .productID = node.name.productID};
    HidrawInterface::Place place{.node = node.device.node(), .sysPath = node.device.sysPath()};
    if (const auto hidDevice = node.device.parent("hid")) {
        properties.product = notEmpty(hidDevice->property("HID_NAME"));
        properties.serialNumber = notEmpty(hidDevice->property("HID_UNIQ"));
        if (auto descriptor = descriptorOf(*hidDevice)) {
            properties.maxInputReportSize = descriptor->maxInputReportSize;
            properties.maxOutputReportSize = descriptor->maxOutputReportSize;
            properties.usagePairs = std::move(descriptor->applicationCollections);
            place.hasReportIDs = descriptor->hasReportIDs;
        }
    }
    if (!properties.usagePairs.empty()) {
        properties.primaryUsagePage = properties.usagePairs.front().usagePage;
        properties.primaryUsage = properties.usagePairs.front().usage;
    }
    if (const auto usbDevice = node.device.parent("usb", "usb_device")) {
        // The HID device's name is maker and product in one.
        if (auto product = notEmpty(usbDevice->attribute("product"))) {
            properties.product = std::move(product);
        }
        properties.manufacturer = notEmpty(usbDevice->attribute("manufacturer"));
        properties.locationID = locationOfUSBDevice(usbDevice->sysName());
    }
    return std::make_shared<HidrawInterface>(std::move(properties), node.name.instance,
                                             std::move(place));
}

/// Listens on the HID queue, which owns it but for the flag.
class Listener {
  public:
    Listener(DeviceIDs ids, Udev udev, UdevMonitor monitor, HIDHotplugHandlers handlers)
        : ids_(ids),
          udev_(std::move(udev)),
          monitor_(std::move(monitor)),
          handlers_(std::move(handlers)),
          present_(presentNow()) {}

    void end() { hasEnded_ = true; }

    /// Takes all announcements that are waiting.
    void receive() {
        bool arrived = false;
        while (!hasEnded_) {
            const auto announced = monitor_.receive();
            if (!announced) {
                arrived |= catchUp();
                break;
            }
            if (!*announced) break;
            arrived |= take(**announced);
        }
        if (arrived && !hasEnded_) handlers_.arrived();
    }

  private:
    using RegistryIDs = std::set<std::uint64_t>;

    [[nodiscard]] RegistryIDs presentNow() const {
        RegistryIDs present;
        for (const auto& node : nodesOf(udev_, ids_))
            present.insert(node.name.instance);
        return present;
    }

    /// True when something came that was not there before.
    bool take(const UdevDevice& announced) {
        const auto name = nameOf(announced, ids_);
        if (!name) return false;
        if (announced.action() == "add") return present_.insert(name->instance).second;
        if (announced.action() == "remove" && present_.erase(name->instance) > 0) {
            handlers_.departed(name->instance);
        }
        return false;
    }

    /// Makes up for announcements that were lost. True as above.
    bool catchUp() {
        const auto before = std::exchange(present_, presentNow());
        for (const auto registryID : before) {
            if (!present_.contains(registryID) && !hasEnded_) handlers_.departed(registryID);
        }
        return !std::ranges::includes(before, present_);
    }

    const DeviceIDs ids_;
    const Udev udev_;
    UdevMonitor monitor_;
    HIDHotplugHandlers handlers_;
    RegistryIDs present_;
    std::atomic<bool> hasEnded_{false};
};

class Watch final : public HIDHotplugWatch {
  public:
    Watch(std::shared_ptr<DispatchQueue> queue, int descriptor, std::shared_ptr<Listener> listener)
        : listener_(listener), readable_(std::move(queue), descriptor, [listener] {
              listener->receive();
              return true;
          }) {}
    ~Watch() override { listener_->end(); }

    [[nodiscard]] bool isWaiting() const { return readable_.isWaiting(); }

  private:
    const std::shared_ptr<Listener> listener_;
    const ReadableWatch readable_;
};

}  // namespace

std::vector<std::shared_ptr<HIDInterface>> HidrawTransport::interfaces(std::int64_t vendorID,
                                                                       std::int64_t productID) {
    std::vector<std::shared_ptr<HIDInterface>> found;
    for (const auto& node : nodesOf(Udev(), {vendorID, productID}))
        found.push_back(interfaceOf(node));
    return found;
}

std::unique_ptr<HIDHotplugWatch> HidrawTransport::watch(std::int64_t vendorID,
                                                        std::int64_t productID,
                                                        std::shared_ptr<DispatchQueue> queue,
                                                        HIDHotplugHandlers handlers) {
    Udev udev;
    auto monitor = udev.monitor(std::span(&subsystem, 1));
    if (!monitor) return nullptr;
    const int descriptor = monitor->fileDescriptor();
    // The listener looks at what is there once the monitor listens, so that nothing is missed in
    // between.
    auto listener = std::make_shared<Listener>(DeviceIDs{vendorID, productID}, std::move(udev),
                                               std::move(*monitor), std::move(handlers));
    auto watch = std::make_unique<Watch>(std::move(queue), descriptor, std::move(listener));
    if (!watch->isWaiting()) return nullptr;
    return watch;
}

HIDListenEventAccess HidrawTransport::listenEventAccess() const {
    const auto nodes = nodesOf(Udev(), {vendorID_, productID_});
    if (nodes.empty()) return HIDListenEventAccess::unknown;
    // Not by opening them, which would wake the device.
    const bool mayOpenAll = std::ranges::all_of(nodes, [](const Node& node) {
        return ::faccessat(AT_FDCWD, node.device.node().c_str(), R_OK | W_OK, AT_EACCESS) == 0;
    });
    return mayOpenAll ? HIDListenEventAccess::granted : HIDListenEventAccess::denied;
}

}  // namespace tessara
