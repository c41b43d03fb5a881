#include "Platform/Linux/AutostartLoginItem.h"

#include <memory>
#include <ranges>
#include <utility>

#include <glib.h>

#include "Platform/FileSystem.h"
#include "Platform/Linux/XDGDirectories.h"

namespace tessara {
namespace {

constexpr const char* entryName = "tessara.desktop";
/// Tells the program that nobody is waiting for a window.
constexpr const char* atLogin = " --at-login";
/// How desktops mark an entry as switched off: the first as all agreed, the second beside it.
constexpr const char* autostartEnabledKey = "X-GNOME-Autostart-enabled";

/// No desktop entry is anywhere near as large.
constexpr std::size_t maximumEntrySizeInBytes = std::size_t{1} << 20;

using OwnedText = std::unique_ptr<char, decltype(&g_free)>;

/// A desktop entry; one that cannot be parsed has no keys.
class EntryFile {
  public:
    explicit EntryFile(const std::string& text)
        : keys_(g_key_file_new(), &g_key_file_unref), isValid_(load(*keys_, text)) {}

    [[nodiscard]] bool isValid() const { return isValid_; }

    [[nodiscard]] std::optional<std::string> string(const char* key) const {
        const OwnedText value(
            g_key_file_get_string(keys_.get(), G_KEY_FILE_DESKTOP_GROUP, key, nullptr), &g_free);
        return value ? std::optional<std::string>(value.get()) : std::nullopt;
    }

    [[nodiscard]] std::optional<bool> boolean(const char* key) const {
        GError* failure = nullptr;
        const bool value =
            g_key_file_get_boolean(keys_.get(), G_KEY_FILE_DESKTOP_GROUP, key, &failure) != FALSE;
        if (!failure) return value;
        g_error_free(failure);
        return std::nullopt;
    }

    [[nodiscard]] bool isSwitchedOff() const {
        return boolean(G_KEY_FILE_DESKTOP_KEY_HIDDEN).value_or(false) ||
               !boolean(autostartEnabledKey).value_or(true);
    }

    /// The text of the same entry, as one that the desktop is to start.
    [[nodiscard]] std::string switchedOn() {
        g_key_file_remove_key(keys_.get(), G_KEY_FILE_DESKTOP_GROUP, G_KEY_FILE_DESKTOP_KEY_HIDDEN,
                              nullptr);
        g_key_file_set_boolean(keys_.get(), G_KEY_FILE_DESKTOP_GROUP, autostartEnabledKey, TRUE);
        if (const auto command = string(G_KEY_FILE_DESKTOP_KEY_EXEC)) {
            g_key_file_set_string(keys_.get(), G_KEY_FILE_DESKTOP_GROUP,
                                  G_KEY_FILE_DESKTOP_KEY_EXEC, (*command + atLogin).c_str());
        }
        gsize length = 0;
        const OwnedText text(g_key_file_to_data(keys_.get(), &length, nullptr), &g_free);
        return {text.get(), length};
    }

  private:
    static bool load(GKeyFile& keys, const std::string& text) {
        return g_key_file_load_from_data(&keys, text.data(), text.size(),
                                         static_cast<GKeyFileFlags>(G_KEY_FILE_KEEP_COMMENTS |
                                                                    G_KEY_FILE_KEEP_TRANSLATIONS),
                                         nullptr) != FALSE;
    }

