#include "TessaraCore/JSONError.h"

#include <fmt/core.h>

namespace tessara {

namespace {

std::string atPath(const std::string& path, const std::string& reason) {
    return path.empty() ? reason : fmt::format("{}: {}", path, reason);
}

}  // namespace

std::string description(const JSONSyntaxError& error) {
    return fmt::format("not valid JSON at line {}, column {}: {}", error.line, error.column,
                       error.reason);
}

std::string description(const DecodingError& error) {
    return atPath(error.path, error.reason);
}

std::string description(const EncodingError& error) {
    return atPath(error.path, error.reason);
}

std::string description(const JSONError& error) {
    return std::visit([](const auto& each) { return description(each); }, error);
}

}  // namespace tessara
