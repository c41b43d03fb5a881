#pragma once

#include <expected>
#include <optional>
#include <string>
#include <vector>

namespace tessara {

/// What a call of the program asks for.
struct ReplayOptions {
    /// Whether to print the usage and do nothing else.
    bool wantsHelp = false;
    /// Whether to print a table for each recording in place of its lines.
    bool wantsSummary = false;
    /// Whether to print what the application in front receives, in place of what the program does.
    bool wantsReceived = false;
    /// The document to play under; absent for the factory's.
    std::optional<std::string> configFile;
    /// The application in front; absent for one without an identifier.
    std::optional<std::string> frontmostBundleID;
    /// Where to write the picture; absent for none.
    std::optional<std::string> plotFile;
    /// The files to play, in order; at least one, unless help is wanted.
    std::vector<std::string> recordings;
};

/// How the program is called, in lines that end with a newline.
inline constexpr const char* replayUsage =
    "usage: tessara-replay [--summary] [--plot FILE.svg] [--config FILE] [--frontmost BUNDLE-ID]\n"
    "                      RECORDING...\n"
    "       tessara-replay --received [--config FILE] [--frontmost BUNDLE-ID] RECORDING...\n";

/// Reads the arguments of a call, `argv` as `main` has it; it may reorder them. Options may stand
/// anywhere before "--". The error is one line that says which argument is at fault. Call it once
/// in a process, for getopt keeps a state of its own.
[[nodiscard]] std::expected<ReplayOptions, std::string> parseReplayOptions(int argc, char** argv);

}  // namespace tessara
