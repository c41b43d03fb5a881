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

bool hasOpen(const fs::path& process, const fs::path& file) {
    std::error_code error;
    for (const auto& descriptor : fs::directory_iterator(process / "fd", error)) {
        if (fs::read_symlink(descriptor.path(), error) == file) return true;
    }
    return false;
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
    std::error_code error;
    for (const auto& process : fs::directory_iterator("/proc", error)) {
        const std::string number = process.path().filename();
        const bool isProcess = number.find_first_not_of("0123456789") == std::string::npos;
        if (!isProcess || number == std::to_string(::getpid()) || !hasOpen(process.path(), path))
            continue;
        std::string name;
        std::getline(std::ifstream(process.path() / "comm"), name);
        found.push_back(fmt::format("{} ({})", name, number));
    }
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
    } else {
        refusals_.erase(id);
    }
}

void TapCircumstances::forgetRefusals() {
    MutexLock lock(mutex_);
    refusals_.clear();
}

std::optional<std::string> TapCircumstances::refusalText() const {
    Refusal first;
    {
        MutexLock lock(mutex_);
        if (refusals_.empty()) return std::nullopt;
        first = refusals_.begin()->second;
        if (told_ == first) return toldText_;
    }
    const std::string text = words(first);  // without the lock: the tap's queue never waits for it
    MutexLock lock(mutex_);
    told_ = first;
    toldText_ = text;
    return text;
}

}  // namespace tessara
