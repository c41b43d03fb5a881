#include "TessaraCore/Config.h"

#include <algorithm>
#include <utility>

#include "ConfigDecoding.h"
#include "TessaraCore/ConfigMigrator.h"
#include "TessaraCore/JSON.h"

namespace tessara {

namespace {

RuleSet factoryRuleSet() {
    const auto canvasRule = [](std::string id, BundleIDPattern pattern) {
        return Rule{.id = std::move(id),
                    .pattern = std::move(pattern),
                    .profileID = "canvas",
                    .priority = 10,
                    .isEnabled = true};
    };
    return {.rules = {canvasRule("adobe", BundleIDPrefix{"com.adobe."}),
                      canvasRule("figma", ExactBundleID{"com.figma.Desktop"}),
                      canvasRule("miro", ExactBundleID{"com.electron.realtimeboard"}),
                      canvasRule("sketch", ExactBundleID{"com.bohemiancoding.sketch3"})},
            .defaultProfileID = std::string(Profile::defaultProfileID)};
}

}  // namespace

const Config& Config::default_() {
    static const Config config{
        .schemaVersion = currentSchemaVersion,
        .isEnabled = true,
        .profiles = {Profile::default_(), Profile::canvasApp("canvas", "Canvas & Design Apps")},
        .ruleSet = factoryRuleSet()};
    return config;
}

std::expected<std::string, EncodingError> Config::encoded() const {
    return encodeJSON(*this);
}

std::expected<Config, ConfigError> Config::decoded(std::string_view bytes) {
    auto document = JSONDocument::parse(bytes);
    if (!document) return std::unexpected(std::move(document.error()));
    auto version = tessara::schemaVersion(*document);
    if (!version) return std::unexpected(std::move(version.error()));
    if (*version != currentSchemaVersion) {
        auto migrated = ConfigMigrator::migrate(bytes);
        if (!migrated) return std::unexpected(std::move(migrated.error()));
        document = JSONDocument::parse(*migrated);
        if (!document) return std::unexpected(std::move(document.error()));
    }
    auto config = decodeConfig(*document);
    if (!config) return std::unexpected(std::move(config.error()));
    return *std::move(config);
}

const Profile* Config::profile(std::string_view id) const {
    const auto found = std::ranges::find(profiles, id, &Profile::id);
    return found == profiles.end() ? nullptr : &*found;
}

ProfileResolution Config::resolve(std::optional<std::string_view> bundleID) const {
    return ruleSet.resolve(bundleID);
}

Profile Config::activeProfile(std::optional<std::string_view> bundleID) const {
    if (const Profile* chosen = profile(resolve(bundleID).profileID)) return *chosen;
    if (const Profile* fallback = profile(ruleSet.defaultProfileID)) return *fallback;
    if (!profiles.empty()) return profiles.front();
    return Profile::default_();
}

}  // namespace tessara
