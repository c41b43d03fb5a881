#include <chrono>
#include <ctime>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "Kernel/WaitFor.h"
#include "Platform/Dispatch/Mutex.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Platform/Linux/SuspendMonitor.h"
#include "Support/ProcessResources.h"

namespace tessara::testing {
namespace {

using namespace std::chrono_literals;

bool write(const std::string& file, const std::string& text) {
    std::ofstream stream(file);
    stream << text << std::flush;
    return stream.good();
}

TEST(SuspendMonitor, tells_of_a_sleep_and_not_of_a_new_time_of_day) {
    const NoLeakedResources noLeaks;
    ThreadedDispatcher dispatcher;
    const auto queue = dispatcher.makeQueue("ai.tessara.platform", QualityOfService::utility);
    SuspendMonitor monitor(queue);
    Mutex mutex;
    std::vector<std::chrono::nanoseconds> wakings;
    const auto subscription = monitor.wakings().subscribe(queue, [&](const auto& slept) {
        MutexLock lock(mutex);
        wakings.push_back(slept);
    });
    queue->drain();

    timespec now{};
    ASSERT_EQ(::clock_gettime(CLOCK_REALTIME, &now), 0);
    now.tv_sec += 3600;
    ASSERT_EQ(::clock_settime(CLOCK_REALTIME, &now), 0);

    // The kernel goes through the motions of a sleep, all but its last step, and wakes by itself.
    // It counts the sleep by a clock of whole seconds, which may take one second for none.
    write("/sys/module/suspend/parameters/pm_test_delay", "2");
    if (!write("/sys/power/pm_test", "core")) GTEST_SKIP() << "the kernel plays no sleeps";
    ASSERT_TRUE(write("/sys/power/state", "mem"));
    EXPECT_TRUE(waitFor([&] {
        MutexLock lock(mutex);
        return !wakings.empty();
    }));
    MutexLock lock(mutex);
    ASSERT_EQ(wakings.size(), 1U);
    EXPECT_GT(wakings.front(), 500ms);
    EXPECT_LT(wakings.front(), 60s);
}

}  // namespace
}  // namespace tessara::testing
