// Whatever bytes a server sends as its feed, reading them ends in a release that can be believed as
// far as its form goes, or in an error with words.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "TessaraCore/Precondition.h"
#include "Updater/UpdateFeed.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessara;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto release = readUpdateFeed(text);
    if (!release) {
        TESSARA_PRECONDITION(!release.error().empty(), "an error without words");
        return 0;
    }
    TESSARA_PRECONDITION(isVersion(release->version.version), "a version that is none");
    TESSARA_PRECONDITION(release->version.build > 0, "a build that is none");
    TESSARA_PRECONDITION(
        release->lengthInBytes > 0 && release->lengthInBytes <= maximumPackageSizeInBytes,
        "a length out of range");
    TESSARA_PRECONDITION(release->fileName.find_first_of("/\\\n%") == std::string::npos &&
                             !release->fileName.starts_with('.') && !release->fileName.empty(),
                         "a file name that leads elsewhere");
    static_cast<void>(isEarlierVersion(release->version.version, "1.4.0"));
    return 0;
}
