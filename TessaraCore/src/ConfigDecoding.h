#pragma once

#include <cstdint>
#include <expected>

#include "TessaraCore/Config.h"
#include "TessaraCore/ConfigError.h"
#include "TessaraCore/JSONDocument.h"

/// The two halves of reading a configuration, each on a document that is parsed already, so that
/// the usual document, of the current version, is parsed once.
namespace tessara {

/// The version that `document` says it has, never above the current one.
[[nodiscard]] std::expected<std::int64_t, ConfigError> schemaVersion(const JSONDocument& document);

/// The typed decoding of a document of the current version.
[[nodiscard]] std::expected<Config, DecodingError> decodeConfig(const JSONDocument& document);

}  // namespace tessara
