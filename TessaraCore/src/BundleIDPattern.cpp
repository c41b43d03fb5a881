#include "TessaraCore/BundleIDPattern.h"

#include <limits>

#include "TessaraCore/Checked.h"
#include "TessaraCore/Overloaded.h"
#include "Text.h"

namespace tessara {

BundleIDPattern parseBundleIDPattern(std::string_view text) {
    const std::string_view trimmed = text::trimmed(text);
    if (trimmed.empty() || trimmed == "*") return AnyBundleID{};
    if (trimmed.ends_with('*')) {
        return BundleIDPrefix{std::string(trimmed.substr(0, trimmed.size() - 1))};
    }
    return ExactBundleID{std::string(trimmed)};
}

std::string patternString(const BundleIDPattern& pattern) {
    return std::visit(Overloaded{
                          [](const AnyBundleID&) -> std::string { return "*"; },
                          [](const ExactBundleID& exact) { return exact.text; },
                          [](const BundleIDPrefix& prefix) { return prefix.text + "*"; },
                      },
                      pattern);
}

bool matches(const BundleIDPattern& pattern, std::optional<std::string_view> bundleID) {
    return std::visit(Overloaded{
                          [](const AnyBundleID&) { return true; },
                          [&](const ExactBundleID& exact) {
                              return bundleID && text::equalIgnoringCase(*bundleID, exact.text);
                          },
                          [&](const BundleIDPrefix& prefix) {
                              return bundleID &&
                                     text::hasPrefixIgnoringCase(*bundleID, prefix.text);
                          },
                      },
                      pattern);
}

std::int64_t specificity(const BundleIDPattern& pattern) {
    return std::visit(
        Overloaded{
            [](const AnyBundleID&) { return std::int64_t{0}; },
            [](const ExactBundleID&) { return std::numeric_limits<std::int64_t>::max(); },
            [](const BundleIDPrefix& prefix) {
                return checkedCast<std::int64_t>(text::characterCount(prefix.text)) + 1;
            },
        },
        pattern);
}

}  // namespace tessara
