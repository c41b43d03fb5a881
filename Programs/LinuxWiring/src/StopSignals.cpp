#include "LinuxWiring/StopSignals.h"

#include <QSocketNotifier>
#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace tessara {
namespace {

constexpr std::array stopSignals{SIGTERM, SIGINT, SIGHUP};

/// The pipe that a handler, which may do next to nothing, writes to.
std::array<int, 2> ends{-1, -1};

extern "C" void noteSignal(int /*signal*/) {
    const int saved = errno;
    const char byte = 0;
    // A full pipe has been written to already.
    [[maybe_unused]] const ssize_t written = write(ends[1], &byte, 1);
    errno = saved;
}

/// Whether the program was started to outlive its terminal, as nohup does it.
bool isHangupIgnored() {
    struct sigaction action{};
    sigaction(SIGHUP, nullptr, &action);
    return action.sa_handler == SIG_IGN;
}

void handleSignals(void (*handler)(int)) {
    struct sigaction action{};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int signal : stopSignals) {
        if (signal != SIGHUP || !isHangupIgnored()) sigaction(signal, &action, nullptr);
    }
}

int openPipe() {
    if (pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
        throw std::system_error(errno, std::generic_category(), "a pipe for signals was refused");
    }
    return ends[0];
}

}  // namespace

StopSignals::StopSignals(std::function<void()> onStop)
    : onStop_(std::move(onStop)),
      notifier_(new QSocketNotifier(openPipe(), QSocketNotifier::Read, this)) {
    connect(notifier_, &QSocketNotifier::activated, this, [this] {
        notifier_->setEnabled(false);
        handleSignals(SIG_DFL);
        onStop_();
    });
    handleSignals(noteSignal);
}

StopSignals::~StopSignals() {
    handleSignals(SIG_DFL);
    delete notifier_;
    for (int& end : ends)
        close(std::exchange(end, -1));
}

}  // namespace tessara
