#pragma once

#include <cstdint>
#include <expected>
#include <string>
#include <string_view>

#include "TessaraCore/ConfigError.h"

/// Brings documents of earlier formats to the current one.
///
/// It looks at nothing but the version, and not through the eyes of the typed decoder, so that a
/// document of a later version is recognised as one whatever else it holds. A number with a
/// fraction is cut off, one too large is taken for the greatest, and a boolean counts as 0 or 1:
/// the decoding that follows refuses all three.
namespace tessara::ConfigMigrator {

/// The document in the current format. One that is in it already is returned byte for byte, not
/// written anew. An earlier one goes through the steps from each version to the next. The errors:
/// `JSONSyntaxError`, `UnsupportedSchemaVersion` for a later version, and `MalformedConfig` for a
/// root that is no object, for a version that is missing or no number, and for a version that no
/// step leads on from. `Config::decoded` does this by itself.
[[nodiscard]] std::expected<std::string, ConfigError> migrate(std::string_view rawJSON);

}  // namespace tessara::ConfigMigrator
