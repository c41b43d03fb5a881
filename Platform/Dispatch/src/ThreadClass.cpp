// The one place of this library that speaks to the operating system's scheduler: Linux.

#include "ThreadClass.h"

#include <pthread.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace tessara {
namespace {

constexpr std::size_t longestThreadName = 15;
constexpr unsigned long leastTimerSlackNanos = 1;
constexpr int utilityNiceness = 10;

/// The lowest real-time priority: ahead of all ordinary threads and behind the system's own. The
/// kernel keeps a share of each second from real-time threads, so one that runs away slows the
/// machine down and does not hang it; processes that it forks are ordinary again.
void askForRealTime() noexcept {
    sched_param parameters{};
    parameters.sched_priority = sched_get_priority_min(SCHED_RR);
    (void)sched_setscheduler(gettid(), SCHED_RR | SCHED_RESET_ON_FORK, &parameters);
}

}  // namespace

void adoptThreadClass(std::string_view label, QualityOfService quality) noexcept {
    (void)pthread_setname_np(pthread_self(), threadNameOf(label).c_str());
    switch (quality) {
        case QualityOfService::userInteractive:
            (void)prctl(PR_SET_TIMERSLACK, leastTimerSlackNanos, 0, 0, 0);
            askForRealTime();
            break;
        case QualityOfService::utility:
            (void)setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), utilityNiceness);
            break;
        case QualityOfService::userInitiated:
        case QualityOfService::standard:
            break;
    }
}

std::string threadNameOf(std::string_view label) {
    if (label.size() <= longestThreadName) return std::string(label);
    const auto cut = label.size() - longestThreadName;
    const auto wordEnd = label.find('.', cut - 1);
    const bool lastWordFits = wordEnd != std::string_view::npos && wordEnd + 1 < label.size();
    return std::string(label.substr(lastWordFits ? wordEnd + 1 : cut));
}

}  // namespace tessara
