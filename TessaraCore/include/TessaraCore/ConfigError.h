#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "TessaraCore/JSONError.h"

namespace tessara {

/// The document was written by a later version of the program.
struct UnsupportedSchemaVersion {
    /// What the document says, or the greatest integer for a number beyond it.
    std::int64_t found = 0;
    /// The newest version that this program reads.
    std::int64_t supported = 0;

    bool operator==(const UnsupportedSchemaVersion&) const = default;
};

/// The document lacks what tells its version, or is of a version that nothing can be made of.
struct MalformedConfig {
    /// In words for people, without the place, which is the outermost object.
    std::string reason;

    bool operator==(const MalformedConfig&) const = default;
};

/// Why the bytes of a document could not be made a `Config`. The last two are the errors of JSON,
/// as they stand. That a file could not be read is another matter and not told of here.
using ConfigError =
    std::variant<UnsupportedSchemaVersion, MalformedConfig, JSONSyntaxError, DecodingError>;

/// The error in one sentence for people, with the place where there is one; never empty.
[[nodiscard]] std::string description(const ConfigError& error);

}  // namespace tessara
