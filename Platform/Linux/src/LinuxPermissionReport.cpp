#include "Platform/Linux/LinuxPermissionReport.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string_view>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include "Platform/Linux/HIDDeviceName.h"
#include "Platform/Linux/InputDevices.h"
#include "Platform/Linux/LinuxEventTapService.h"

namespace tessara {
namespace {

namespace fs = std::filesystem;
using Node = LinuxPermissionReport::Node;

constexpr const char* ruleFile = "70-tessara.rules";

bool kernelGrants(const std::string& path, int mode) {
    return ::faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0;
}

/// What a class of devices in /sys holds under names of this beginning, each with the target of its
/// link, which is the device's place in the tree.
std::vector<std::pair<std::string, std::string>> devicesOf(const fs::path& folder,
                                                           std::string_view beginning) {
    std::vector<std::pair<std::string, std::string>> devices;
    std::error_code error;
    // Devices come and go meanwhile; each error is one that is not there.
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        std::string name = entry->path().filename();
        std::error_code gone;
        if (name.starts_with(beginning))
            devices.emplace_back(std::move(name), fs::read_symlink(entry->path(), gone));
    }
    std::ranges::sort(devices);
    return devices;
}

bool isWanted(const std::vector<InputDeviceMatch>& mice, const std::string& place) {
    const auto name = HIDDeviceName::inPath(place);
    return name && std::ranges::any_of(mice, [&](const InputDeviceMatch& mouse) {
               return mouse.vendor == name->vendorID && mouse.product == name->productID;
           });
}

/// Whether the input node in this folder of /sys is a keyboard's.
bool isKeyboard(const fs::path& folder) {
    const auto capabilities = [&](const char* name) {
        std::ifstream file(folder / "device/capabilities" / name);
        std::string text;
        std::getline(file, text);
        return CapabilityBits(text);
    };
    return inputRole(capabilities("key"), capabilities("rel")) == InputRole::keyboard;
}

bool areUsable(const std::vector<Node>& nodes) {
    return std::ranges::all_of(nodes, &Node::isUsable);
}

std::vector<std::string> problemsOf(const std::vector<Node>& nodes, std::string_view consequence) {
    std::vector<std::string> problems;
    for (const Node& node : nodes) {
        if (!node.isUsable) {
            problems.push_back(
                fmt::format("{} may not be used by you, so {}.", node.path, consequence));
        }
    }
    return problems;
}

}  // namespace

bool LinuxPermissionReport::canPost() const {
    return uinput == UinputAccess::granted;
}

bool LinuxPermissionReport::canListen() const {
    return inputNodes.empty() ? readsAnyInput || hasRule : areUsable(inputNodes);
}

bool LinuxPermissionReport::canSpeak() const {
    return hidNodes.empty() ? hasRule : areUsable(hidNodes);
}

std::vector<std::string> LinuxPermissionReport::postingProblems() const {
    switch (uinput) {
        case UinputAccess::granted:
            return {};
        case UinputAccess::missing:
            return {
                "/dev/uinput is missing because the kernel's module uinput is not loaded, so "
                "Tessara cannot send scrolling, keys and buttons."};
        case UinputAccess::refused:
            break;
    }
    return {
        "/dev/uinput may not be written by you, so Tessara cannot send scrolling, keys and "
        "buttons."};
}

std::vector<std::string> LinuxPermissionReport::listeningProblems() const {
    if (inputNodes.empty() && !canListen())
        return {"The mouse is not plugged in, and no rule hands it to you when it is."};
    return problemsOf(inputNodes, "Tessara cannot see the mouse's wheel, buttons and movement");
}

std::vector<std::string> LinuxPermissionReport::speakingProblems() const {
    return problemsOf(hidNodes, "Tessara cannot read or set the mouse's resolution");
}

std::vector<std::string> LinuxPermissionReport::problems() const {
    std::vector<std::string> problems = postingProblems();
    for (const auto& more : {listeningProblems(), speakingProblems()})
        problems.insert(problems.end(), more.begin(), more.end());
    return problems;
}

bool LinuxPermissionReport::canSeeModifiers() const {
    return areUsable(keyboards);
}

std::vector<std::string> LinuxPermissionReport::limitations() const {
    if (canSeeModifiers()) return {};
    return {
        "The keyboard may not be read by you, so scrolling and buttons that ask for Shift, Control "
        "or another modifier key act as if it were never held."};
}

LinuxPermissionReport LinuxPermissionReport::read(const std::vector<InputDeviceMatch>& mice,
                                                  const System& system) {
    const auto hasAccess = [&](const std::string& path, int mode) {
        return system.hasAccess ? system.hasAccess(path, mode) : kernelGrants(path, mode);
    };
    const auto exists = [&](const std::string& path) { return ::access(path.c_str(), F_OK) == 0; };
    const std::string& root = system.root;
    LinuxPermissionReport report;

    const std::string uinput = root + "/dev/uinput";
    if (exists(uinput)) {
        report.uinput = hasAccess(uinput, W_OK) ? UinputAccess::granted : UinputAccess::refused;
    }
    for (const auto& [name, place] : devicesOf(root + "/sys/class/input", "event")) {
        const std::string path = fmt::format("{}/dev/input/{}", root, name);
        const bool isUsable = hasAccess(path, R_OK);
        report.readsAnyInput = report.readsAnyInput || isUsable;
        const bool isVirtual = place.find("/virtual/input/") != std::string::npos;
        if (isWanted(mice, place)) {
            report.inputNodes.push_back({path, isUsable});
        } else if (!isVirtual && isKeyboard(fmt::format("{}/sys/class/input/{}", root, name))) {
            report.keyboards.push_back({path, isUsable});
        }
    }
    for (const auto& [name, place] : devicesOf(root + "/sys/class/hidraw", "hidraw")) {
        const std::string path = fmt::format("{}/dev/{}", root, name);
        if (isWanted(mice, place)) report.hidNodes.push_back({path, hasAccess(path, R_OK | W_OK)});
    }
    for (const char* folder : {"/etc", "/run", "/usr/local/lib", "/usr/lib", "/lib"}) {
        report.hasRule =
            report.hasRule || exists(fmt::format("{}{}/udev/rules.d/{}", root, folder, ruleFile));
    }
    return report;
}

}  // namespace tessara
