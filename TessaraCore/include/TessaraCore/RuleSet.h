#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TessaraCore/BundleIDPattern.h"

namespace tessara {

/// Gives a profile to the applications of a pattern.
///
/// The stored form is an object with the names of the fields as its keys, all required.
struct Rule {
    /// Tells the rule from the others in an editor; it plays no part in the choice, and need not be
    /// unique in a document.
    std::string id = {};
    /// The applications that the rule is for.
    BundleIDPattern pattern = AnyBundleID{};
    /// The id of the profile to use. It may name none: the configuration deals with that at the
    /// lookup.
    std::string profileID = {};
    /// The greater wins, before all else. Negative ones are as good as any.
    std::int64_t priority = 0;
    /// A disabled rule never applies, and stays in the document.
    bool isEnabled = true;

    bool operator==(const Rule&) const = default;
};

/// Which profile applies, and why.
struct ProfileResolution {
    /// The rule's profile or the default one, whether or not there is one of this id.
    std::string profileID = {};
    /// The rule that chose it; absent when none did and the default stepped in.
    std::optional<Rule> matchedRule = std::nullopt;

    /// Whether no rule chose it.
    [[nodiscard]] bool usedFallback() const { return !matchedRule; }

    bool operator==(const ProfileResolution&) const = default;
};

/// The rules by which the application in front chooses the profile. It knows ids only, and not the
/// profiles: `Config::activeProfile` goes on from an id to a profile, whatever the id.
///
/// The stored form is an object with the names of the fields as its keys, both required.
struct RuleSet {
    /// In the order of the document, which decides between rules that are equal in all else.
    std::vector<Rule> rules = {};
    /// The id of the profile when no rule applies.
    std::string defaultProfileID = {};

    /// The profile for an application, or for none. Of the enabled rules that match the one of the
    /// greatest priority wins, then the narrower pattern, then the earlier rule. Always has an
    /// answer, whether or not the profile exists. One pass over the rules; only the result is
    /// allocated. Any thread may ask, each on a copy of its own or on one that nobody changes.
    ///
    /// A prefix of priority 20 thus goes before an exact identifier of priority 10, which goes
    /// before a prefix of priority 10, of which the longer goes before the shorter.
    [[nodiscard]] ProfileResolution resolve(std::optional<std::string_view> bundleID) const;

    bool operator==(const RuleSet&) const = default;
};

}  // namespace tessara
