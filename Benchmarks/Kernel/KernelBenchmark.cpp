// kernel-benchmark DOCUMENT NAME=COMMAND...: what it costs to be in a mouse's way, measured on a
// real kernel.
//
// Writes the factory document to the file DOCUMENT, but for a pointer that moves count for count,
// so that each report can be told from the next whoever hands it on. Each command is the shell's,
// takes the mouse of the event node $NODE and hands it on to a virtual mouse. In each round all
// take their turn, so that the ratios of the table hold whatever else the computer has to do. Of
// the first one the glides are measured too, beside a bare loop that sleeps until the same moments.
// Prints tables in Markdown; fails when the first one loses a report.

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <deque>
#include <exception>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <ranges>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <linux/input.h>

#include "Contender.h"
#include "Kernel/EventNode.h"
#include "Kernel/UHIDMouse.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Platform/Simulated/SimulatedMouse.h"
#include "TessaraCore/Config.h"
#include "TessaraCore/ScrollTransformer.h"
#include "VirtualCopy.h"

namespace tessara::benchmarking {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;
using testing::EventNode;
using testing::NodeFrame;
using testing::waitFor;

constexpr int rounds = 6;
constexpr int reportsPerRound = 1000;
constexpr auto reportInterval = milliseconds(1);
/// How many reports in a row differ, so that none is taken for another.
constexpr int distinctReports = 500;
constexpr std::size_t mostOnTheirWay = 16;
constexpr auto longestStart = seconds(60);
/// What a program does at its start is over by then.
constexpr auto settlingTime = seconds(2);
constexpr int glidesPerRound = 4;

nanoseconds monotonicNow() {
    return SystemClock().now().time_since_epoch();
}

void sleepUntil(nanoseconds moment) {
    const timespec until{.tv_sec = moment / seconds(1), .tv_nsec = (moment % seconds(1)).count()};
    ::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr);
}

double quantile(std::vector<nanoseconds>& values, double share) {
    if (values.empty()) throw std::runtime_error("nothing was measured");
    const auto index = static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
    std::ranges::nth_element(values, values.begin() + index);
    return std::chrono::duration<double, std::micro>(values[static_cast<std::size_t>(index)])
        .count();
}

struct Figures {
    std::vector<nanoseconds> latencies;
    std::vector<nanoseconds> starts;
    nanoseconds processorTime{0};
    nanoseconds measured{0};
    std::int64_t peakMemoryKiB = 0;
    std::int64_t lostReports = 0;
};

std::set<std::string> eventNodes() {
    std::set<std::string> nodes;
    for (const auto& entry : fs::directory_iterator("/dev/input")) {
        if (entry.path().filename().string().starts_with("event")) nodes.insert(entry.path());
    }
    return nodes;
}

/// Whether the device moves a pointer: its relative axes include X.
bool isPointer(const std::string& node) {
    std::FILE* const file = std::fopen(
        ("/sys/class/input/" + fs::path(node).filename().string() + "/device/capabilities/rel")
            .c_str(),
        "r");
    unsigned axes = 0;
    if (file == nullptr) return false;
    const bool isRead = std::fscanf(file, "%x", &axes) == 1;
    std::fclose(file);
    return isRead && (axes & 1U << REL_X) != 0;
}

/// The pointer that has come since `known`.
std::optional<std::string> newPointer(const std::set<std::string>& known) {
    for (const std::string& node : eventNodes()) {
        if (!known.contains(node) && isPointer(node)) return node;
    }
    return std::nullopt;
}

/// A contender that has taken the mouse, from its start to its end.
class Turn {
  public:
    Turn(Contender& contender, testing::UHIDPointer& mouse, Figures& figures)
        : contender_(contender), mouse_(mouse), figures_(figures) {
        EventNode source(mouse.eventNode());
        const auto started = monotonicNow();
        contender_.start(mouse.eventNode());
        // Reports go on all the time. The first that the kernel no longer gives to others than the
        // contender is the first that it has grabbed.
        auto lastForAll = started;
        const bool isTaken = waitFor(
            [&] {
                mouse_.move(1, 0);
                while (const auto frame = source.next(nanoseconds(0)))
                    lastForAll = frame->time;
                if (!output_) {
                    if (const auto node = newPointer(known_)) output_.emplace(*node);
                }
                return output_ && output_->next(nanoseconds(0)).has_value();
            },
            longestStart);
        if (!isTaken) throw std::runtime_error(contender_.name() + " does not take the mouse");
        figures_.starts.push_back(lastForAll - started);
        static_cast<void>(output_->framesUntilQuiet(settlingTime));
    }

