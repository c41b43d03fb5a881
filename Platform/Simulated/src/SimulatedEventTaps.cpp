#include "Platform/Simulated/SimulatedEventTaps.h"

#include <utility>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Simulated/SimulatedPermissions.h"
#include "ScriptFault.h"
#include "SimulatedTap.h"

namespace tessara {
namespace {

/// The owner's hold on a tap.
class TapHandle final : public EventTap {
  public:
    TapHandle(std::shared_ptr<SimulatedTap> tap, std::shared_ptr<SimulatedTapList> list,
              std::shared_ptr<const SimulatedPermissions> permissions)
        : tap_(std::move(tap)), list_(std::move(list)), permissions_(std::move(permissions)) {}

    ~TapHandle() override {
        list_->remove(*tap_);
        tap_->close();
    }

    TapHandle(const TapHandle&) = delete;
    TapHandle& operator=(const TapHandle&) = delete;

    void setEnabled(bool isEnabled) override {
        tap_->setEnabled(isEnabled && isPermitted());
        if (isEnabled && !isPermitted()) tap_->setEnabled(false);  // revoked in between
    }

    [[nodiscard]] bool isEnabled() const override { return tap_->isEnabled(); }

  private:
    [[nodiscard]] bool isPermitted() const {
        return tap_->isListenOnly() || permissions_->isProcessTrusted();
    }

    const std::shared_ptr<SimulatedTap> tap_;
    const std::shared_ptr<SimulatedTapList> list_;
    const std::shared_ptr<const SimulatedPermissions> permissions_;
};

}  // namespace

SimulatedEventTaps::SimulatedEventTaps(std::shared_ptr<SimulatedPermissions> permissions)
    : permissions_(std::move(permissions)), list_(std::make_shared<SimulatedTapList>()) {}

SimulatedEventTaps::~SimulatedEventTaps() = default;

void SimulatedEventTaps::refuseTaps(std::int64_t count) {
    refusal_.refuseNext(count);
}

void SimulatedEventTaps::setLastRefusal(std::optional<std::string> words) {
    MutexLock lock(mutex_);
    lastRefusal_ = std::move(words);
}

std::optional<std::string> SimulatedEventTaps::lastRefusal() const {
    MutexLock lock(mutex_);
    return lastRefusal_;
}

std::vector<std::shared_ptr<SimulatedTap>> SimulatedEventTaps::tapsFrom(
    CGEventTapLocation location) const {
    return list_->from(location);
}

std::size_t SimulatedEventTaps::count() const {
    return list_->from(CGEventTapLocation::hid).size();
}

std::unique_ptr<EventTap> SimulatedEventTaps::makeTap(const EventTapRequest& request,
                                                      std::shared_ptr<DispatchQueue> queue,
                                                      Callback callback) {
    if (!queue->isCurrent()) stopForScriptFault("a tap is made on another queue than its own");
    const bool isPermitted = request.options == CGEventTapOptions::listenOnly
                                 ? permissions_->preflightListenEventAccess()
                                 : permissions_->isProcessTrusted();
    if (!isPermitted || refusal_.refuses()) return nullptr;

    auto tap = std::make_shared<SimulatedTap>(request, std::move(queue), std::move(callback));
    list_->insert(tap, request.placement);
    return std::make_unique<TapHandle>(std::move(tap), list_, permissions_);
}

}  // namespace tessara
