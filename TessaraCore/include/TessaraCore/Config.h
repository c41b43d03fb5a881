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
/// here; neither is when it is saved. A value, which any thread may read that nobody changes.
///
/// A document with one profile and one rule, as it is encoded but for the line breaks inside of the
/// innermost objects. What each part means stands with the type of its name:
///
///     {
///       "isEnabled": true,
///       "profiles": [
///         {
///           "buttons": [
///             {
///               "action": {"dpiShift": {"toDPI": 400}},
///               "button": 5,
///               "isEnabled": true,
///               "modifiers": 0
///             }
///           ],
///           "id": "default",
///           "name": "Default",
///           "pointer": {"curve": {...}, "dpi": 2000, "isEnabled": true},
///           "scroll": {"accelerationEnabled": true, ..., "pixelsPerDetent": 50}
///         }
///       ],
///       "ruleSet": {
///         "defaultProfileID": "default",
///         "rules": [
///           {
///             "id": "editors",
///             "isEnabled": true,
///             "pattern": {"prefix": {"_0": "org.editor."}},
///             "priority": 10,
///             "profileID": "default"
///           }
///         ]
///       },
///       "schemaVersion": 1
///     }
struct Config {
    /// The version of the document's format that this program reads and writes.
    static constexpr std::int64_t currentSchemaVersion = 1;

    /// The version of this document, the current one in all that is decoded or made here.
    std::int64_t schemaVersion = currentSchemaVersion;
    /// The master switch for all processing. When it is off the mouse works as the system would
    /// have it.
    bool isEnabled = true;
    /// In the order in which they are shown. There may be none, and two of one id.
    std::vector<Profile> profiles = {};
    /// Which of the profiles applies when.
    RuleSet ruleSet = {};

    /// The factory document: a default profile, one for design applications, and the rules that
    /// choose that one. Built once; any thread may read it.
    [[nodiscard]] static const Config& default_();

    /// The document as bytes: UTF-8 JSON with sorted keys, the same bytes for an equal document.
    /// Fails only on a number that is not finite and on a text that is not UTF-8.
    [[nodiscard]] std::expected<std::string, EncodingError> encoded() const;

    /// The document of these bytes, migrated to the current version first. Unknown keys are passed
    /// over, and lost at the next save. The version is looked at before all else, so that a
    /// document of a later one is told from a broken one. Time and memory are in proportion to the
    /// length.
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
