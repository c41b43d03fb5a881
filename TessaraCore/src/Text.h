#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// What this library needs to know of Unicode. Texts are UTF-8.
namespace tessara::text {

/// `text` without white space and line breaks at its ends.
[[nodiscard]] std::string_view trimmed(std::string_view text);

/// The number of characters that a reader would count. A byte that is not UTF-8 counts as one.
[[nodiscard]] std::size_t characterCount(std::string_view text);

[[nodiscard]] bool isValid(std::string_view text);

/// Whether the texts are the same but for case. Composed and decomposed forms are the same; there
/// is no locale. Texts that are not UTF-8 are compared by their bytes, with the case of ASCII
/// ignored.
[[nodiscard]] bool equalIgnoringCase(std::string_view a, std::string_view b);

/// Whether `text` starts with `prefix` in the same sense, and the prefix does not end inside a
/// character of `text`.
[[nodiscard]] bool hasPrefixIgnoringCase(std::string_view text, std::string_view prefix);

/// `text` for a message to people: cut off after a few hundred bytes, and with a replacement
/// character for each byte that is not UTF-8 and for each control character.
[[nodiscard]] std::string presentable(std::string_view text);

}  // namespace tessara::text
