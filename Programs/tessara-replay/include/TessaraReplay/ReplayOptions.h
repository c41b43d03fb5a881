#pragma once

#include <expected>
#include <optional>
#include <string>
#include <vector>

namespace tessara {

/// What a call of the program asks for.
struct ReplayOptions {
    bool wantsHelp = false;
    bool wantsSummary = false;
    /// Whether to print what the application in front receives, in place of what the program does.
    bool wantsReceived = false;
    std::optional<std::string> configFile;
    std::optional<std::string> frontmostBundleID;
    std::optional<std::string> plotFile;
    std::vector<std::string> recordings;
};

inline constexpr const char* replayUsage =
    "usage: tessara-replay [--summary] [--plot FILE.svg] [--config FILE] [--frontmost BUNDLE-ID]\n"
    "                      RECORDING...\n"
    "       tessara-replay --received [--config FILE] [--frontmost BUNDLE-ID] RECORDING...\n";

/// Reads the arguments of a call, `argv` as `main` has it. Options may stand anywhere before "--".
/// The error is one line that says which argument is at fault. Call it once in a process.
[[nodiscard]] std::expected<ReplayOptions, std::string> parseReplayOptions(int argc, char** argv);

}  // namespace tessara
