#pragma once

#include <expected>
#include <string>
#include <string_view>

#include "TessaraCore/JSONError.h"

/// The stored form of the values of this library: JSON, decoded strictly.
///
/// What a document says is what the value holds: nothing is converted, limited or filled in. Every
/// key is required but those of optional fields, which may be absent or null; a boolean is no
/// number; an integer has no fraction (3.0 is one, 3.5 is not) and fits its type; a tagged union
/// holds exactly one of its known keys; a known key that appears twice is an error. Unknown keys
/// are passed over. The first error found is returned, with the way to it.
///
/// The text is JSON as RFC 8259 has it, without comments and with nothing behind the value. `T` is
/// any of the stored types of this library, from `ModifierFlags` to `Config`, or a type of yours:
/// see JSONCoding.h. Any thread may call both functions.
///
///     const auto easing = decodeJSON<Easing>(text);
///     if (!easing) return description(easing.error());
namespace tessara {

/// The value that `text`, UTF-8, stands for. A hostile one costs no more than time and memory in
/// proportion to its length: nesting beyond 512 levels is a syntax error. A text that is not JSON
/// gives a `JSONSyntaxError` with the line and the column, one of another shape a `DecodingError`
/// with the way to the value.
template <typename T>
[[nodiscard]] std::expected<T, JSONError> decodeJSON(std::string_view text);

/// The stored form of `value`: UTF-8, indented by two spaces, keys sorted at every level. The
/// same value always gives the same bytes, and decoding gives it back to the last bit of a number.
/// The only errors are a number that is not finite and a text that is not UTF-8.
template <typename T>
[[nodiscard]] std::expected<std::string, EncodingError> encodeJSON(const T& value);

}  // namespace tessara
