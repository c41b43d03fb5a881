#pragma once

#include <cstddef>
#include <string>
#include <variant>

namespace tessara {

/// The bytes are not JSON.
struct JSONSyntaxError {
    /// Where reading stopped: the line, and the byte in the line, both counted from 1.
    std::size_t line = 1;
    std::size_t column = 1;
    /// What is wrong there, in a sentence of limited length and valid UTF-8, whatever the bytes.
    std::string reason;

    bool operator==(const JSONSyntaxError&) const = default;
};

/// The bytes are JSON, but not of the shape that is asked for.
struct DecodingError {
    /// The way to the value at fault, such as "profiles[0].scroll.easing", elements counted from 0;
    /// empty for the whole of it.
    std::string path;
    /// What is wrong there, in words that quote no more than a piece of the text.
    std::string reason;

    bool operator==(const DecodingError&) const = default;
};

/// A value has no JSON form: a number that is not finite, or a text that is not UTF-8.
struct EncodingError {
    /// The way to the value at fault, as in `DecodingError`.
    std::string path;
    /// What is wrong there.
    std::string reason;

    bool operator==(const EncodingError&) const = default;
};

/// Why JSON could not be read: it is none, or none of the shape that is asked for.
using JSONError = std::variant<JSONSyntaxError, DecodingError>;

/// The error in one sentence that says what is wrong and where: "not valid JSON at line 2, column
/// 4:
/// ..." for the syntax, "profiles[0].id: the key is missing" for the rest. It names no file.
[[nodiscard]] std::string description(const JSONSyntaxError& error);
[[nodiscard]] std::string description(const DecodingError& error);
[[nodiscard]] std::string description(const EncodingError& error);
[[nodiscard]] std::string description(const JSONError& error);

}  // namespace tessara
