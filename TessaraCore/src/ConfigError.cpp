#include "TessaraCore/ConfigError.h"

#include <fmt/core.h>

#include "TessaraCore/Overloaded.h"

namespace tessara {

std::string description(const ConfigError& error) {
    return std::visit(Overloaded{
                          [](const UnsupportedSchemaVersion& version) {
                              return fmt::format(
                                  "schema version {} is newer than {}, the newest supported",
                                  version.found, version.supported);
                          },
                          [](const MalformedConfig& malformed) { return malformed.reason; },
                          [](const JSONSyntaxError& syntax) { return description(syntax); },
                          [](const DecodingError& decoding) { return description(decoding); },
                      },
                      error);
}

}  // namespace tessara
