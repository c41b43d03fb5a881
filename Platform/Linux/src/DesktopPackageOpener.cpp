#include "Platform/Linux/DesktopPackageOpener.h"

#include <memory>

#include <gio/gio.h>

namespace tessara {

std::expected<void, std::string> DesktopPackageOpener::openVerifiedPackage(
    const std::string& path) {
    GError* failure = nullptr;
    const std::unique_ptr<char, decltype(&g_free)> uri(
        g_filename_to_uri(path.c_str(), nullptr, &failure), &g_free);
    if (uri && g_app_info_launch_default_for_uri(uri.get(), nullptr, &failure)) return {};
    const std::unique_ptr<GError, decltype(&g_error_free)> owned(failure, &g_error_free);
    return std::unexpected("No application of this computer opened “" + path +
                           "”: " + failure->message + ".");
}

}  // namespace tessara
