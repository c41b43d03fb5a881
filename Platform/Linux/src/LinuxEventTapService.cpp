#include "Platform/Linux/LinuxEventTapService.h"

#include <utility>

#include "EvdevTap.h"
#include "Platform/Dispatch/EventStream.h"
#include "Platform/Linux/SuspendMonitor.h"
#include "Platform/Linux/VirtualDevices.h"
#include "TapCircumstances.h"

namespace tessara {
namespace {

/// The owner's hold on a tap.
class TapHandle final : public EventTap {
  public:
    TapHandle(std::shared_ptr<EvdevTap> tap, EventSubscription wakings)
        : tap_(std::move(tap)), wakings_(std::move(wakings)) {}
    ~TapHandle() override { tap_->close(); }

    TapHandle(const TapHandle&) = delete;
    TapHandle& operator=(const TapHandle&) = delete;

    void setEnabled(bool isEnabled) override { tap_->setEnabled(isEnabled); }
    [[nodiscard]] bool isEnabled() const override { return tap_->isEnabled(); }

  private:
    const std::shared_ptr<EvdevTap> tap_;
    const EventSubscription wakings_;
};

}  // namespace

LinuxEventTapService::LinuxEventTapService(std::vector<InputDeviceMatch> mice,
                                           std::shared_ptr<VirtualDevices> output,
                                           std::shared_ptr<KeyboardState> keyboards,
                                           SuspendMonitor* wakings)
    : circumstances_(std::make_shared<TapCircumstances>(std::move(mice), std::move(output),
                                                        std::move(keyboards))),
      wakings_(wakings) {}

LinuxEventTapService::~LinuxEventTapService() = default;

std::unique_ptr<EventTap> LinuxEventTapService::makeTap(const EventTapRequest& request,
                                                        std::shared_ptr<DispatchQueue> queue,
                                                        Callback callback) {
    if (request.options == CGEventTapOptions::listenOnly) return nullptr;
    if (const auto opened = circumstances_->output->open(); !opened) {
        circumstances_->setRefusal(
            0, TapCircumstances::Refusal{
                   .what = "the virtual mouse and keyboard cannot be made with /dev/uinput",
                   .error = opened.error().value(),
                   .node = ""});
        return nullptr;
    }
    circumstances_->setRefusal(0, std::nullopt);

    auto tap = std::make_shared<EvdevTap>(request, circumstances_, queue, std::move(callback));
    EventSubscription wakings;
    if (wakings_ != nullptr) {
        wakings = wakings_->wakings().subscribe(
            std::move(queue), [weak = std::weak_ptr(tap)](const std::chrono::nanoseconds&) {
                if (const auto woken = weak.lock()) woken->rescan();
            });
    }
    return std::make_unique<TapHandle>(std::move(tap), std::move(wakings));
}

std::optional<std::string> LinuxEventTapService::lastRefusal() const {
    return circumstances_->refusalText();
}

}  // namespace tessara
