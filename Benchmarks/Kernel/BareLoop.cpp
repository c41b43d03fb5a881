// kernel-bare-loop NODE: grabs the device and writes what it reads, as it is, to a virtual copy of
// it, until it is ended by a signal. The least that a program in the mouse's way can do: what the
// real one is measured against, in the scheduling class that the real one has.

#include <array>
#include <cstdio>
#include <exception>

#include <linux/input.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "VirtualCopy.h"

namespace {

void handOn(const char* node) {
    const tessara::benchmarking::VirtualCopy copy(node, "Bare Loop Mouse");
    if (::ioctl(copy.realDevice(), EVIOCGRAB, 1) != 0) {
        std::perror("grabbing the device");
        return;
    }
    std::array<input_event, 64> events{};
    while (true) {
        pollfd waited{.fd = copy.realDevice(), .events = POLLIN, .revents = 0};
        if (::poll(&waited, 1, -1) < 0) return;
        const ssize_t size = ::read(copy.realDevice(), events.data(), sizeof events);
        if (size <= 0) return;
        copy.write({events.data(), static_cast<std::size_t>(size) / sizeof(input_event)});
    }
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fputs("usage: kernel-bare-loop NODE\n", stderr);
        return 2;
    }
    tessara::ThreadedDispatcher dispatcher;
    const auto queue =
        dispatcher.makeQueue("bare-loop", tessara::QualityOfService::userInteractive);
    queue->post([&] {
        try {
            handOn(arguments[1]);
        } catch (const std::exception& error) {
            std::fprintf(stderr, "kernel-bare-loop: %s\n", error.what());
        }
    });
    queue->drain();
    return 1;
}
