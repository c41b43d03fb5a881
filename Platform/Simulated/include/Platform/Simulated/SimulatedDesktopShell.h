#pragma once

#include <string>
#include <vector>

#include "Platform/DesktopShell.h"

namespace tessara {

/// Notes what the user was shown.
class SimulatedDesktopShell final : public DesktopShell {
  public:
    void revealFile(const std::string& path) override { revealedFiles.push_back(path); }
    void openURL(const std::string& url) override { openedURLs.push_back(url); }

    std::vector<std::string> revealedFiles;
    std::vector<std::string> openedURLs;
};

}  // namespace tessara
