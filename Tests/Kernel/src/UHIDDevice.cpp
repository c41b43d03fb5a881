#include "Kernel/UHIDDevice.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
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

/// The nodes that udev has made ready in `folder` for a class of devices, as "event3"; nothing when
/// it is not done with all of them.
std::vector<std::string> readyNodes(const fs::path& folder, const std::string& prefix) {
    std::vector<std::string> nodes;
    std::error_code error;
    for (fs::recursive_directory_iterator it(folder, error), end; it != end; it.increment(error)) {
        const std::string name = it->path().filename().string();
        const bool hasNumber =
            name.starts_with(prefix) && name.size() > prefix.size() &&
            name.find_first_not_of("0123456789", prefix.size()) == std::string::npos;
        if (!hasNumber || it->is_symlink() || !it->is_directory()) continue;
        if (!isKnownToUdev(it->path())) return {};
        nodes.push_back(name);
    }
    return nodes;
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
        queue_->post([self = shared_from_this()] { self->descriptor_.close(); });
        queue_->drain();
    }

    /// A whole event is one write, which the kernel takes at once or refuses.
    void write(const uhid_event& event) const {
        if (::write(fd_, &event, sizeof event) != static_cast<ssize_t>(sizeof event)) {
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
};

UHIDDevice::UHIDDevice(Dispatcher& dispatcher, const UHIDDescription& description,
                       OutputHandler onOutput)
    : connection_(std::make_shared<Connection>(dispatcher, std::move(onOutput))) {
    connection_->write(creation(description));
    connection_->start();
    const std::size_t inputs = isInput(description.reportDescriptor) ? 1 : 0;
    const bool isReady = waitFor([&] {
        const fs::path folder = folderOf(description.place);
        if (folder.empty()) return false;
        const auto raw = readyNodes(folder, "hidraw");
        const auto events = readyNodes(folder, "event");
        if (raw.size() != 1 || events.size() != inputs) return false;
        hidrawNode_ = "/dev/" + raw.front();
        if (inputs == 1) eventNode_ = "/dev/input/" + events.front();
        return true;
    });
    if (!isReady) {
        connection_->stop();
        throw std::runtime_error("the nodes of " + description.name + " do not come");
    }
}

UHIDDevice::~UHIDDevice() {
    connection_->stop();
    // The kernel is done with the device when the close returns, udev takes the nodes away after
    // it.
    static_cast<void>(
        waitFor([this] { return !fs::exists(hidrawNode_) && !fs::exists(eventNode_); }));
}

void UHIDDevice::send(std::span<const std::uint8_t> report) const {
    uhid_event event{};
    event.type = UHID_INPUT2;
    event.u.input2.size = static_cast<__u16>(report.size());
    std::ranges::copy(report, event.u.input2.data);
    connection_->write(event);
}

}  // namespace tessara::testing
