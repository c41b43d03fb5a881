#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TessaraCore/BundleIDPattern.h"

namespace tessara {

/// Gives a profile to the applications of a pattern.
struct Rule {
    std::string id = {};
    BundleIDPattern pattern = AnyBundleID{};
    /// The id of the profile to use. It may name none: the configuration deals with that at the
    /// lookup.
    std::string profileID = {};
    /// The greater wins.
    std::int64_t priority = 0;
    /// A disabled rule never applies, and stays in the document.
    bool isEnabled = true;

    bool operator==(const Rule&) const = default;
};

/// Which profile applies, and why.
struct ProfileResolution {
    std::string profileID = {};
    /// The rule that chose it; absent when none did and the default stepped in.
    std::optional<Rule> matchedRule = std::nullopt;

    [[nodiscard]] bool usedFallback() const { return !matchedRule; }

    bool operator==(const ProfileResolution&) const = default;
};

/// The rules by which the application in front chooses the profile.
struct RuleSet {
    std::vector<Rule> rules = {};
    /// The profile when no rule applies.
    std::string defaultProfileID = {};

    /// The profile for an application, or for none. Of the enabled rules that match the one of the
    /// greatest priority wins, then the narrower pattern, then the earlier rule. Always has an
    /// answer, whether or not the profile exists. One pass over the rules; only the result is
    /// allocated. Any thread may ask, each on a copy of its own or on one that nobody changes.
    [[nodiscard]] ProfileResolution resolve(std::optional<std::string_view> bundleID) const;

    bool operator==(const RuleSet&) const = default;
};

}  // namespace tessara
