#include "Platform/Linux/HidrawInterface.h"

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "Platform/Linux/FileDescriptor.h"
#include "ReadableWatch.h"

namespace tessara {
namespace {

IOReturn ioReturnFrom(int errorNumber) {
    switch (errorNumber) {
        case EACCES:
        case EPERM:
            return IOReturn::notPermitted;
        case ENODEV:
        case ENOENT:
        case ENXIO:
        case ESHUTDOWN:
            return IOReturn::noDevice;
        case EAGAIN:
        case EBUSY:
            return IOReturn::busy;
        case ETIMEDOUT:
            return IOReturn::timeout;
        case EINVAL:
        case EMSGSIZE:
            return IOReturn::badArgument;
        case ENOSYS:
        case EOPNOTSUPP:
            return IOReturn::unsupported;
        default:
            return IOReturn::error;
    }
}

/// Reads the reports of an open node, one at a time.
class ReportReader {
  public:
    ReportReader(std::shared_ptr<const FileDescriptor> descriptor, std::size_t longestReport,
                 bool hasReportIDs, HIDInterface::InputHandler handler)
        : descriptor_(std::move(descriptor)),
          buffer_(longestReport),
          hasReportIDs_(hasReportIDs),
          handler_(std::move(handler)) {}

    /// False when there will be no more.
    bool operator()() {
        const auto count = ::read(descriptor_->get(), buffer_.data(), buffer_.size());
        if (count < 0) return errno == EAGAIN || errno == EINTR;
        if (count == 0) return false;
        const auto report = std::span(buffer_).first(static_cast<std::size_t>(count));
        handler_(hasReportIDs_ ? report.front() : std::uint8_t{0}, report);
        return true;
    }

  private:
    std::shared_ptr<const FileDescriptor> descriptor_;
    std::vector<std::uint8_t> buffer_;
    bool hasReportIDs_;
    HIDInterface::InputHandler handler_;
};

/// Waits until the descriptor takes something, or says why not; 0 or errno's number.
int waitForRoom(const FileDescriptor& descriptor, std::chrono::milliseconds patience) {
    pollfd waitedFor{.fd = descriptor.get(), .events = POLLOUT, .revents = 0};
    const int ready = ::poll(&waitedFor, 1, static_cast<int>(patience.count()));
    if (ready < 0) return errno;
    return ready == 0 ? ETIMEDOUT : 0;
}

/// 0 or errno's number. A report is taken whole or not at all.
int writeOnce(const FileDescriptor& descriptor, std::span<const std::uint8_t> report) {
    for (;;) {
        const auto written = ::write(descriptor.get(), report.data(), report.size());
        if (written >= 0) return std::cmp_equal(written, report.size()) ? 0 : EIO;
        if (errno != EINTR) return errno;
    }
}

}  // namespace

HidrawInterface::HidrawInterface(HIDInterfaceProperties properties, std::uint64_t registryID,
                                 Place place, std::chrono::milliseconds patience)
    : properties_(std::move(properties)),
      registryID_(registryID),
      place_(std::move(place)),
      patience_(patience) {}

HidrawInterface::~HidrawInterface() = default;

const HIDInterfaceProperties& HidrawInterface::properties() const noexcept {
    return properties_;
}

std::uint64_t HidrawInterface::registryID() const noexcept {
    return registryID_;
}

IOReturn HidrawInterface::open() {
    if (descriptor()) return IOReturn::success;
    auto opened = FileDescriptor::open(place_.node, O_RDWR | O_NONBLOCK);
    if (!opened) return failure(opened.error());
    // As long as the folder stands the node is this device's; looked at before, it could go in
    // between.
    if (isGone()) return IOReturn::noDevice;
    MutexLock lock(mutex_);
    descriptor_ = std::make_shared<const FileDescriptor>(std::move(*opened));
    return IOReturn::success;
}

void HidrawInterface::close() {
    stopInput();
    std::shared_ptr<const FileDescriptor> closing;  // closed once the lock is let go
    MutexLock lock(mutex_);
    closing.swap(descriptor_);
}

void HidrawInterface::startInput(std::shared_ptr<DispatchQueue> queue, InputHandler handler) {
    constexpr std::int64_t shortestBuffer = 64;
    const auto open = descriptor();
    if (!open) return;
    const auto longest = std::max(properties_.maxInputReportSize.value_or(0), shortestBuffer);
    input_ = std::make_unique<ReadableWatch>(std::move(queue), open->get(),
                                             ReportReader(open, static_cast<std::size_t>(longest),
                                                          place_.hasReportIDs, std::move(handler)));
    // An interface that hears nothing must not seem to work: its writes say that it is not open.
    if (!input_->isWaiting()) close();
}

void HidrawInterface::stopInput() {
    input_ = nullptr;
}

IOReturn HidrawInterface::writeReport(std::uint8_t reportID, std::span<const std::uint8_t> report) {
    const auto open = descriptor();
    if (!open) return isGone() ? IOReturn::noDevice : IOReturn::notOpen;
    if (report.empty() || report.front() != reportID) return IOReturn::badArgument;
    int errorNumber = writeOnce(*open, report);
    if (errorNumber == EAGAIN) {
        errorNumber = waitForRoom(*open, patience_);
        if (errorNumber == 0) errorNumber = writeOnce(*open, report);
    }
    return errorNumber == 0 ? IOReturn::success : failure(errorNumber);
}

bool HidrawInterface::isGone() const {
    return ::access(place_.sysPath.c_str(), F_OK) != 0;
}

/// A device that goes away in mid-write shows in many numbers.
IOReturn HidrawInterface::failure(int errorNumber) const {
    return isGone() ? IOReturn::noDevice : ioReturnFrom(errorNumber);
}

std::shared_ptr<const FileDescriptor> HidrawInterface::descriptor() const {
    MutexLock lock(mutex_);
    return descriptor_;
}

}  // namespace tessara
