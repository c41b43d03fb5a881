#include "EvdevTap.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include "InputEventTime.h"
#include "Platform/Linux/VirtualDeviceIdentity.h"
#include "Platform/Linux/VirtualDevices.h"

namespace tessara {
namespace {

using namespace std::chrono_literals;

/// How often a mouse is tried again that could not be opened or grabbed, and it is looked whether
/// those that are open may still be read.
constexpr auto retryInterval = 3s;
/// How long after its announcement the desktop may take to open a new device, the virtual mouse.
constexpr auto settlingTime = 200ms;

bool hasRelease(MouseFrameTranslator::Frame frame) {
    return std::ranges::any_of(
        frame, [](const input_event& event) { return event.type == EV_KEY && event.value == 0; });
}

/// Whether the user may not open the node any more; one that has gone is nobody's to forbid.
bool isForbidden(const std::string& node) {
    return ::faccessat(AT_FDCWD, node.c_str(), R_OK, AT_EACCESS) != 0 && errno == EACCES;
}

}  // namespace

template <typename Work>
auto EvdevTap::weakly(Work work) {
    return [weak = weak_from_this(), work = std::move(work)] {
        if (const auto self = weak.lock()) work(*self);
    };
}

EvdevTap::EvdevTap(const EventTapRequest& request, std::shared_ptr<TapCircumstances> circumstances,
                   std::shared_ptr<DispatchQueue> queue, EventTapService::Callback callback)
    : request_(request),
      circumstances_(std::move(circumstances)),
      queue_(std::move(queue)),
      callback_(std::make_shared<EventTapService::Callback>(std::move(callback))),
      shown_([this](CGEventType type, CGEvent& event) { return show(type, event); }) {}

EvdevTap::~EvdevTap() {
    if (udev_) giveBack();  // its queue has ended before it could
}

void EvdevTap::setEnabled(bool isEnabled) {
    {
        MutexLock lock(mutex_);
        isEnabled_ = isEnabled && callback_;
    }
    queue_->post([self = shared_from_this()] { self->update(); });
}

void EvdevTap::close() {
    std::shared_ptr<EventTapService::Callback> released;  // destroyed once the lock is let go
    {
        MutexLock lock(mutex_);
        isEnabled_ = false;
        released.swap(callback_);
    }
    queue_->post([self = shared_from_this()] { self->update(); });
}

void EvdevTap::update() {
    if (isEnabled_ && !udev_) takeOver();
    if (!isEnabled_ && udev_) giveBack();
}

void EvdevTap::takeOver() {
    udev_ = std::make_unique<Udev>();
    listenForDevices();  // first, so that no device comes unnoticed in between
    rescan();
}

void EvdevTap::giveBack() {
    for (const auto& [id, mouse] : mice_) {
        ungrab(*mouse);
        mouse->reader->close();
    }
    for (const auto& [id, keyboard] : keyboards_)
        keyboard->reader->close();
    mice_.clear();
    keyboards_.clear();
    unopened_.clear();
    retryTimer_.reset();
    announcements_.reset();
    monitor_.reset();
    udev_.reset();
    circumstances_->forgetRefusals();
}

// The devices.

void EvdevTap::listenForDevices() {
    constexpr std::array subsystems{"input"};
    monitor_ = udev_->monitor(subsystems);
    if (!monitor_) return;
    announcements_.emplace(queue_, monitor_->fileDescriptor(), [weak = weak_from_this()] {
        const auto self = weak.lock();
        if (self) self->receiveDevices();
        return self != nullptr;
    });
    if (!announcements_->isWaiting()) announcements_.reset();
}

void EvdevTap::receiveDevices() {
    if (!monitor_) return;
    for (;;) {
        const auto announced = monitor_->receive();
        if (!announced) {
            rescan();
            break;
        }
        if (!*announced) break;
        const UdevDevice& device = **announced;
        if (device.action() == "remove") {
            // What is open hears of it by itself.
            if (const auto id = inputDeviceID(device.sysPath())) forget(*id);
        } else if (const auto described = describeInputDevice(device)) {
            appear(*described);
        }
    }
    retryAsNeeded();
}

void EvdevTap::rescan() {
    if (!udev_) return;
    for (const auto& [id, device] : std::map(unopened_))
        forget(id);  // those that are still there come again
    for (const InputDevice& device : inputDevices(*udev_))
        appear(device);
    retryAsNeeded();
}

void EvdevTap::forget(std::uint64_t id) {
    unopened_.erase(id);
    circumstances_->setRefusal(id, std::nullopt);
}

void EvdevTap::appear(const InputDevice& device) {
    if (device.isOurs) {
        if (device.product == virtualMouseIdentity.product) noteVirtualMouse();
    } else if (circumstances_->isWanted(device)) {
        if (!mice_.contains(device.id)) openMouse(device);
    } else if (device.role == InputRole::keyboard && !keyboards_.contains(device.id)) {
        openKeyboard(device);
    }
}

void EvdevTap::noteVirtualMouse() {
    std::int64_t unseen = 0;
    const std::int64_t now = queue_->clock().now().time_since_epoch().count();
    if (circumstances_->virtualMouseSeen.compare_exchange_strong(unseen, now)) retry();
}

void EvdevTap::openMouse(const InputDevice& device) {
    unopened_.erase(device.id);
    if (!device.isPassable) {
        refuse(device, "has more than buttons, motion and wheels, and is left as it is", 0);
        return;
    }
    if (device.seat != firstSeat) {
        refuse(device, "is of another seat than the virtual mouse, and is left as it is", 0);
        return;
    }
    auto reader = EvdevReader::open(device.node, queue_);
    if (!reader) {
        unopened_.emplace(device.id, device);
        refuse(device, "cannot be opened", reader.error());
        return;
    }
    auto opened = std::make_unique<Mouse>(
        Mouse{.device = device,
              .reader = *reader,
              .translator = MouseFrameTranslator(device.id, request_.eventsOfInterest)});
    Mouse& mouse = *opened;
    mice_.emplace(device.id, std::move(opened));
    const bool isWaiting =
        mouse.reader->start({.onFrame = [this, &mouse](Frame frame) { take(mouse, frame); },
                             .onLoss = [this, &mouse] { reportsWereLost(mouse); },
                             .onEnd = [this, id = device.id](int) { mouseHasEnded(id); }});
    if (isWaiting) {
        grab(mouse);
    } else {  // grabbed, it would be dead
        mice_.erase(device.id);
        unopened_.emplace(device.id, device);
        refuse(device, "cannot be waited for", ENOMEM);
    }
}

void EvdevTap::openKeyboard(const InputDevice& device) {
    auto reader = EvdevReader::open(device.node, queue_);
    if (!reader) return;  // its modifiers are not known then
    auto opened = std::make_unique<Keyboard>(*reader, *circumstances_->keyboards);
    Keyboard& keyboard = *opened;
    keyboards_.emplace(device.id, std::move(opened));
    keyboard.keys.replace(keyboard.reader->keysDown());
    keyboard.keys.setCapsLock(keyboard.reader->isCapsLockLit());
    const bool isWaiting = keyboard.reader->start(
        {.onFrame = [this, &keyboard](Frame frame) { takeKeys(keyboard, frame); },
         .onLoss = [] {},
         .onEnd = [this, id = device.id](int) { keyboards_.erase(id); }});
    if (!isWaiting) keyboards_.erase(device.id);
}

// The grab.

void EvdevTap::grab(Mouse& mouse) {
    // With a button down it is the button's release that leads here again.
    if (mouse.isGrabbed || !mayGrab() || mouse.reader->isAnyKeyDown()) return;
    const std::uint64_t before = nowNanos();
    if (const int error = mouse.reader->setGrabbed(true)) {
        refuse(mouse.device, "cannot be taken over", error);
        return;
    }
    if (mouse.reader->isAnyKeyDown()) {  // pressed just now, and maybe not heard by us alone
        static_cast<void>(mouse.reader->setGrabbed(false));
        return;
    }
    mouse.isGrabbed = true;
    mouse.grabbedAtNanos = before;
    circumstances_->setRefusal(mouse.device.id, std::nullopt);
}

void EvdevTap::ungrab(Mouse& mouse) {
    if (!std::exchange(mouse.isGrabbed, false)) return;
    const Frame releases = mouse.translator.releasePassed();
    if (!releases.empty()) static_cast<void>(circumstances_->output->mouse.write(releases));
    static_cast<void>(mouse.reader->setGrabbed(false));
}

bool EvdevTap::mayGrab() {
    const std::int64_t seen = circumstances_->virtualMouseSeen;
    if (hasOutputFailed_ || seen == 0) return false;
    const TimePoint settled = TimePoint(std::chrono::nanoseconds(seen)) + settlingTime;
    if (queue_->clock().now() >= settled) return true;
    if (!std::exchange(isSettlingAwaited_, true)) {
        queue_->postAt(settled, weakly([](EvdevTap& tap) {
                           tap.isSettlingAwaited_ = false;
                           tap.retry();
                       }));
    }
    return false;
}

void EvdevTap::retry() {
    if (!udev_) return;
    if (!announcements_) {  // nobody tells of devices: only looking does
        listenForDevices();
        rescan();
    }
    letGoOfForbidden();
    if (hasOutputFailed_) hasOutputFailed_ = !circumstances_->output->open();
    if (!hasOutputFailed_)
        noteOutput(circumstances_->virtualMouseSeen == 0 ? "has not been announced" : nullptr);
    for (const auto& [id, device] : std::exchange(unopened_, {}))
        openMouse(device);
    for (const auto& [id, mouse] : mice_)
        grab(*mouse);
    retryAsNeeded();
}

/// Rights go when somebody else takes his seat at the computer, but a node that is open stays so:
/// the mouse is his then, and as he knows it.
void EvdevTap::letGoOfForbidden() {
    std::vector<std::uint64_t> forbidden;
    for (const auto& [id, mouse] : mice_) {
        if (isForbidden(mouse->device.node)) forbidden.push_back(id);
    }
    for (const std::uint64_t id : forbidden) {
        mice_.at(id)->reader->close();
        mouseHasEnded(id);
    }
}

void EvdevTap::retryAsNeeded() {
    const bool isNeeded = hasOutputFailed_ || circumstances_->virtualMouseSeen == 0 ||
                          !announcements_ || !unopened_.empty() || !mice_.empty();
    if (!isNeeded) {
        retryTimer_.reset();
    } else if (!retryTimer_) {
        retryTimer_ = queue_->startTimer(queue_->clock().now() + retryInterval, retryInterval,
                                         500ms, weakly([](EvdevTap& tap) { tap.retry(); }));
    }
}

void EvdevTap::refuse(const InputDevice& device, const char* what, int error) {
    circumstances_->setRefusal(
        device.id,
        TapCircumstances::Refusal{.what = fmt::format("the mouse at {} {}", device.node, what),
                                  .error = error,
                                  .node = device.node});
}

void EvdevTap::noteOutput(const char* problem) {
    std::optional<TapCircumstances::Refusal> refusal;
    if (problem != nullptr)
        refusal = {.what = fmt::format("the virtual mouse {}", problem), .error = 0, .node = ""};
    circumstances_->setRefusal(0, std::move(refusal));
}

// The events.

void EvdevTap::take(Mouse& mouse, Frame frame) {
    if (!mouse.isGrabbed) {
        if (!hasRelease(frame)) return;
        grab(mouse);
        retryAsNeeded();
        return;
    }
    if (nanosecondsOf(frame.back()) < mouse.grabbedAtNanos) return;
    mouse.grabbedAtNanos = 0;
    passOn(mouse.translator.translate(frame, circumstances_->keyboards->flags(), shown_));
}

void EvdevTap::passOn(Frame frame) {
    if (!frame.empty() && !circumstances_->output->mouse.write(frame)) outputFailed();
}

/// Nothing of what the mice say reaches anybody: they are given back until it does.
void EvdevTap::outputFailed() {
    hasOutputFailed_ = true;
    for (const auto& [id, mouse] : mice_)
        ungrab(*mouse);
    circumstances_->output->mouse.close();
    circumstances_->virtualMouseSeen = 0;
    noteOutput("takes no events");
    retryAsNeeded();
}

void EvdevTap::reportsWereLost(Mouse& mouse) {
    if (!mouse.isGrabbed) return;
    mouse.grabbedAtNanos = 0;
    tellDisabled(CGEventType::tapDisabledByTimeout);
}

void EvdevTap::mouseHasEnded(std::uint64_t id) {
    const auto ended = mice_.extract(id);
    if (ended.empty()) return;
    Mouse& mouse = *ended.mapped();
    const bool wasGrabbed = std::exchange(mouse.isGrabbed, false);
    if (wasGrabbed) {
        passOn(
            mouse.translator.releaseHeld(nowNanos(), circumstances_->keyboards->flags(), shown_));
    }
    circumstances_->setRefusal(id, std::nullopt);
    const bool isStillThere = ::access(mouse.device.sysPath.c_str(), F_OK) == 0;
    if (isStillThere) {
        unopened_.emplace(id, mouse.device);
        if (wasGrabbed) tellDisabled(CGEventType::tapDisabledByUserInput);
    }
    retryAsNeeded();
}

void EvdevTap::takeKeys(Keyboard& keyboard, Frame frame) {
    for (const input_event& event : frame) {
        if (event.type == EV_KEY && event.value != 2)  // 2 is a repeat
            keyboard.keys.set(event.code, event.value != 0);
        if (event.type == EV_LED && event.code == LED_CAPSL)
            keyboard.keys.setCapsLock(event.value != 0);
    }
}

// The callback.

std::shared_ptr<EventTapService::Callback> EvdevTap::callback() const {
    MutexLock lock(mutex_);
    return callback_;
}

bool EvdevTap::show(CGEventType type, CGEvent& event) {
    if (!isEnabled_) return true;
    const auto held = callback();
    return !held || (*held)(type, event);
}

void EvdevTap::tellDisabled(CGEventType reason) {
    if (!isEnabled_.exchange(false)) return;
    CGEvent notice;
    notice.type = reason;
    if (const auto held = callback()) (*held)(reason, notice);
    queue_->post(weakly([](EvdevTap& tap) { tap.update(); }));
}

std::uint64_t EvdevTap::nowNanos() const {
    return static_cast<std::uint64_t>(queue_->clock().now().time_since_epoch().count());
}

}  // namespace tessara
