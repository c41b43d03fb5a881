#include "TessaraCore/ConfigMigrator.h"

#include <cmath>
#include <limits>
#include <utility>

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include "ConfigDecoding.h"

namespace tessara {

namespace {

/// The whole part of `value`, the nearest integer there is for one beyond their range.
std::int64_t saturated(double value) {
    if (value >= 0x1p63) return std::numeric_limits<std::int64_t>::max();
    if (value < -0x1p63) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(value);
}

/// Makes a document of version `version` one of the version after it, but for the number itself.
/// This is where the migration of one version is registered; there has been none yet.
std::expected<void, ConfigError> step(std::int64_t version, nlohmann::json& /*document*/) {
    return std::unexpected(
        MalformedConfig{fmt::format("no migration registered from schema version {}", version)});
}

}  // namespace

std::expected<std::int64_t, ConfigError> schemaVersion(const JSONDocument& document) {
    const JSONValue root = document.root();
    if (!root.isObject()) {
        return std::unexpected(MalformedConfig{"root of the config must be a JSON object"});
    }
    const std::optional<JSONValue> stated = root.member("schemaVersion");
    std::optional<std::int64_t> version;
    if (stated) {
        if (const std::optional<bool> boolean = stated->boolean()) {
            version = *boolean ? 1 : 0;
        } else if (const std::optional<std::int64_t> integer = stated->signedInteger()) {
            version = integer;
        } else if (const std::optional<double> number = stated->number()) {
            version = saturated(*number);
        }
    }
    if (!version) return std::unexpected(MalformedConfig{"missing or non-numeric schemaVersion"});
    if (*version > Config::currentSchemaVersion) {
        return std::unexpected(
            UnsupportedSchemaVersion{.found = *version, .supported = Config::currentSchemaVersion});
    }
    return *version;
}

std::expected<std::string, ConfigError> ConfigMigrator::migrate(std::string_view rawJSON) {
    const auto parsed = JSONDocument::parse(rawJSON);
    if (!parsed) return std::unexpected(parsed.error());
    auto version = schemaVersion(*parsed);
    if (!version) return std::unexpected(std::move(version.error()));
    if (*version == Config::currentSchemaVersion) return std::string(rawJSON);

    nlohmann::json document = nlohmann::json::parse(rawJSON);
    while (*version != Config::currentSchemaVersion) {
        if (auto stepped = step(*version, document); !stepped) {
            return std::unexpected(std::move(stepped.error()));
        }
        document["schemaVersion"] = ++*version;
    }
    return document.dump(2);
}

}  // namespace tessara
