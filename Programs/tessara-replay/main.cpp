#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "Platform/Linux/PosixFileSystem.h"
#include "TessaraCore/Config.h"
#include "TessaraReplay/FrameAssembler.h"
#include "TessaraReplay/JsonLines.h"
#include "TessaraReplay/OutputFile.h"
#include "TessaraReplay/Recording.h"
#include "TessaraReplay/ReplayOptions.h"
#include "TessaraReplay/ReplayPlayer.h"
#include "TessaraReplay/ReplayPlot.h"
#include "TessaraReplay/ReplaySummary.h"

namespace tessara {
namespace {

constexpr int exitUnusableInput = 2;

int complain(int status, std::string_view words) {
    std::fprintf(stderr, "%.*s\n", static_cast<int>(words.size()), words.data());
    return status;
}

/// No document that anybody uses is anywhere near as large.
constexpr std::size_t maximumDocumentSize = std::size_t{64} << 20U;

/// The document to play under, or why it cannot be used.
std::expected<Config, std::string> chosenConfig(const ReplayOptions& options) {
    if (!options.configFile) return Config::default_();
    const auto bytes = PosixFileSystem().read(*options.configFile, maximumDocumentSize);
    if (!bytes) return std::unexpected(bytes.error().description);
    auto config = Config::decoded(*bytes);
    if (!config) return std::unexpected(*options.configFile + ": " + description(config.error()));
    return *std::move(config);
}

/// Plays one recording onto `plot` and returns what is to be printed.
std::string replay(const Recording& recording, const Config& config, const ReplayOptions& options,
                   ReplayPlot& plot) {
    const Profile profile = config.activeProfile(options.frontmostBundleID);
    ReplaySummary summary(recording.name, recording.events.size(),
                          profile.scroll.sanitized().pixelsPerDetent, profile.pointer.dpi);
    plot.begin(std::filesystem::path(recording.name).filename());
    std::string lines;
    play(assembleInputs(recording),
         {.config = config, .frontmostBundleID = options.frontmostBundleID},
         [&](const ReplayRecord& record) {
             // Either what the program does is told, or what the application is given.
             if (std::holds_alternative<ReceivedEvent>(record.what) != options.wantsReceived)
                 return;
             if (options.plotFile) plot.add(record);
             if (options.wantsSummary) {
                 summary.add(record);
             } else {
                 appendJsonLine(lines, record);
             }
         });
    return options.wantsSummary ? summary.text() : lines;
}

int run(const ReplayOptions& options) {
    const auto config = chosenConfig(options);
    if (!config) return complain(exitUnusableInput, config.error());
    std::vector<Recording> recordings;
    for (const std::string& path : options.recordings) {
        auto recording = readRecording(path);
        if (!recording) return complain(exitUnusableInput, recording.error().description());
        recordings.push_back(*std::move(recording));
    }

    ReplayPlot plot;
    for (const Recording& recording : recordings) {
        const bool needsGap = options.wantsSummary && &recording != &recordings.front();
        const std::string output =
            (needsGap ? "\n" : "") + replay(recording, *config, options, plot);
        std::fwrite(output.data(), 1, output.size(), stdout);
    }
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        return complain(EXIT_FAILURE,
                        std::string("the output cannot be written: ") + std::strerror(errno));
    if (options.plotFile) {
        const auto written = writeWhole(*options.plotFile, plot.svg());
        if (!written) return complain(EXIT_FAILURE, written.error());
    }
    return EXIT_SUCCESS;
}

int runWith(int argc, char** argv) {
    const auto options = parseReplayOptions(argc, argv);
    if (!options) {
        complain(exitUnusableInput, options.error());
        std::fputs(replayUsage, stderr);
        return exitUnusableInput;
    }
    if (options->wantsHelp) {
        std::fputs(replayUsage, stdout);
        return EXIT_SUCCESS;
    }
    return run(*options);
}

}  // namespace
}  // namespace tessara

int main(int argc, char** argv) {
    try {
        return tessara::runWith(argc, argv);
    } catch (const std::exception& error) {
        return tessara::complain(EXIT_FAILURE, error.what());
    }
}
