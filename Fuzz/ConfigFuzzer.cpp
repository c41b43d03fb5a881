// Whatever bytes stand in the document's file, reading them ends in a document or an error; and a
// document that was read can be written, and reads back the same.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "TessaraCore/Config.h"
#include "TessaraCore/Precondition.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessara;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto config = Config::decoded(text);
    if (!config) {
        TESSARA_PRECONDITION(!description(config.error()).empty(), "an error without words");
        return 0;
    }
    const auto encoded = config->encoded();
    TESSARA_PRECONDITION(encoded.has_value(), "a document that was read cannot be written");
    const auto again = Config::decoded(*encoded);
    TESSARA_PRECONDITION(again && *again == *config, "a document changed by being saved");
    TESSARA_PRECONDITION(again->encoded() == encoded, "the same document saved as other bytes");
    // The lookups must cope with whatever a document refers to.
    static_cast<void>(config->activeProfile(text.substr(0, 40)));
    static_cast<void>(config->activeProfile(std::nullopt));
    return 0;
}
