#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "TessaraCore/JSONError.h"

namespace tessara {

/// The document was written by a later version of the program.
struct UnsupportedSchemaVersion {
    std::int64_t found = 0;
    std::int64_t supported = 0;

    bool operator==(const UnsupportedSchemaVersion&) const = default;
};

/// The document lacks what tells its version, or is of a version that nothing can be made of.
struct MalformedConfig {
    std::string reason;

    bool operator==(const MalformedConfig&) const = default;
};

/// Why a document could not be read. The last two are the errors of JSON, as they stand.
using ConfigError =
    std::variant<UnsupportedSchemaVersion, MalformedConfig, JSONSyntaxError, DecodingError>;

/// The error in words for people.
[[nodiscard]] std::string description(const ConfigError& error);

}  // namespace tessara
