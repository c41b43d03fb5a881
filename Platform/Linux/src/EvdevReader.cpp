#include "EvdevReader.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <libevdev/libevdev.h>
#include <sys/ioctl.h>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {
namespace {

/// Events that are read before the queue's other work gets its turn.
constexpr int eventsPerTurn = 512;

/// Reads when nothing is left of the last read, and not once for every event.
constexpr unsigned readWhenEmpty = LIBEVDEV_READ_FLAG_NORMAL | LIBEVDEV_READ_FLAG_BLOCKING;
/// Reads nothing, and tells of the differences in state.
constexpr unsigned synchronize = LIBEVDEV_READ_FLAG_SYNC;

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

bool EvdevReader::read() {
    for (int count = 0; count < eventsPerTurn; ++count) {
        if (!descriptor_) return false;
        input_event event{};
        const unsigned flags = isSynchronizing_ ? synchronize : readWhenEmpty;
        const int status = libevdev_next_event(device_.get(), flags, &event);
        if (status == -EAGAIN && !isSynchronizing_) return true;
        if (status == -EAGAIN) {
            isSynchronizing_ = false;
        } else if (status == LIBEVDEV_READ_STATUS_SYNC && !isSynchronizing_) {
            isSynchronizing_ = true;
            frameSize_ = 0;
            handlers_.onLoss();
        } else if (status >= 0) {
            take(event);
        } else if (status != -EINTR) {
            end(-status);
            return false;
        }
    }
    // Events that are read already wake nobody.
    queue_->post([weak = weak_from_this()] {
        if (const auto self = weak.lock()) static_cast<void>(self->read());
    });
    return true;
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
    const Frame frame = std::span(frame_).first(std::exchange(frameSize_, 0));
    if (descriptor_) handlers_.onFrame(frame);
}

void EvdevReader::end(int error) {
    close();
    handlers_.onEnd(error);
}

}  // namespace tessara
