#pragma once

#include <expected>
#include <string>

namespace tessara {

/// Hands packages to whatever installs software on this system. It looks into none of them: that a
/// package is what it says is for the caller to know.
class PackageOpener {
  public:
    virtual ~PackageOpener() = default;

    /// Opens the package with the system's installer, which asks the user and does the rest. Only
    /// for a file whose signature has been verified. Returns once the installer is on its way; the
    /// error is a sentence for the user that names the file. Main executor.
    [[nodiscard]] virtual std::expected<void, std::string> openVerifiedPackage(
        const std::string& path) = 0;
};

}  // namespace tessara
