#include "Platform/Linux/DesktopEntries.h"

#include <algorithm>

#include <gio/gdesktopappinfo.h>

#include "DetachedChild.h"
#include "GObjectPointer.h"

namespace tessara {
namespace {

constexpr std::string_view suffix = ".desktop";

std::string textOrEmpty(const char* text) {
    return text ? text : "";
}

std::optional<DesktopEntry> entryOf(GDesktopAppInfo* file) {
    GAppInfo* const info = G_APP_INFO(file);
    std::string id = textOrEmpty(g_app_info_get_id(info));
    const char* const location = g_desktop_app_info_get_filename(file);
    if (!id.ends_with(suffix) || !location) return std::nullopt;
    id.resize(id.size() - suffix.size());
    const char* const wmClass = g_desktop_app_info_get_startup_wm_class(file);
    return DesktopEntry{
        .id = std::move(id),
        .displayName = textOrEmpty(g_app_info_get_display_name(info)),
        .location = location,
        .startupWMClass = wmClass ? std::optional<std::string>(wmClass) : std::nullopt,
        .executable = textOrEmpty(g_app_info_get_executable(info)),
        .isShown = g_app_info_should_show(info) != FALSE};
}

}  // namespace

std::vector<DesktopEntry> DesktopEntries::all() {
    std::vector<DesktopEntry> entries;
    GList* const files = g_app_info_get_all();
    for (const GList* link = files; link; link = link->next) {
        if (!G_IS_DESKTOP_APP_INFO(link->data)) continue;
        if (auto entry = entryOf(G_DESKTOP_APP_INFO(link->data))) {
            entries.push_back(*std::move(entry));
        }
    }
    g_list_free_full(files, g_object_unref);
    std::ranges::sort(entries, {}, &DesktopEntry::id);
    return entries;
}

std::optional<DesktopEntry> DesktopEntries::find(const std::string& id) {
    const GObjectPointer<GDesktopAppInfo> file(
        g_desktop_app_info_new((id + std::string(suffix)).c_str()));
    return file ? entryOf(file.get()) : std::nullopt;
}

std::optional<DesktopEntry> DesktopEntries::findAt(const std::string& location) {
    for (DesktopEntry& entry : all()) {
        if (entry.location == location) return std::move(entry);
    }
    return std::nullopt;
}

bool DesktopEntries::launch(const std::string& location) {
    const GObjectPointer<GDesktopAppInfo> file(
        g_desktop_app_info_new_from_filename(location.c_str()));
    if (!file) return false;
    return g_desktop_app_info_launch_uris_as_manager(
               file.get(), nullptr, nullptr, static_cast<GSpawnFlags>(detachedSpawnFlags()),
               detachChild, nullptr, nullptr, nullptr, nullptr) != FALSE;
}

}  // namespace tessara
