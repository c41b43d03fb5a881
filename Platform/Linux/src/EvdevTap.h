#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "EvdevReader.h"
#include "Platform/Dispatch/Clock.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/Mutex.h"
#include "Platform/EventTaps.h"
#include "Platform/Linux/InputDevices.h"
#include "Platform/Linux/KeyboardState.h"
#include "Platform/Linux/MouseFrameTranslator.h"
#include "Platform/Linux/Udev.h"
#include "ReadableWatch.h"
#include "TapCircumstances.h"

namespace tessara {

/// One tap: the nodes that it reads, the mice that it has grabbed, and the callback that decides on
/// their events. It outlives its `EventTap` until its queue has given the mice back.
class EvdevTap : public std::enable_shared_from_this<EvdevTap> {
  public:
    EvdevTap(const EventTapRequest& request, std::shared_ptr<TapCircumstances> circumstances,
             std::shared_ptr<DispatchQueue> queue, EventTapService::Callback callback);
    ~EvdevTap();

    EvdevTap(const EvdevTap&) = delete;
    EvdevTap& operator=(const EvdevTap&) = delete;

    // Any thread.

    void setEnabled(bool isEnabled);
    [[nodiscard]] bool isEnabled() const { return isEnabled_; }
    /// Lets the callback go and gives everything back.
    void close();
    [[nodiscard]] const std::shared_ptr<DispatchQueue>& queue() const { return queue_; }

    // On the queue.

    /// Looks at all devices again, if it is at work.
    void rescan();

  private:
    using Frame = MouseFrameTranslator::Frame;

    /// A pointer node of the wanted kind, and what its frames become.
    struct Mouse {
        InputDevice device;
        std::shared_ptr<EvdevReader> reader;
        MouseFrameTranslator translator;
        bool isGrabbed = false;
        /// Frames of before the grab have been everybody's. 0 once one has come from after it.
        std::uint64_t grabbedAtNanos = 0;
    };

    struct Keyboard {
        Keyboard(std::shared_ptr<EvdevReader> opened, KeyboardState& state)
            : reader(std::move(opened)), keys(state) {}

        std::shared_ptr<EvdevReader> reader;
        PressedKeys keys;
    };

    void update();
    void takeOver();
    void giveBack();

    void listenForDevices();
    void receiveDevices();
    void appear(const InputDevice& device);
    void forget(std::uint64_t id);
    void noteVirtualMouse();

    void openMouse(const InputDevice& device);
    void openKeyboard(const InputDevice& device);
    void grab(Mouse& mouse);
    void ungrab(Mouse& mouse);
    [[nodiscard]] bool mayGrab();
    void retry();
    void letGoOfForbidden();
    void retryAsNeeded();
    void refuse(const InputDevice& device, const char* what, int error);
    void noteOutput(const char* problem);

    void take(Mouse& mouse, Frame frame);
    void passOn(Frame frame);
    void outputFailed();
    void reportsWereLost(Mouse& mouse);
    void mouseHasEnded(std::uint64_t id);
    void takeKeys(Keyboard& keyboard, Frame frame);

    [[nodiscard]] std::shared_ptr<EventTapService::Callback> callback() const;
    [[nodiscard]] bool show(CGEventType type, CGEvent& event);
    void tellDisabled(CGEventType reason);
    [[nodiscard]] std::uint64_t nowNanos() const;
    /// A block for the queue that finds the tap or does nothing.
    template <typename Work>
    [[nodiscard]] auto weakly(Work work);

    const EventTapRequest request_;
    const std::shared_ptr<TapCircumstances> circumstances_;
    const std::shared_ptr<DispatchQueue> queue_;
    std::atomic<bool> isEnabled_ = false;

    mutable Mutex mutex_;
    std::shared_ptr<EventTapService::Callback> callback_ TESSARA_GUARDED_BY(mutex_);

    // Owned by the queue.
    EventTapService::Callback shown_;  ///< the callback as the translators call it
    std::unique_ptr<Udev> udev_;       ///< there while the tap is at work
    std::optional<UdevMonitor> monitor_;
    std::optional<ReadableWatch> announcements_;  ///< of the monitor, while it can be waited for
    std::map<std::uint64_t, std::unique_ptr<Mouse>> mice_;
    std::map<std::uint64_t, std::unique_ptr<Keyboard>> keyboards_;
    std::map<std::uint64_t, InputDevice> unopened_;  ///< wanted mice that are to be tried again
    bool hasOutputFailed_ = false;
    bool isSettlingAwaited_ = false;
    std::unique_ptr<DispatchTimer> retryTimer_;
};

}  // namespace tessara
