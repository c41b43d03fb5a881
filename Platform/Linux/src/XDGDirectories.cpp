#include "Platform/Linux/XDGDirectories.h"

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include <pwd.h>
#include <unistd.h>

namespace tessara {
namespace {

constexpr const char* folderName = "tessara";

std::string inFolder(const std::string& folder, const char* relative) {
    return (std::filesystem::path(folder) / relative).string();
}

std::optional<std::string> ifAbsolute(std::optional<std::string> path) {
    return path && path->starts_with('/') ? std::move(path) : std::nullopt;
}

std::optional<std::string> homeInUserDatabase() {
    // The system's hint for the size may be missing; 16 KiB hold any sane entry.
    const long hint = ::sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(hint > 0 ? static_cast<std::size_t>(hint) : 16384);
    passwd entry{};
    passwd* found = nullptr;
    ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found);
    if (!found || !found->pw_dir) return std::nullopt;
    return found->pw_dir;
}

}  // namespace

std::string XDGDirectories::config() const {
    return inFolder(configHome, folderName);
}

std::string XDGDirectories::data() const {
    return inFolder(dataHome, folderName);
}

std::string XDGDirectories::state() const {
    return inFolder(stateHome, folderName);
}

std::string XDGDirectories::cache() const {
    return inFolder(cacheHome, folderName);
}

std::optional<std::string> XDGDirectories::runtime() const {
    if (!runtimeDirectory) return std::nullopt;
    return inFolder(*runtimeDirectory, folderName);
}

std::expected<XDGDirectories, std::string> XDGDirectories::current() {
    const auto environment = [](const char* name) -> std::optional<std::string> {
        const char* value = std::getenv(name);
        return value ? std::optional<std::string>(value) : std::nullopt;
    };
    return from(environment, homeInUserDatabase());
}

std::expected<XDGDirectories, std::string> XDGDirectories::from(
    const Environment& environment, const std::optional<std::string>& homeInUserDatabase) {
    auto home = ifAbsolute(environment("HOME"));
    if (!home) home = ifAbsolute(homeInUserDatabase);
    if (!home) {
        return std::unexpected(
            "Your home folder is unknown: HOME is not set to an absolute path, and the user "
            "database names none.");
    }
    const auto folder = [&](const char* name, const char* inHome) {
        return ifAbsolute(environment(name)).value_or(inFolder(*home, inHome));
    };
    return XDGDirectories{.home = *home,
                          .configHome = folder("XDG_CONFIG_HOME", ".config"),
                          .dataHome = folder("XDG_DATA_HOME", ".local/share"),
                          .stateHome = folder("XDG_STATE_HOME", ".local/state"),
                          .cacheHome = folder("XDG_CACHE_HOME", ".cache"),
                          .runtimeDirectory = ifAbsolute(environment("XDG_RUNTIME_DIR"))};
}

}  // namespace tessara
