#include <algorithm>
#include <array>
#include <string_view>

#include "Platform/Linux/DesktopEntries.h"
#include "Platform/Linux/WindowIdentity.h"

namespace tessara {
namespace {

using Entries = std::span<const DesktopEntry>;

char lowered(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool equalIgnoringCase(std::string_view left, std::string_view right) {
    return std::ranges::equal(left, right, {}, lowered, lowered);
}

std::string_view afterLast(std::string_view text, char separator) {
    return text.substr(text.rfind(separator) + 1);
}

/// The entry whose text, as `textOf` gives it, is `wanted`. An equal case goes before another, and
/// what menus show before the rest.
template <typename TextOf>
const DesktopEntry* entryWith(Entries entries, std::string_view wanted, TextOf textOf) {
    const DesktopEntry* best = nullptr;
    int bestRank = 0;
    for (const DesktopEntry& entry : entries) {
        const std::string_view text = textOf(entry);
        if (text.empty() || !equalIgnoringCase(text, wanted)) continue;
        const int rank = 1 + (text == wanted ? 2 : 0) + (entry.isShown ? 1 : 0);
        if (rank <= bestRank) continue;
        best = &entry;
        bestRank = rank;
    }
    return best;
}

/// As `entryWith` among shown entries, but null when several fit: a guess is worse than none.
template <typename TextOf>
const DesktopEntry* onlyEntryWith(Entries entries, std::string_view wanted, TextOf textOf) {
    const DesktopEntry* only = nullptr;
    for (const DesktopEntry& entry : entries) {
        if (!entry.isShown || !equalIgnoringCase(textOf(entry), wanted)) continue;
        if (only) return nullptr;
        only = &entry;
    }
    return only;
}

std::string_view idOf(const DesktopEntry& entry) {
    return entry.id;
}

/// "nautilus" of "org.example.nautilus".
std::string_view lastComponentOf(const DesktopEntry& entry) {
    return afterLast(entry.id, '.');
}

std::string_view startupWMClassOf(const DesktopEntry& entry) {
    return entry.startupWMClass ? std::string_view(*entry.startupWMClass) : std::string_view();
}

std::string_view programNameOf(const DesktopEntry& entry) {
    return afterLast(entry.executable, '/');
}

}  // namespace

const DesktopEntry* entryOfWindow(Entries entries, const WindowIdentity& window) {
    if (window.applicationID) {
        if (const auto* entry = entryWith(entries, *window.applicationID, idOf)) return entry;
    }
    // The instance goes before the class: a browser's installed pages differ only in that.
    std::vector<std::string> names;
    for (const auto* name : {&window.applicationID, &window.instanceName, &window.className}) {
        if (*name && !(*name)->empty()) names.push_back(**name);
    }
    for (const std::string& name : names) {
        if (const auto* entry = entryWith(entries, name, startupWMClassOf)) return entry;
    }
    // A file's name has hyphens where a window's has blanks.
    for (std::string& name : names)
        std::ranges::replace(name, ' ', '-');
    for (const std::string& name : names) {
        if (const auto* entry = entryWith(entries, name, idOf)) return entry;
    }
    for (const std::string& name : names) {
        if (const auto* entry = onlyEntryWith(entries, name, lastComponentOf)) return entry;
    }
    if (!window.executable) return nullptr;
    return onlyEntryWith(entries, afterLast(*window.executable, '/'), programNameOf);
}

std::optional<std::string> applicationIDOfWindow(Entries entries, const WindowIdentity& window) {
    if (const auto* entry = entryOfWindow(entries, window)) return entry->id;
    for (const auto* name : {&window.applicationID, &window.className, &window.instanceName}) {
        if (*name && !(*name)->empty()) return *name;
    }
    return std::nullopt;
}

}  // namespace tessara
