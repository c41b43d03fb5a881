#pragma once

#include <string>

namespace tessara {

/// Shows the user things that other programs own: a file in its folder, a page of the system's
/// settings, a letter to write. Returns at once, and a failure is not told: the user sees that
/// nothing opened. Main executor only.
class DesktopShell {
  public:
    virtual ~DesktopShell() = default;

    /// `path` is absolute. Opens the folder of the file, with the file selected where the system
    /// can do so.
    virtual void revealFile(const std::string& path) = 0;

    /// Opens the link ("https:", "mailto:" or one of the system's own) in the program that is there
    /// for it.
    virtual void openURL(const std::string& url) = 0;
};

}  // namespace tessara
