#include "Support/ProcessResources.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <unistd.h>

namespace tessara::testing {
namespace {

std::size_t entriesOf(const char* directory) {
    using Iterator = std::filesystem::directory_iterator;
    return static_cast<std::size_t>(std::distance(Iterator(directory), Iterator()));
}

/// As `threadCount`, once all is there that comes with a process's first thread: the thread
/// sanitizer starts one of its own then.
std::size_t threadCountAfterAFirst() {
    pid_t first = 0;
    std::thread([&] { first = gettid(); }).join();
    while (std::filesystem::exists("/proc/self/task/" + std::to_string(first)))
        std::this_thread::yield();
    return threadCount();
}

}  // namespace

std::size_t openFileDescriptorCount() {
    return entriesOf("/proc/self/fd") - 1;  // the directory itself is open while it is read
}

std::size_t threadCount() {
    return entriesOf("/proc/self/task");
}

NoLeakedResources::NoLeakedResources()
    : fileDescriptorsBefore_(openFileDescriptorCount()), threadsBefore_(threadCountAfterAFirst()) {}

NoLeakedResources::~NoLeakedResources() {
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (threadCount() > threadsBefore_ && std::chrono::steady_clock::now() < giveUp) {
        std::this_thread::yield();
    }
    EXPECT_EQ(threadCount(), threadsBefore_) << "threads were leaked";
    EXPECT_EQ(openFileDescriptorCount(), fileDescriptorsBefore_) << "file descriptors were leaked";
}

}  // namespace tessara::testing
