#pragma once

#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TessaraApp/AppPlatform.h"

namespace tessara {

class AppModel;
class PermissionHelp;

/// This computer, for the whole application: the main executor on Qt's event loop, and every
/// service of the Linux platform. The wiring that the programs for real use have in common; what
/// they do with it, and when it ends, is theirs.
///
/// Main thread. There is one at a time for each user, whatever the program.
class LinuxHost {
  public:
    /// Looks for the user's folders and makes everything; nothing touches the user's input yet. The
    /// error, in words for the user, is that there is no home folder, or that another host is there
    /// for the same user. A `QCoreApplication` is there before it and goes after it, and no thread
    /// has been started yet.
    [[nodiscard]] static std::expected<std::unique_ptr<LinuxHost>, std::string> make();
    /// The application has stopped by now. Gives it up to two seconds to close its connection to
    /// the mouse, and everybody a fifth of a second to read what was released at the end; then the
    /// virtual devices go.
    ~LinuxHost();

    LinuxHost(const LinuxHost&) = delete;
    LinuxHost& operator=(const LinuxHost&) = delete;

    /// What an application is given; `activateApplication` is for the program to add.
    [[nodiscard]] AppPlatform appPlatform();

    /// What is missing of the rights, and the way to them.
    [[nodiscard]] PermissionHelp& permissionHelp();

    /// Lets the model write the mouse's settings again each time that the computer wakes, for as
    /// long as the model lives. Once.
    void reapplySettingsOnWaking(AppModel& model);

    /// Which of the rights that the program needs or could use it lacks, and what of it does not
    /// work then: a sentence for the user each.
    [[nodiscard]] std::vector<std::string> missingRights() const;
    /// What is wrong with the file of the preferences, in words for the user.
    [[nodiscard]] std::optional<std::string> preferencesProblem() const;

  private:
    struct Services;
    explicit LinuxHost(std::unique_ptr<Services> services);

    const std::unique_ptr<Services> services_;
};

}  // namespace tessara
