#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Platform/LoginItemService.h"

namespace tessara {

class FileSystem;
struct XDGDirectories;

/// The program among the applications that the desktop starts at login: a copy of its desktop entry
/// in the user's autostart folder (Desktop Application Autostart of freedesktop.org), started with
/// `--at-login`. An entry that the desktop's own settings switched off stays switched off: it reads
/// as waiting for approval, and registering leaves it as it is.
///
/// | The user's entry | Status |
/// |---|---|
/// | any, where no installed entry names a program that is there | `notFound` |
/// | none, or no desktop entry | `notRegistered` |
/// | with `Hidden=true` or `X-GNOME-Autostart-enabled=false` | `requiresApproval` |
/// | another | `enabled` |
/// | one that cannot be read | `unknown` |
///
/// That `OnlyShowIn` and the like leave a desktop out is not looked at.
///
/// It starts nothing itself, and does not look whether the program runs. The user's files may
/// change under its hands at any time, so nothing of them is kept. Main executor; a question is a
/// few files read.
class AutostartLoginItem final : public LoginItemService {
  public:
    struct Places {
        /// The user's entry: "tessara.desktop" in the folder "autostart" of the configuration home.
        std::string entry;
        /// Where an installed program's entry may be, the user's own folder ahead of the system's;
        /// the first that is there counts.
        std::vector<std::string> installedEntries;
        /// Where a program without a path is looked for: the absolute folders of $PATH, in order.
        std::vector<std::string> programFolders;

        /// As the environment has them. To be called before there are other threads.
        [[nodiscard]] static Places standard(const XDGDirectories& directories);
    };

    /// `files` outlives this.
    AutostartLoginItem(FileSystem& files, Places places);

    // `notFound` when the program has no entry that can be started, `unknown` when a file cannot be
    // read, and so cannot be told; errors are sentences for the user.

    [[nodiscard]] LoginItemStatus status() const override;
    [[nodiscard]] std::expected<void, std::string> registerItem() override;
    [[nodiscard]] std::expected<void, std::string> unregisterItem() override;

  private:
    /// The text of the installed entry, if its program is there too.
    [[nodiscard]] std::expected<std::optional<std::string>, std::string> installedEntry() const;
    [[nodiscard]] std::expected<bool, std::string> hasProgram(const std::string& entry) const;
    /// The text of the user's entry, if there is one.
    [[nodiscard]] std::expected<std::optional<std::string>, std::string> readEntry(
        const std::string& path) const;

    FileSystem& files_;
    const Places places_;
};

}  // namespace tessara