    ~Turn() {
        const auto peak = contender_.peakMemoryKiB();
        figures_.peakMemoryKiB = std::max(figures_.peakMemoryKiB, peak);
        contender_.stop();
        static_cast<void>(waitFor([&] { return !output_->next(nanoseconds(0)) && hasGone(); }));
    }

    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    [[nodiscard]] EventNode& output() { return *output_; }

    /// Moves the mouse a thousand times a second and times each report's way.
    void measureMotion() {
        struct Report {
            std::int16_t x;
            nanoseconds sent;
        };
        std::deque<Report> onTheirWay;
        const auto take = [&](nanoseconds limit) {
            const auto frame = output_->next(limit);
            if (!frame) return false;
            // Reports come in order. One that another has overtaken is lost.
            const auto x = frame->sumOf(EV_REL, REL_X);
            while (!onTheirWay.empty()) {
                const Report report = onTheirWay.front();
                onTheirWay.pop_front();
                if (report.x == x) {
                    figures_.latencies.push_back(frame->time - report.sent);
                    break;
                }
                ++figures_.lostReports;
            }
            return true;
        };
        const auto spentBefore = contender_.processorTime();
        const auto begun = monotonicNow();
        for (int report = 1; report <= reportsPerRound; ++report) {
            const auto x = static_cast<std::int16_t>(1 + report % distinctReports);
            // The kernel's stamps are in whole microseconds.
            onTheirWay.push_back(
                {.x = x, .sent = std::chrono::floor<std::chrono::microseconds>(monotonicNow())});
            mouse_.move(x, 0);
            const auto next = begun + report * reportInterval;
            while (!onTheirWay.empty() && take(next - monotonicNow())) {
            }
            // The kernel keeps some thirty for a reader. Where the computer has stood still for
            // longer than that, there is nothing to be learned from what it drops.
            while (onTheirWay.size() >= mostOnTheirWay && take(seconds(1))) {
            }
            sleepUntil(next);
        }
        figures_.measured += monotonicNow() - begun;
        figures_.processorTime += contender_.processorTime() - spentBefore;
        while (!onTheirWay.empty() && take(seconds(1))) {
        }
        figures_.lostReports += static_cast<std::int64_t>(onTheirWay.size());
    }

  private:
    [[nodiscard]] bool hasGone() const { return !newPointer(known_).has_value(); }

    Contender& contender_;
    testing::UHIDPointer& mouse_;
    Figures& figures_;
    const std::set<std::string> known_ = eventNodes();
    std::optional<EventNode> output_;
};

/// When the steps of one click's glide are due, counted from its beginning.
std::vector<nanoseconds> glideSchedule() {
    auto transformer = Profile::default_().makeScrollTransformer();
    const auto outcome = transformer.transform({.lineDelta = -1});
    std::vector<nanoseconds> schedule;
    for (const ScrollStep& step : std::get<ScrollAnimate>(outcome).plan.steps) {
        if (step.pixelDelta != 0) schedule.push_back(nanosecondsFromMillis(step.offsetMillis));
    }
    return schedule;
}

/// How late each step is. Nobody outside knows when the glide began; so that the step which was
/// least late counts as punctual, of whoever played it.
void addLateness(const std::vector<NodeFrame>& frames, const std::vector<nanoseconds>& schedule,
                 std::vector<nanoseconds>& lateness) {
    if (frames.size() != schedule.size()) {
        throw std::runtime_error(
            fmt::format("a glide has {} frames instead of {}", frames.size(), schedule.size()));
    }
    auto base = nanoseconds::max();
    for (std::size_t step = 0; step < schedule.size(); ++step) {
        base = std::min(base, frames[step].time - schedule[step]);
    }
    for (std::size_t step = 0; step < schedule.size(); ++step) {
        lateness.push_back(frames[step].time - schedule[step] - base);
    }
}

void playBareGlide(DispatchQueue& queue, const VirtualCopy& device,
                   const std::vector<nanoseconds>& schedule) {
    queue.post([&] {
        const auto base = monotonicNow();
        for (const auto offset : schedule) {
            sleepUntil(base + offset);
            std::array<input_event, 2> frame{};
            frame[0].type = EV_REL;
            frame[0].code = REL_WHEEL_HI_RES;
            frame[0].value = -1;
            device.write(frame);
        }
    });
    queue.drain();
}

struct Lateness {
    std::vector<nanoseconds> ofProgram;
    std::vector<nanoseconds> ofBareLoop;
};

