// What the document costs: choosing a profile among many rules, and reading and writing a document
// of 1,000 profiles and 10,000 rules, beside the JSON library parsing the same bytes.

#include <benchmark/benchmark.h>
#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include "Support/AllocationCounter.h"
#include "TessaraCore/Config.h"

namespace tessara {
namespace {

std::vector<Rule> rulesOf(std::int64_t count) {
    std::vector<Rule> rules;
    for (std::int64_t i = 0; i < count; ++i) {
        const std::string id = fmt::format("com.vendor{}.", i);
        const auto pattern = i % 2 == 0 ? BundleIDPattern{BundleIDPrefix{id}}
                                        : BundleIDPattern{ExactBundleID{id + "Editor"}};
        rules.push_back({.id = fmt::format("rule {}", i),
                         .pattern = pattern,
                         .profileID = fmt::format("profile {}", i % 1000),
                         .priority = 10});
    }
    return rules;
}

/// The last rule is the one that matches.
void resolve(benchmark::State& state) {
    const RuleSet ruleSet{.rules = rulesOf(state.range(0)), .defaultProfileID = "default"};
    const std::string bundleID = fmt::format("COM.Vendor{}.editor", state.range(0) - 1);
    AllocationCounter allocations;
    allocations.start();
    for (auto _ : state)
        benchmark::DoNotOptimize(ruleSet.resolve(bundleID));
    allocations.stop();
    state.SetComplexityN(state.range(0));
    state.counters["allocations"] = benchmark::Counter(static_cast<double>(allocations.count()),
                                                       benchmark::Counter::kAvgIterations);
}
BENCHMARK(resolve)->RangeMultiplier(10)->Range(10, 100'000)->Complexity(benchmark::oN);

const Config& largeConfig() {
    static const Config config = [] {
        Config result = Config::default_();
        for (int i = 0; i < 1000; ++i) {
            result.profiles.push_back(
                Profile::canvasApp(fmt::format("profile {}", i), fmt::format("Profile {}", i)));
        }
        result.ruleSet.rules = rulesOf(10'000);
        return result;
    }();
    return config;
}

const std::string& largeText() {
    static const std::string text = *largeConfig().encoded();
    return text;
}

void setBytes(benchmark::State& state) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(largeText().size()));
}

void parseBare(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(nlohmann::json::parse(largeText()));
    setBytes(state);
}
BENCHMARK(parseBare)->Unit(benchmark::kMillisecond);

void decode(benchmark::State& state) {
    for (auto _ : state) {
        auto config = Config::decoded(largeText());
        if (!config) state.SkipWithError("the document was refused");
        benchmark::DoNotOptimize(config);
    }
    setBytes(state);
}
BENCHMARK(decode)->Unit(benchmark::kMillisecond);

void encode(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(largeConfig().encoded());
    setBytes(state);
}
BENCHMARK(encode)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tessara
