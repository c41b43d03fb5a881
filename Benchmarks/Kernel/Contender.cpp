#include "Contender.h"

#include <array>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tessara::benchmarking {

Contender::Contender(std::string name, std::string command)
    : name_(std::move(name)), command_(std::move(command)) {}

Contender::~Contender() {
    stop();
}

void Contender::start(const std::string& node) {
    ::setenv("NODE", node.c_str(), 1);
    std::string shell = "sh";
    std::string option = "-c";
    std::string command = command_;
    const std::array<char*, 4> arguments{shell.data(), option.data(), command.data(), nullptr};
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    const int error =
        ::posix_spawnp(&leader_, "sh", nullptr, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    if (error != 0) throw std::system_error(error, std::generic_category(), command_);
}

void Contender::stop() {
    if (leader_ == 0) return;
    ::kill(-leader_, SIGTERM);
    ::waitpid(std::exchange(leader_, 0), nullptr, 0);
}

std::chrono::nanoseconds Contender::processorTime() const {
    std::chrono::nanoseconds sum{0};
    forEachProcess([&](pid_t process) {
        clockid_t clock{};
        timespec spent{};
        if (::clock_getcpuclockid(process, &clock) != 0) return;
        if (::clock_gettime(clock, &spent) != 0) return;
        sum += std::chrono::seconds(spent.tv_sec) + std::chrono::nanoseconds(spent.tv_nsec);
    });
    return sum;
}

std::int64_t Contender::peakMemoryKiB() const {
    std::int64_t sum = 0;
    forEachProcess([&](pid_t process) {
        std::ifstream status("/proc/" + std::to_string(process) + "/status");
        std::string key;
        while (status >> key) {
            std::int64_t value = 0;
            if (key == "VmHWM:" && status >> value) sum += value;
        }
    });
    return sum;
}

void Contender::forEachProcess(const std::function<void(pid_t process)>& visit) const {
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename().string();
        pid_t process = 0;
        const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), process);
        if (error != std::errc() || end != name.data() + name.size()) continue;
        if (::getpgid(process) != leader_) continue;
        std::ifstream comm(entry.path() / "comm");
        std::string program;
        if (std::getline(comm, program) && program != "sh") visit(process);
    }
}

}  // namespace tessara::benchmarking
