#pragma once

#include <expected>
#include <functional>
#include <optional>
#include <string>

namespace tessara {

/// Where the user's files belong, by the XDG Base Directories that the desktops of freedesktop.org
/// have agreed on. Only paths: nothing is created or checked here. A variable that is empty or not
/// an absolute path counts as not set.
struct XDGDirectories {
    /// Gives the value of an environment variable, or nothing when it is not set.
    using Environment = std::function<std::optional<std::string>(const char* name)>;

    /// The user's home folder: $HOME, or what the user database says.
    std::string home;
    /// Settings: $XDG_CONFIG_HOME or ~/.config.
    std::string configHome;
    /// Data: $XDG_DATA_HOME or ~/.local/share.
    std::string dataHome;
    /// What may be lost without harm, but should outlive a restart: $XDG_STATE_HOME or
    /// ~/.local/state.
    std::string stateHome;
    /// What can be had again at any time: $XDG_CACHE_HOME or ~/.cache.
    std::string cacheHome;
    /// Sockets and the like of this login: $XDG_RUNTIME_DIR. There is no other place that would be
    /// as private, so it may be absent.
    std::optional<std::string> runtimeDirectory;

    /// The folders of this program in those; it is named "tessara" in each. `runtime` is none where
    /// there is no such directory.
    [[nodiscard]] std::string config() const;
    [[nodiscard]] std::string data() const;
    [[nodiscard]] std::string state() const;
    [[nodiscard]] std::string cache() const;
    [[nodiscard]] std::optional<std::string> runtime() const;

    /// Reads the process's environment. Fails, in words for the user, when no home folder can be
    /// found. To be called before there are other threads: the environment has no lock.
    [[nodiscard]] static std::expected<XDGDirectories, std::string> current();

    /// As `current`, with an environment and the user database's home folder as given.
    [[nodiscard]] static std::expected<XDGDirectories, std::string> from(
        const Environment& environment, const std::optional<std::string>& homeInUserDatabase);

    bool operator==(const XDGDirectories&) const = default;
};

}  // namespace tessara