void printTable(const std::vector<std::unique_ptr<Contender>>& contenders,
                std::vector<Figures>& figures, Lateness& lateness) {
    fmt::print(
        "| | from report to event, median (µs) | 99th percentile (µs) | processor time per "
        "second (ms) | start to first grabbed event, median (ms) | peak memory (MiB) | reports "
        "lost |\n");
    fmt::print("|---|---|---|---|---|---|---|\n");
    for (std::size_t i = 0; i < contenders.size(); ++i) {
        Figures& own = figures[i];
        const double share = std::chrono::duration<double>(own.processorTime) /
                             std::chrono::duration<double>(own.measured);
        fmt::print("| {} | {:.0f} | {:.0f} | {:.1f} | {:.0f} | {:.1f} | {} |\n",
                   contenders[i]->name(), quantile(own.latencies, 0.5),
                   quantile(own.latencies, 0.99), share * 1000, quantile(own.starts, 0.5) / 1000,
                   static_cast<double>(own.peakMemoryKiB) / 1024, own.lostReports);
    }
    for (std::size_t i = 1; i < contenders.size(); ++i) {
        fmt::print("\n{} takes {:.2f} times as long as {} (median; 99th percentile {:.2f}).\n",
                   contenders[0]->name(),
                   quantile(figures[0].latencies, 0.5) / quantile(figures[i].latencies, 0.5),
                   contenders[i]->name(),
                   quantile(figures[0].latencies, 0.99) / quantile(figures[i].latencies, 0.99));
    }
    fmt::print(
        "\n| Lateness of glide steps | median (µs) | 99th percentile (µs) |\n|---|---|---|\n");
    for (const auto& [name, values] : {std::pair(contenders[0]->name(), &lateness.ofProgram),
                                       std::pair(std::string("bare loop"), &lateness.ofBareLoop)}) {
        fmt::print("| {} | {:.0f} | {:.0f} |\n", name, quantile(*values, 0.5),
                   quantile(*values, 0.99));
    }
    fmt::print("\n{} rounds of {} reports at 1000 a second for each, and {} glides of {} steps.\n",
               rounds, reportsPerRound, rounds * glidesPerRound,
               lateness.ofProgram.size() / (rounds * glidesPerRound));
}

void writeDocument(const fs::path& file) {
    Config document = Config::default_();
    for (Profile& profile : document.profiles)
        profile.pointer.curve = PointerCurve::linear;
    fs::create_directories(file.parent_path());
    if (!(std::ofstream(file) << document.encoded().value())) {
        throw std::runtime_error("cannot write " + file.string());
    }
}

int run(const std::vector<std::string>& arguments) {
    if (arguments.size() < 2) {
        throw std::runtime_error("usage: kernel-benchmark DOCUMENT NAME=COMMAND...");
    }
    writeDocument(arguments.front());
    std::vector<std::unique_ptr<Contender>> contenders;
    for (const std::string& argument : arguments | std::views::drop(1)) {
        const auto split = argument.find('=');
        if (split == std::string::npos) throw std::runtime_error(argument + " has no command");
        contenders.push_back(
            std::make_unique<Contender>(argument.substr(0, split), argument.substr(split + 1)));
    }

    ThreadedDispatcher dispatcher;
    SimulatedMouse firmware;
    testing::UHIDMouse mouse(dispatcher, firmware);
    mouse.plug();
    const auto queue = dispatcher.makeQueue("bare-glide", QualityOfService::userInteractive);
    const auto schedule = glideSchedule();

    std::vector<Figures> figures(contenders.size());
    Lateness lateness;
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < contenders.size(); ++i) {
            // A different one begins each round.
            const std::size_t turn = (i + static_cast<std::size_t>(round)) % contenders.size();
            Turn taken(*contenders[turn], mouse.pointer(), figures[turn]);
            taken.measureMotion();
            if (turn != 0) continue;
            for (int glide = 0; glide < glidesPerRound; ++glide) {
                mouse.pointer().spin(-1);
                addLateness(taken.output().framesUntilQuiet(), schedule, lateness.ofProgram);
            }
        }
        const VirtualCopy device(mouse.pointer().eventNode(), "Bare Glide Mouse");
        EventNode output(device.node());
        for (int glide = 0; glide < glidesPerRound; ++glide) {
            playBareGlide(*queue, device, schedule);
            addLateness(output.framesUntilQuiet(), schedule, lateness.ofBareLoop);
        }
    }
    printTable(contenders, figures, lateness);
    return figures.front().lostReports == 0 ? 0 : 1;
}

}  // namespace
}  // namespace tessara::benchmarking

int main(int count, char** arguments) {
    try {
        return tessara::benchmarking::run({arguments + 1, arguments + count});
    } catch (const std::exception& error) {
        fmt::print(stderr, "kernel-benchmark: {}\n", error.what());
        return 1;
    }
}