    const std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> keys_;
    const bool isValid_;
};

/// The program that an entry starts; nothing when it names none.
std::optional<std::string> programOf(const EntryFile& entry) {
    if (auto tried = entry.string(G_KEY_FILE_DESKTOP_KEY_TRY_EXEC)) return tried;
    const auto command = entry.string(G_KEY_FILE_DESKTOP_KEY_EXEC);
    if (!command) return std::nullopt;
    char** words = nullptr;
    if (!g_shell_parse_argv(command->c_str(), nullptr, &words, nullptr)) return std::nullopt;
    const std::unique_ptr<char*, decltype(&g_strfreev)> owned(words, &g_strfreev);
    return std::string(words[0]);
}

}  // namespace

AutostartLoginItem::Places AutostartLoginItem::Places::standard(const XDGDirectories& directories) {
    Places places{.entry = directories.configHome + "/autostart/" + entryName,
                  .installedEntries = {directories.dataHome + "/applications/" + entryName},
                  .programFolders = {}};
    for (const char* const* folder = g_get_system_data_dirs(); *folder; ++folder) {
        places.installedEntries.push_back(std::string(*folder) + "/applications/" + entryName);
    }
    const char* path = g_getenv("PATH");
    for (const auto folder : std::views::split(std::string_view(path ? path : ""), ':')) {
        const std::string_view name(folder.begin(), folder.end());
        if (name.starts_with('/')) places.programFolders.emplace_back(name);
    }
    return places;
}

AutostartLoginItem::AutostartLoginItem(FileSystem& files, Places places)
    : files_(files), places_(std::move(places)) {}

std::expected<std::optional<std::string>, std::string> AutostartLoginItem::readEntry(
    const std::string& path) const {
    const auto exists = files_.exists(path);
    if (!exists) return std::unexpected(exists.error().description);
    if (!*exists) return std::nullopt;
    auto text = files_.read(path, maximumEntrySizeInBytes);
    if (!text) return std::unexpected(text.error().description);
    return *std::move(text);
}

std::expected<bool, std::string> AutostartLoginItem::hasProgram(const std::string& entry) const {
    const auto program = programOf(EntryFile(entry));
    if (!program) return false;
    std::vector<std::string> candidates;
    if (program->starts_with('/')) {
        candidates.push_back(*program);
    } else {
        for (const std::string& folder : places_.programFolders)
            candidates.push_back(folder + "/" + *program);
    }
    for (const std::string& candidate : candidates) {
        const auto exists = files_.exists(candidate);
        if (!exists) return std::unexpected(exists.error().description);
        if (*exists) return true;
    }
    return false;
}

std::expected<std::optional<std::string>, std::string> AutostartLoginItem::installedEntry() const {
    for (const std::string& path : places_.installedEntries) {
        auto entry = readEntry(path);
        if (!entry || *entry) {
            if (!entry) return entry;
            const auto isThere = hasProgram(**entry);
            if (!isThere) return std::unexpected(isThere.error());
            return *isThere ? entry : std::nullopt;
        }
    }
    return std::nullopt;
}

LoginItemStatus AutostartLoginItem::status() const {
    const auto installed = installedEntry();
    if (!installed) return LoginItemStatus::unknown;
    if (!*installed) return LoginItemStatus::notFound;
    const auto registered = readEntry(places_.entry);
    if (!registered) return LoginItemStatus::unknown;
    if (!*registered) return LoginItemStatus::notRegistered;
    const EntryFile entry(**registered);
    // An entry that no desktop can read starts nothing.
    if (!entry.isValid()) return LoginItemStatus::notRegistered;
    return entry.isSwitchedOff() ? LoginItemStatus::requiresApproval : LoginItemStatus::enabled;
}

std::expected<void, std::string> AutostartLoginItem::registerItem() {
    const auto installed = installedEntry();
    if (!installed) return std::unexpected(installed.error());
    if (!*installed) {
        return std::unexpected("Tessara is not installed on this computer: there is no entry “" +
                               std::string(entryName) + "” whose program is there.");
    }
    const auto registered = readEntry(places_.entry);
    if (!registered) return std::unexpected(registered.error());
    if (*registered) {
        const EntryFile entry(**registered);
        if (entry.isValid() && entry.isSwitchedOff()) return {};
    }
    EntryFile entry(**installed);
    if (auto made = files_.createFolders(folderOf(places_.entry)); !made) {
        return std::unexpected(made.error().description);
    }
    if (auto written = files_.replaceAtomically(places_.entry, entry.switchedOn()); !written) {
        return std::unexpected(written.error().description);
    }
    return {};
}

std::expected<void, std::string> AutostartLoginItem::unregisterItem() {
    const auto removed = files_.remove(places_.entry);
    if (!removed && removed.error().kind != FileError::Kind::notFound) {
        return std::unexpected(removed.error().description);
    }
    return {};
}

}  // namespace tessara
