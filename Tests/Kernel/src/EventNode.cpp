#include "Kernel/EventNode.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/input.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tessara::testing {
namespace {

namespace fs = std::filesystem;

int openNode(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) throw std::system_error(errno, std::generic_category(), path);
    return fd;
}

std::optional<std::string> findNamed(const std::string& name) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator("/sys/class/input", error)) {
        const std::string node = entry.path().filename().string();
        if (!node.starts_with("event")) continue;
        std::ifstream stream(entry.path() / "device" / "name");
        std::string found;
        if (!std::getline(stream, found) || found != name) continue;
        std::string path = "/dev/input/" + node;
        if (fs::exists(path)) return path;
    }
    return std::nullopt;
}

}  // namespace

std::int64_t NodeFrame::sumOf(std::uint16_t type, std::uint16_t code) const {
    std::int64_t sum = 0;
    for (const NodeEvent& event : events) {
        if (event.type == type && event.code == code) sum += event.value;
    }
    return sum;
}

EventNode::EventNode(const std::string& path) : fd_(openNode(path)) {
    int clock = CLOCK_MONOTONIC;
    if (::ioctl(fd_, EVIOCSCLOCKID, &clock) != 0) {
        throw std::system_error(errno, std::generic_category(), "setting the clock of " + path);
    }
}

EventNode::~EventNode() {
    ::close(fd_);
}

std::optional<std::string> EventNode::pathNamed(const std::string& name,
                                                std::chrono::nanoseconds limit) {
    std::optional<std::string> path;
    static_cast<void>(waitFor(
        [&] {
            path = findNamed(name);
            return path.has_value();
        },
        limit));
    return path;
}

bool EventNode::exists(const std::string& name) {
    return findNamed(name).has_value();
}

std::optional<NodeFrame> EventNode::next(std::chrono::nanoseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (true) {
        input_event event{};
        const ssize_t size = ::read(fd_, &event, sizeof event);
        if (size == static_cast<ssize_t>(sizeof event)) {
            if (event.type == EV_SYN && event.code == SYN_DROPPED) {
                ADD_FAILURE() << "the kernel dropped reports";
            } else if (event.type == EV_SYN && event.code == SYN_REPORT) {
                return NodeFrame{.time = std::chrono::seconds(event.input_event_sec) +
                                         std::chrono::microseconds(event.input_event_usec),
                                 .events = std::exchange(pending_, {})};
            } else {
                pending_.push_back({event.type, event.code, event.value});
            }
            continue;
        }
        if (size < 0 && errno != EAGAIN) return std::nullopt;  // the device is gone
        const auto left = deadline - std::chrono::steady_clock::now();
        if (left.count() <= 0) return std::nullopt;
        pollfd waited{.fd = fd_, .events = POLLIN, .revents = 0};
        const auto millis = std::chrono::ceil<std::chrono::milliseconds>(left).count();
        ::poll(&waited, 1, static_cast<int>(millis));
    }
}

std::vector<NodeFrame> EventNode::framesUntil(const NodeEvent& last,
                                              std::chrono::nanoseconds limit) {
    std::vector<NodeFrame> frames;
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (auto frame = next(deadline - std::chrono::steady_clock::now())) {
        frames.push_back(std::move(*frame));
        if (std::ranges::count(frames.back().events, last) > 0) return frames;
    }
    ADD_FAILURE() << "the event " << last.type << '/' << last.code << ' ' << last.value
                  << " does not come";
    return frames;
}

std::vector<NodeFrame> EventNode::framesUntilQuiet(std::chrono::nanoseconds quiet) {
    std::vector<NodeFrame> frames;
    while (auto frame = next(quiet))
        frames.push_back(std::move(*frame));
    return frames;
}

std::vector<std::uint16_t> EventNode::heldKeys() const {
    std::array<std::uint8_t, KEY_CNT / 8> bits{};
    if (::ioctl(fd_, EVIOCGKEY(bits.size()), bits.data()) < 0) return {};
    std::vector<std::uint16_t> keys;
    for (std::uint16_t code = 0; code < KEY_CNT; ++code) {
        if ((bits[code / 8U] >> (code % 8U) & 1U) != 0) keys.push_back(code);
    }
    return keys;
}

bool EventNode::grab(bool wanted) const {
    return ::ioctl(fd_, EVIOCGRAB, wanted ? 1 : 0) == 0;
}

}  // namespace tessara::testing
