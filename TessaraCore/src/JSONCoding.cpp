#include "TessaraCore/JSONCoding.h"

#include <cmath>
#include <span>

#include <fmt/format.h>

#include "Text.h"

namespace tessara::json {

std::string Path::description() const {
    if (parent == nullptr) return {};
    const std::string start = parent->description();
    if (key.empty()) return fmt::format("{}[{}]", start, index);
    return start.empty() ? std::string(key) : fmt::format("{}.{}", start, key);
}

void fail(const Path& path, std::string reason) {
    throw Failure{.path = path.description(), .reason = std::move(reason)};
}

void failExpecting(const Path& path, std::string_view expected, JSONValue found) {
    fail(path, fmt::format("expected {}, found {}", expected, found.description()));
}

void failMissing(const Path& path) {
    fail(path, "the key is missing");
}

void failDuplicate(const Path& path) {
    fail(path, "the key appears twice");
}

void failNumberOfKeys(const Path& path) {
    fail(path, "Invalid number of keys found, expected one.");
}

void failUnknownName(const Path& path, std::string_view found,
                     std::span<const std::string_view> names) {
    fail(path, fmt::format(R"("{}" is none of "{}")", text::presentable(found),
                           fmt::join(names, R"(", ")")));
}

bool decodeBoolean(JSONValue value, const Path& path) {
    const std::optional<bool> boolean = value.boolean();
    if (!boolean) failExpecting(path, "a boolean", value);
    return *boolean;
}

double decodeNumber(JSONValue value, const Path& path) {
    const std::optional<double> number = value.number();
    if (!number) failExpecting(path, "a number", value);
    return *number;
}

std::string decodeString(JSONValue value, const Path& path) {
    const std::optional<std::string_view> string = value.string();
    if (!string) failExpecting(path, "a string", value);
    return std::string(*string);
}

namespace {

/// An integer that is none of the type's: another kind of value, a fraction, or too large or small.
template <typename T>
[[noreturn]] void failInteger(JSONValue value, const Path& path, T least, T greatest) {
    const std::optional<double> number = value.number();
    if (!number || std::trunc(*number) != *number) failExpecting(path, "an integer", value);
    fail(path, fmt::format("{} does not lie in {} to {}", value.description(), least, greatest));
}

}  // namespace

std::int64_t decodeSigned(JSONValue value, const Path& path, std::int64_t least,
                          std::int64_t greatest) {
    const std::optional<std::int64_t> integer = value.signedInteger();
    if (!integer || *integer < least || *integer > greatest) {
        failInteger(value, path, least, greatest);
    }
    return *integer;
}

std::uint64_t decodeUnsigned(JSONValue value, const Path& path, std::uint64_t greatest) {
    const std::optional<std::uint64_t> integer = value.unsignedInteger();
    if (!integer || *integer > greatest) {
        failInteger<std::uint64_t>(value, path, 0, greatest);
    }
    return *integer;
}

void encodeNumber(JSONWriter& writer, const Path& path, double value) {
    if (!writer.number(value)) fail(path, "JSON has no form for a number that is not finite");
}

void encodeString(JSONWriter& writer, const Path& path, std::string_view value) {
    if (!writer.string(value)) fail(path, "the text is not valid UTF-8");
}

}  // namespace tessara::json
