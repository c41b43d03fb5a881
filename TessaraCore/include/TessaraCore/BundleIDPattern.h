#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace tessara {

/// Every application, and also the absence of one.
struct AnyBundleID {
    bool operator==(const AnyBundleID&) const = default;
};

/// The one application with this identifier.
struct ExactBundleID {
    std::string text;
    bool operator==(const ExactBundleID&) const = default;
};

/// Every application whose identifier starts with this text, which is kept without the star.
struct BundleIDPrefix {
    std::string text;
    bool operator==(const BundleIDPrefix&) const = default;
};

/// Which applications a rule is for, by their bundle identifier.
///
/// Equality is that of the texts, letter by letter; only matching ignores case. It is no regular
/// expression: a star has a meaning at the very end of what the user types and nowhere else. All
/// texts are UTF-8, and none is checked against the form that identifiers have.
///
/// The stored form is an object whose one key names the case: "any" with an empty object, "exact"
/// or "prefix" with the text under "_0".
using BundleIDPattern = std::variant<AnyBundleID, ExactBundleID, BundleIDPrefix>;

/// Reads what the user typed. White space around it does not count. Nothing, or a lone star, is any
/// application; a star at the end makes a prefix of what stands before it; all else is one exact
/// identifier. Any text is a pattern:
///
///     "com.adobe.*"   the prefix "com.adobe.", with its dot
///     " org.editor "  the identifier "org.editor"
///     "com.*.app"     the identifier "com.*.app", which no application has
///     "**"            the prefix "*"
[[nodiscard]] BundleIDPattern parseBundleIDPattern(std::string_view text);

/// The text that the user would type for `pattern`; "*" for any application. A pattern that was
/// read by `parseBundleIDPattern` gives a text that reads as the same pattern.
[[nodiscard]] std::string patternString(const BundleIDPattern& pattern);

/// Whether `pattern` takes in the application. Case does not matter, by Unicode's full case folding
/// (CaseFolding.txt), and neither do the locale and whether characters are composed. A prefix ends
/// with a whole character as a reader sees it: "e" is no prefix of "é".
///
/// An absent identifier, as of a process without a bundle, is matched by `AnyBundleID` alone.
/// Allocates only for very long identifiers beyond ASCII.
[[nodiscard]] bool matches(const BundleIDPattern& pattern,
                           std::optional<std::string_view> bundleID);

/// How narrow `pattern` is, for choosing among rules of one priority: 0 for any application, the
/// number of the characters that a reader would count plus 1 for a prefix, the greatest integer for
/// an exact identifier.
[[nodiscard]] std::int64_t specificity(const BundleIDPattern& pattern);

}  // namespace tessara
