#include "TessaraReplay/ReplayOptions.h"

#include <array>

#include <fmt/format.h>
#include <getopt.h>

namespace tessara {

std::expected<ReplayOptions, std::string> parseReplayOptions(int argc, char** argv) {
    enum Option : int { help = 1, summary, received, plot, config, frontmost };
    static constexpr auto known = std::to_array<option>({
        {"help", no_argument, nullptr, help},
        {"summary", no_argument, nullptr, summary},
        {"received", no_argument, nullptr, received},
        {"plot", required_argument, nullptr, plot},
        {"config", required_argument, nullptr, config},
        {"frontmost", required_argument, nullptr, frontmost},
        {nullptr, 0, nullptr, 0},
    });

    ReplayOptions options;
    opterr = 0;
    // The leading colon tells a missing argument from an unknown option.
    for (int found = 0; (found = getopt_long(argc, argv, ":h", known.data(), nullptr)) != -1;) {
        switch (found) {
            case 'h':
            case help:
                options.wantsHelp = true;
                break;
            case summary:
                options.wantsSummary = true;
                break;
            case received:
                options.wantsReceived = true;
                break;
            case config:
                options.configFile = optarg;
                break;
            case frontmost:
                options.frontmostBundleID = optarg;
                break;
            case plot:
                options.plotFile = optarg;
                break;
            case ':':
                return std::unexpected(fmt::format("{} needs a value", argv[optind - 1]));
            default:
                return std::unexpected(fmt::format("unknown option {}", argv[optind - 1]));
        }
    }
    if (options.wantsReceived && (options.wantsSummary || options.plotFile))
        return std::unexpected("--received goes with neither --summary nor --plot");
    options.recordings.assign(argv + optind, argv + argc);
    if (options.recordings.empty() && !options.wantsHelp)
        return std::unexpected("no recording given");
    return options;
}

}  // namespace tessara
