#include "TapCircumstances.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unistd.h>

#include "Platform/Linux/InputDevices.h"
#include "Platform/Linux/KeyboardState.h"
#include "Platform/Linux/VirtualDevices.h"

namespace tessara {
namespace {

namespace fs = std::filesystem;

/// Calls `visit` for the entries of a folder, until it has enough or the folder is at its end. One
/// that goes away in the meantime, as those of processes do, is at its end.
template <typename Visit>
void visitEntries(const fs::path& folder, Visit visit) {
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        if (!visit(entry->path())) return;
    }
}

bool hasOpen(const fs::path& process, const fs::path& file) {
    bool isFound = false;
    visitEntries(process / "fd", [&](const fs::path& descriptor) {
        std::error_code error;
        isFound = fs::read_symlink(descriptor, error) == file;
        return !isFound;
    });
    return isFound;
}

std::string words(const TapCircumstances::Refusal& refusal) {
    if (refusal.error == 0) return refusal.what;
    if (refusal.error != EBUSY)
        return fmt::format("{}: {}", refusal.what, std::generic_category().message(refusal.error));
    const auto others = processesWithOpenFile(refusal.node);
    if (others.empty()) return fmt::format("{}: another program has it", refusal.what);
    return fmt::format("{}: another program has it; open in {}", refusal.what,
                       fmt::join(others, ", "));
}

}  // namespace

std::vector<std::string> processesWithOpenFile(const std::string& path) {
    std::vector<std::string> found;
    visitEntries("/proc", [&](const fs::path& process) {
        const std::string number = process.filename();
        const bool isOther = number.find_first_not_of("0123456789") == std::string::npos &&
                             number != std::to_string(::getpid());
        if (!isOther || !hasOpen(process, path)) return true;
        std::string name;
        std::ifstream stream(process / "comm");
        std::getline(stream, name);
        found.push_back(fmt::format("{} ({})", name, number));
        return true;
    });
    return found;
}

TapCircumstances::TapCircumstances(std::vector<InputDeviceMatch> wanted,
                                   std::shared_ptr<VirtualDevices> virtualDevices,
                                   std::shared_ptr<KeyboardState> keyboardState)
    : mice(std::move(wanted)),
      output(std::move(virtualDevices)),
      keyboards(std::move(keyboardState)) {}

bool TapCircumstances::isWanted(const InputDevice& device) const {
    const InputDeviceMatch numbers{.vendor = device.vendor, .product = device.product};
    return device.role == InputRole::pointer && std::ranges::find(mice, numbers) != mice.end();
}

void TapCircumstances::setRefusal(std::uint64_t id, std::optional<Refusal> refusal) {
    MutexLock lock(mutex_);
    if (refusal) {
        refusals_.insert_or_assign(id, *std::move(refusal));
    } else if (refusals_.erase(id) != 0) {
        told_.reset();  // the next time it may be for somebody else's sake
    }
}

void TapCircumstances::forgetRefusals() {
    MutexLock lock(mutex_);
    refusals_.clear();
    told_.reset();
}

std::optional<std::string> TapCircumstances::refusalText() const {
    Refusal first;
    {
        MutexLock lock(mutex_);
        if (refusals_.empty()) return std::nullopt;
        first = refusals_.begin()->second;
        if (told_ == first) return toldText_;
    }
    std::string text = words(first);  // without the lock: the tap's queue never waits for it
    MutexLock lock(mutex_);
    told_ = first;
    toldText_ = text;
    return text;
}

}  // namespace tessara
