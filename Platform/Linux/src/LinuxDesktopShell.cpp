#include "Platform/Linux/LinuxDesktopShell.h"

#include <memory>

#include <gio/gio.h>

#include "GObjectPointer.h"
#include "Platform/FileSystem.h"

namespace tessara {
namespace {

struct FreeText {
    void operator()(char* text) const noexcept { g_free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

void open(const char* uri) {
    g_app_info_launch_default_for_uri_async(uri, nullptr, nullptr, nullptr, nullptr);
}

/// `data` is the folder's path, and ours to free.
void folderIsSecondBest(GObject* source, GAsyncResult* result, void* data) {
    const std::unique_ptr<std::string> folder(static_cast<std::string*>(data));
    GError* refusal = nullptr;
    GVariant* const answer =
        g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &refusal);
    if (answer) {
        g_variant_unref(answer);
        return;
    }
    g_error_free(refusal);
    if (const Text uri{g_filename_to_uri(folder->c_str(), nullptr, nullptr)}) open(uri.get());
}

}  // namespace

void LinuxDesktopShell::revealFile(const std::string& path) {
    const Text uri{g_filename_to_uri(path.c_str(), nullptr, nullptr)};
    const Text folderURI{g_filename_to_uri(folderOf(path).c_str(), nullptr, nullptr)};
    if (!uri || !folderURI) return;
    const GObjectPointer<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    if (!bus) {
        open(folderURI.get());
        return;
    }
    const char* uris[] = {uri.get(), nullptr};
    g_dbus_connection_call(bus.get(), "org.freedesktop.FileManager1",
                           "/org/freedesktop/FileManager1", "org.freedesktop.FileManager1",
                           "ShowItems", g_variant_new("(^ass)", uris, ""), nullptr,
                           G_DBUS_CALL_FLAGS_NONE, -1, nullptr, folderIsSecondBest,
                           std::make_unique<std::string>(folderOf(path)).release());
}

void LinuxDesktopShell::openURL(const std::string& url) {
    open(url.c_str());
}

}  // namespace tessara
