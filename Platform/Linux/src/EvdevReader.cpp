#include "EvdevReader.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <libevdev/libevdev.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {
namespace {

/// Room for several reports, which come together only after a delay.
constexpr std::size_t eventsPerRead = 64;

/// Reads when libevdev has nothing left of its last read, and not once for every event.
constexpr unsigned readWhenEmpty = LIBEVDEV_READ_FLAG_NORMAL | LIBEVDEV_READ_FLAG_BLOCKING;
/// Reads nothing, and tells of the differences in state.
constexpr unsigned tellDifferences = LIBEVDEV_READ_FLAG_SYNC | LIBEVDEV_READ_FLAG_BLOCKING;

bool hasState(const input_event& event) {
    return event.type == EV_KEY || event.type == EV_LED || event.type == EV_SW;
}

}  // namespace

void EvdevReader::Free::operator()(libevdev* device) const noexcept {
    libevdev_free(device);
}

std::expected<std::shared_ptr<EvdevReader>, int> EvdevReader::open(
    const std::string& node, std::shared_ptr<DispatchQueue> queue) {
    auto reader = std::make_shared<EvdevReader>(std::move(queue));
    if (const int error = reader->openNode(node)) return std::unexpected(error);
    return reader;
}

EvdevReader::EvdevReader(std::shared_ptr<DispatchQueue> queue) : queue_(std::move(queue)) {}

EvdevReader::~EvdevReader() = default;

int EvdevReader::openNode(const std::string& node) {
    auto opened = FileDescriptor::open(node, O_RDONLY | O_NONBLOCK);
    if (!opened) return opened.error();
    libevdev* device = nullptr;
    if (const int error = libevdev_new_from_fd(opened->get(), &device); error != 0) return -error;
    device_.reset(device);
    if (const int error = libevdev_set_clock_id(device, CLOCK_MONOTONIC); error != 0) return -error;
    descriptor_ = *std::move(opened);
    return 0;
}

bool EvdevReader::start(Handlers handlers) {
    handlers_ = std::move(handlers);
    watch_.emplace(queue_, descriptor_.get(), [weak = weak_from_this()] {
        const auto self = weak.lock();
        return self && self->read();
    });
    return watch_->isWaiting();
}

void EvdevReader::close() {
    watch_.reset();
    descriptor_.reset();
}

int EvdevReader::setGrabbed(bool isGrabbed) {
    return -libevdev_grab(device_.get(), isGrabbed ? LIBEVDEV_GRAB : LIBEVDEV_UNGRAB);
}

bool EvdevReader::isAnyKeyDown() const {
    std::array<std::uint8_t, KEY_CNT / 8> bits{};
    if (::ioctl(libevdev_get_fd(device_.get()), EVIOCGKEY(bits.size()), bits.data()) < 0)
        return true;
    return std::ranges::any_of(bits, [](std::uint8_t byte) { return byte != 0; });
}

PressedKeys::Keys EvdevReader::keysDown() const {
    PressedKeys::Keys down;
    for (unsigned code = 0; code < down.size(); ++code)
        down[code] = libevdev_get_event_value(device_.get(), EV_KEY, code) != 0;
    return down;
}

bool EvdevReader::isCapsLockLit() const {
    return libevdev_get_event_value(device_.get(), EV_LED, LED_CAPSL) != 0;
}

/// One read as a rule takes all that there is. What is left calls here again.
bool EvdevReader::read() {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): what is looked at is what was read.
    std::array<input_event, eventsPerRead> events;
    const ssize_t size = ::read(descriptor_.get(), events.data(), sizeof events);
    if (size < 0) {
        if (errno == EAGAIN || errno == EINTR) return true;
        end(errno);
        return false;
    }
    const auto count = static_cast<std::size_t>(size) / sizeof(input_event);
    for (const input_event& event : std::span(events).first(count)) {
        if (event.type == EV_SYN && event.code == SYN_DROPPED) return synchronize();
        if (hasState(event))
            libevdev_set_event_value(device_.get(), event.type, event.code, event.value);
        take(event);
        if (!descriptor_) return false;
    }
    return true;
}

/// The kernel has dropped events. libevdev throws away what is left of them, and tells, as events,
/// how the kernel's state differs from the one that it knows. What it reads meanwhile comes after.
bool EvdevReader::synchronize() {
    unsigned flags = LIBEVDEV_READ_FLAG_FORCE_SYNC;
    while (descriptor_) {
        input_event event{};
        const int status = libevdev_next_event(device_.get(), flags, &event);
        if (status == -EAGAIN && flags == readWhenEmpty) return true;
        if (status == -EAGAIN) {
            flags = readWhenEmpty;
        } else if (status == LIBEVDEV_READ_STATUS_SYNC && flags != tellDifferences) {
            flags = tellDifferences;
            frameSize_ = 0;
            handlers_.onLoss();
        } else if (status >= 0) {
            take(event);
        } else if (status != -EINTR) {
            end(-status);
        }
    }
    return false;
}

void EvdevReader::take(const input_event& event) {
    const bool isEnd = event.type == EV_SYN && event.code == SYN_REPORT;
    if (!isEnd && frameSize_ + 1 == frameCapacity) {
        input_event end = event;
        end.type = EV_SYN;
        end.code = SYN_REPORT;
        take(end);
    }
    frame_[frameSize_++] = event;
    if (!isEnd) return;
    handlers_.onFrame(std::span(frame_).first(std::exchange(frameSize_, 0)));
}

void EvdevReader::end(int error) {
    close();
    handlers_.onEnd(error);
}

}  // namespace tessara
