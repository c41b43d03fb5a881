// What the application costs when nobody does anything: how long it takes from nothing to a running
// engine, and, once it runs, how often its threads wake, what processor time they take, and how
// much memory it holds. On the simulated desktop, so that the platform's own share is left out.

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <thread>

#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <unistd.h>

#include "AppWiring/SimulatedAppHost.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "TessaraApp/AppModel.h"
#include "TessaraEngine/TessaraEngine.h"

namespace tessara {
namespace {

using Seconds = std::chrono::duration<double>;

/// A number of a process's or a thread's status as the kernel tells it.
std::int64_t statusOf(const std::filesystem::path& folder, const std::string& name) {
    std::ifstream status(folder / "status");
    for (std::string word; status >> word;) {
        std::int64_t number = 0;
        if (word == name + ":" && status >> number) return number;
    }
    return 0;
}

/// How often all threads but the caller's have gone to sleep by themselves, and so been woken.
std::int64_t wakeUps() {
    std::int64_t sum = 0;
    const std::string self = std::to_string(gettid());
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
        if (thread.path().filename() == self) continue;
        sum += statusOf(thread.path(), "voluntary_ctxt_switches");
    }
    return sum;
}

Seconds processorTime() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return Seconds(static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// An application on real threads, used on its main queue alone.
class Application {
  public:
    Application() { host.plugInMouse(); }
    ~Application() {
        onMain([this] { model.reset(); });
        host.awaitEndOfConnections();
    }

    template <typename Work>
    void onMain(Work work) {
        host.mainQueue->post([&] { work(); });
        host.mainQueue->drain();
    }

    /// False when the engine does not run afterwards.
    bool launch() {
        bool runs = false;
        onMain([&] {
            model.emplace(host.appPlatform());
            model->start();
            runs = model->engine()->status().isTapEnabled;
        });
        return runs;
    }

    ThreadedDispatcher dispatcher;
    SimulatedAppHost host{dispatcher};
    std::optional<AppModel> model;
};

void launch(benchmark::State& state) {
    Config config = Config::default_();
    for (std::int64_t i = 0; i < state.range(0); ++i)
        config.profiles.push_back(Profile::canvasApp(std::to_string(i), "Profile"));
    for (auto _ : state) {
        Application application;
        application.host.files.putFile(SimulatedAppHost::configPath, config.encoded().value());
        const auto start = std::chrono::steady_clock::now();
        if (!application.launch()) state.SkipWithError("the engine does not run");
        state.SetIterationTime(Seconds(std::chrono::steady_clock::now() - start).count());
    }
}
BENCHMARK(launch)
    ->ArgName("further profiles")
    ->Arg(0)
    ->Arg(1000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

void rest(benchmark::State& state) {
    constexpr std::chrono::seconds settling{5};
    constexpr std::chrono::seconds watched{60};
    Application application;
    if (!application.launch()) state.SkipWithError("the engine does not run");
    std::this_thread::sleep_for(settling);
    for (auto _ : state) {
        const std::int64_t wakeUpsBefore = wakeUps();
        const Seconds timeBefore = processorTime();
        std::this_thread::sleep_for(watched);
        const double seconds = Seconds(watched).count();
        state.counters["wake-ups/s"] = static_cast<double>(wakeUps() - wakeUpsBefore) / seconds;
        state.counters["processor ms/s"] = (processorTime() - timeBefore).count() * 1000 / seconds;
    }
    constexpr double kibibytesPerMebibyte = 1024;
    state.counters["threads"] = static_cast<double>(statusOf("/proc/self", "Threads") - 1);
    state.counters["MiB now"] =
        static_cast<double>(statusOf("/proc/self", "VmRSS")) / kibibytesPerMebibyte;
    state.counters["MiB at most"] =
        static_cast<double>(statusOf("/proc/self", "VmHWM")) / kibibytesPerMebibyte;
}
BENCHMARK(rest)->Iterations(1)->UseRealTime()->Unit(benchmark::kSecond);

}  // namespace
}  // namespace tessara
