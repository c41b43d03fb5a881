#pragma once

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TessaraCore/ConfigError.h"
#include "TessaraCore/JSONError.h"
#include "TessaraCore/Profile.h"
#include "TessaraCore/RuleSet.h"

namespace tessara {

/// All that the user has set: the document of the program.
///
/// A document is decoded as it stands. Settings out of range, ids that appear twice and rules that
/// point nowhere all load and are saved again unchanged; they are dealt with where they are used,
/// by the lookups below and by `ScrollSettings::sanitized`. Where the document is kept is not known
/// here.
struct Config {
    /// The version of the document's format that this program reads and writes.
    static constexpr std::int64_t currentSchemaVersion = 1;

    std::int64_t schemaVersion = currentSchemaVersion;
    /// The master switch for all processing.
    bool isEnabled = true;
    std::vector<Profile> profiles = {};
    RuleSet ruleSet = {};

    /// The factory document. Built once; any thread may read it.
    [[nodiscard]] static const Config& default_();

    /// The document as bytes: UTF-8 JSON with sorted keys, the same bytes for an equal document.
    /// Fails only on a number that is not finite and on a text that is not UTF-8.
    [[nodiscard]] std::expected<std::string, EncodingError> encoded() const;

    /// The document of these bytes, migrated to the current version first. Unknown keys are passed
    /// over, and lost at the next save.
    [[nodiscard]] static std::expected<Config, ConfigError> decoded(std::string_view bytes);

    /// The first profile with just this id, or null. Valid until the document changes.
    [[nodiscard]] const Profile* profile(std::string_view id) const;

    /// Which profile the rules choose for an application, whether or not it exists.
    [[nodiscard]] ProfileResolution resolve(std::optional<std::string_view> bundleID) const;

    /// The profile to use for an application. Never fails: where the rules point nowhere it is the
    /// default profile, then the first one, then the factory's.
    [[nodiscard]] Profile activeProfile(std::optional<std::string_view> bundleID) const;

    bool operator==(const Config&) const = default;
};

}  // namespace tessara
