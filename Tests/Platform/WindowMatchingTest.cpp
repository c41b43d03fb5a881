#include <gtest/gtest.h>

#include "Platform/Linux/DesktopEntries.h"
#include "Platform/Linux/WindowIdentity.h"

namespace tessara {
namespace {

using Text = std::optional<std::string>;

TEST(WindowMatching, a_window_belongs_to_the_application_that_its_surest_mark_names) {
    const auto entry = [](std::string id, std::string executable, Text wmClass = std::nullopt,
                          bool isShown = true) {
        return DesktopEntry{.id = std::move(id),
                            .displayName = "",
                            .location = "",
                            .startupWMClass = std::move(wmClass),
                            .executable = std::move(executable),
                            .isShown = isShown};
    };
    const std::vector<DesktopEntry> entries{
        entry("app-notes", "browser", "crx_notes"),
        entry("browse-link", "/usr/bin/browser", "Browser", false),
        entry("browser", "/usr/bin/browser", "Browser"),
        entry("gimp", "gimp-2.10"),
        entry("org.example.Files", "files"),
        entry("org.example.editor", "editor"),
        entry("net.example.editor", "editor"),
        entry("python3.11", "/usr/bin/python3.11", std::nullopt, false),
        entry("terminal-emulator", "term")};

    const struct {
        const char* what;
        WindowIdentity window;
        Text id;
    } cases[] = {
        {"its own identifier goes before its class",
         {"org.example.Files", "browser", "Browser", {}},
         "org.example.Files"},
        {"an installed page differs from its browser in the instance",
         {{}, "crx_notes", "Browser", {}},
         "app-notes"},
        {"what menus show goes before a handler", {{}, "x", "Browser", {}}, "browser"},
        {"the class in another case", {{}, "x", "BROWSER", {}}, "browser"},
        {"the file's name in another case", {{}, "x", "Gimp", {}}, "gimp"},
        {"blanks are hyphens", {{}, "x", "Terminal Emulator", {}}, "terminal-emulator"},
        {"the end of the file's name", {{}, "files", "Files", {}}, "org.example.Files"},
        {"an end that two files have", {{}, "x", "editor", {}}, "editor"},
        {"an app_id that is a class", {"crx_notes", {}, {}, {}}, "app-notes"},
        {"the program, as the class says nothing",
         {{}, "x", "Gimp-2.99", "/usr/bin/gimp-2.10"},
         "gimp"},
        {"a program of two entries is no mark", {{}, "x", "Y", "/usr/bin/editor"}, "Y"},
        {"an interpreter in no menu is no mark", {{}, {}, {}, "/usr/bin/python3.11"}, {}},
        {"not installed: the name it has", {"game.x86", "a", "b", "/opt/game"}, "game.x86"},
        {"not installed: the class", {{}, "instance", "Class", "/opt/game"}, "Class"},
        {"empty names are none", {"", "", "", {}}, {}},
    };
    for (const auto& each : cases)
        EXPECT_EQ(applicationIDOfWindow(entries, each.window), each.id) << each.what;
}

}  // namespace
}  // namespace tessara
