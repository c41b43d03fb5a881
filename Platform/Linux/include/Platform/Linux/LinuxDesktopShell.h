#pragma once

#include "Platform/DesktopShell.h"

namespace tessara {

/// Shows things in the desktop's own programs: files by the file manager (the freedesktop.org
/// interface `org.freedesktop.FileManager1`, or the folder alone where nobody serves that), links
/// by the program that is set up for their scheme. It neither waits for those programs nor hears
/// what became of a request. Main executor, whose loop has to run GLib's main context for a file
/// manager's refusal to be noticed.
class LinuxDesktopShell final : public DesktopShell {
  public:
    void revealFile(const std::string& path) override;
    void openURL(const std::string& url) override;
};

}  // namespace tessara
