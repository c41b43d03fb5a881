#include "Kernel/UHIDDevice.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>

#include <asio/any_io_executor.hpp>
#include <asio/posix/stream_descriptor.hpp>
#include <fcntl.h>
#include <linux/uhid.h>
#include <unistd.h>

#include "Kernel/WaitFor.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/Mutex.h"

namespace tessara::testing {
namespace {

namespace fs = std::filesystem;

template <std::size_t Size>
void copyText(__u8 (&field)[Size], const std::string& text) {
    std::memcpy(field, text.data(), std::min(text.size(), Size - 1));
}

uhid_event creation(const UHIDDescription& description) {
    uhid_event event{};
    event.type = UHID_CREATE2;
    auto& request = event.u.create2;
    copyText(request.name, description.name);
    copyText(request.phys, description.place);
    copyText(request.uniq, description.serialNumber);
    request.bus = BUS_USB;
    request.vendor = description.vendorID;
    request.product = description.productID;
    request.rd_size = static_cast<__u16>(description.reportDescriptor.size());
    std::ranges::copy(description.reportDescriptor, request.rd_data);
    return event;
}

bool hasLine(const fs::path& file, const std::string& wanted) {
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) {
        if (line == wanted) return true;
    }
    return false;
}

/// The kernel's folder of the HID device that is plugged in at `place`; empty when there is none.
fs::path folderOf(const std::string& place) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator("/sys/bus/hid/devices", error)) {
        if (hasLine(entry.path() / "uevent", "HID_PHYS=" + place)) return entry.path();
    }
    return {};
}

/// Whether udev is done with a node: its database has an entry for it.
bool isKnownToUdev(const fs::path& folder) {
    std::ifstream stream(folder / "dev");
    std::string number;
    return std::getline(stream, number) && fs::exists("/run/udev/data/c" + number);
}

/// The one node in `folder` whose name begins like that, as "event3", once udev has made it ready;
/// else nothing.
std::optional<std::string> readyNode(const fs::path& folder, const std::string& beginning) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
        std::string name = entry.path().filename().string();
        if (name.starts_with(beginning) && isKnownToUdev(entry.path())) return name;
    }
    return std::nullopt;
}

/// As above, for the node of the one input device that the kernel has made of a HID device.
std::optional<std::string> readyEventNode(const fs::path& folder) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder / "input", error)) {
        if (auto node = readyNode(entry.path(), "event")) return node;
    }
    return std::nullopt;
}

/// Whether the kernel makes an input device of a descriptor: those that begin with a pointer or a
/// keyboard get one for all of their collections, and the vendor's own get none.
bool isInput(std::span<const std::uint8_t> descriptor) {
    constexpr std::array<std::uint8_t, 2> genericDesktop{0x05, 0x01};
    return std::ranges::equal(descriptor.first(2), genericDesktop);
}

}  // namespace

class UHIDDevice::Connection : public std::enable_shared_from_this<Connection> {
  public:
    Connection(Dispatcher& dispatcher, OutputHandler onOutput)
        : queue_(dispatcher.makeQueue("ai.tessara.test.uhid", QualityOfService::userInteractive)),
          fd_(::open("/dev/uhid", O_RDWR | O_CLOEXEC | O_NONBLOCK)),
          descriptor_(queue_->executor()),
          onOutput_(std::move(onOutput)) {
        if (fd_ < 0) throw std::system_error(errno, std::generic_category(), "/dev/uhid");
        descriptor_.assign(fd_);
    }

    void start() {
        queue_->post([self = shared_from_this()] { self->listen(); });
    }

    void stop() {
        {
            MutexLock lock(mutex_);
            isOpen_ = false;
        }
        queue_->post([self = shared_from_this()] { self->descriptor_.close(); });
        queue_->drain();
    }

    /// A whole event is one write, which the kernel takes at once or refuses. One for a device that
    /// is unplugged is lost.
    void write(const uhid_event& event) {
        MutexLock lock(mutex_);
        if (isOpen_ && ::write(fd_, &event, sizeof event) != static_cast<ssize_t>(sizeof event)) {
            throw std::system_error(errno, std::generic_category(), "writing to /dev/uhid");
        }
    }

  private:
    void listen() {
        descriptor_.async_wait(asio::posix::stream_descriptor::wait_read,
                               [self = shared_from_this()](const std::error_code& error) {
                                   if (error) return;
                                   self->takeEvents();
                                   self->listen();
                               });
    }

    void takeEvents() {
        uhid_event event{};
        while (::read(fd_, &event, sizeof event) > 0) {
            if (event.type == UHID_OUTPUT) {
                onOutput_({event.u.output.data, event.u.output.size});
            } else if (event.type == UHID_GET_REPORT) {
                const auto id = event.u.get_report.id;
                event = {};
                event.type = UHID_GET_REPORT_REPLY;
                event.u.get_report_reply.id = id;
                event.u.get_report_reply.err = EIO;
                write(event);
            } else if (event.type == UHID_SET_REPORT) {
                const auto id = event.u.set_report.id;
                event = {};
                event.type = UHID_SET_REPORT_REPLY;
                event.u.set_report_reply.id = id;
                event.u.set_report_reply.err = EIO;
                write(event);
            }
        }
    }

    const std::shared_ptr<DispatchQueue> queue_;
    const int fd_;
    asio::posix::stream_descriptor descriptor_;  // owned by the queue
    const OutputHandler onOutput_;
    Mutex mutex_;
    bool isOpen_ TESSARA_GUARDED_BY(mutex_) = true;
};

UHIDDevice::UHIDDevice(Dispatcher& dispatcher, UHIDDescription description, OutputHandler onOutput)
    : description_(std::move(description)),
      connection_(std::make_shared<Connection>(dispatcher, std::move(onOutput))) {
    connection_->write(creation(description_));
    connection_->start();
}

UHIDDevice::~UHIDDevice() {
    unplug();
    static_cast<void>(
        waitFor([this] { return !fs::exists(hidrawNode_) && !fs::exists(eventNode_); }));
}

void UHIDDevice::awaitNodes() {
    const bool isReady = waitFor([this] {
        const fs::path folder = folderOf(description_.place);
        const auto raw = readyNode(folder / "hidraw", "hidraw");
        if (!raw) return false;
        hidrawNode_ = "/dev/" + *raw;
        if (!isInput(description_.reportDescriptor)) return true;
        const auto event = readyEventNode(folder);
        if (event) eventNode_ = "/dev/input/" + *event;
        return event.has_value();
    });
    if (!isReady) throw std::runtime_error("the nodes of " + description_.name + " do not come");
}

void UHIDDevice::unplug() {
    connection_->stop();
}

void UHIDDevice::send(std::span<const std::uint8_t> report) const {
    uhid_event event{};
    event.type = UHID_INPUT2;
    event.u.input2.size = static_cast<__u16>(report.size());
    std::ranges::copy(report, event.u.input2.data);
    connection_->write(event);
}

}  // namespace tessara::testing
