#pragma once

#include "Platform/PackageOpener.h"

namespace tessara {

/// Opens a package with the application that the desktop has for files of its type, as a double
/// click would.
class DesktopPackageOpener final : public PackageOpener {
  public:
    [[nodiscard]] std::expected<void, std::string> openVerifiedPackage(
        const std::string& path) override;
};

}  // namespace tessara
