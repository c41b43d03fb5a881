#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "HIDPlusPlus/HIDPPEvent.h"
#include "Platform/Dispatch/Mutex.h"
#include "TessaraEngine/HIDPPControlling.h"
#include "TessaraEngine/SettingsApplyState.h"

namespace tessara {

class DispatchQueue;
class Dispatcher;

/// What the mouse is to be set to. What is absent is left as it is on the mouse.
struct DesiredDeviceSettings {
    /// In dots per inch; the mouse takes the nearest value that it has.
    std::optional<std::int64_t> dpi = std::nullopt;
    /// Reports a second; a rate that the mouse does not have is a failure.
    std::optional<std::int64_t> reportRateHertz = std::nullopt;
    /// Whether a detent of the wheel comes as several reports.
    std::optional<bool> highResolutionWheel = std::nullopt;

    bool operator==(const DesiredDeviceSettings&) const = default;
};

/// Writes the wanted settings to the mouse, again each time the mouse becomes ready, and lays a
/// temporary resolution over them while a shift is held. It tells what the mouse then runs at. It
/// does not connect, and knows no profile.
///
/// It works on a queue of its own. Operations return at once and take effect in the order of the
/// calls; they may be called from any thread. An apply that was begun runs to its end also when a
/// later one follows: both send their requests in order, and each ends by reading back, so that
/// what is published is true whichever ends last.
class SettingsApplier : public std::enable_shared_from_this<SettingsApplier> {
  public:
    /// Hears of the resolution that the mouse runs at; nothing when it is not known.
    using DPIObserver = std::function<void(std::optional<std::int64_t> dpi)>;
    using ReadyObserver = std::function<void()>;
    using StateObserver = std::function<void(const SettingsApplyState& state)>;

    /// Applies nothing yet. `control` is asked on the applier's queue, and kept as long as an apply
    /// runs, also when the applier is gone. `dispatcher` makes the queue and is not used
    /// afterwards.
    SettingsApplier(std::shared_ptr<HIDPPControlling> control, const DesiredDeviceSettings& desired,
                    Dispatcher& dispatcher);

    SettingsApplier(const SettingsApplier&) = delete;
    SettingsApplier& operator=(const SettingsApplier&) = delete;

    /// Takes the settings over and writes them, also when they are the same as before.
    void update(const DesiredDeviceSettings& desired);

    /// Lays a resolution (DPI) over the wanted one, or takes it away again, and writes what is then
    /// in force, and nothing else; nothing at all when no resolution is wanted. The state does not
    /// say `SettingsApplying` meanwhile, so that a held shift does not make it flicker. The shift
    /// outlasts a replug, and ends only here.
    void setDPIOverride(std::optional<std::int64_t> dpi);

    /// Writes everything that is wanted: resolution, report rate, wheel, in this order, up to the
    /// first failure; then reads the resolution back. The state is `SettingsApplying` and then one
    /// of: `SettingsApplied`, also when the reading back fails; `SettingsIdle` when the mouse is
    /// not there; `SettingsNotPermitted`; `SettingsFailed` with the error's text.
    void applyNow();

    /// Takes an event of the device: applies everything when it has become ready, for the mouse
    /// forgets its settings with its power.
    void handle(const HIDPPEvent& event);

    /// Calls `done` on the applier's queue once the apply begun last has ended, at once when none
    /// runs.
    void waitForApply(std::move_only_function<void()> done);

    /// Set the observers, which are called on the applier's queue and must not block. A new DPI
    /// observer hears the present value at once and then changes only; a ready observer is called
    /// after the apply that follows a `DeviceReady` has begun; a state observer hears the present
    /// state at once and then each that differs.
    void onDeviceDPIChange(DPIObserver observer);
    void onDeviceReady(ReadyObserver observer);
    void onStateChange(StateObserver observer);

    // What is published. Any thread.

    /// How the last apply stands or ended.
    [[nodiscard]] SettingsApplyState state() const;
    /// The mouse's answer to the last resolution written; forgotten when it goes.
    [[nodiscard]] std::optional<std::int64_t> lastAppliedDPI() const;
    /// The last resolution above 0 that was read back; kept when the mouse goes.
    [[nodiscard]] std::optional<std::int64_t> deviceReportedDPI() const;
    /// The override, or else the wanted resolution.
    [[nodiscard]] std::optional<std::int64_t> effectiveDPI() const;

  private:
    /// One run of writes, for whoever waits for its end.
    struct Apply {
        bool hasEnded = false;
        std::vector<std::move_only_function<void()>> waiters;
    };
    struct Published {
        DesiredDeviceSettings desired;
        std::optional<std::int64_t> dpiOverride = std::nullopt;
        SettingsApplyState state = {};
        std::optional<std::int64_t> lastAppliedDPI = std::nullopt;
        std::optional<std::int64_t> deviceReportedDPI = std::nullopt;
    };

    /// Runs `block` on the queue, unless the applier is gone by then.
    template <typename Block>
    void onQueue(Block block);

    void begin(const DesiredDeviceSettings& settings);
    static asio::awaitable<void> run(std::weak_ptr<SettingsApplier> applier,
                                     std::shared_ptr<HIDPPControlling> control,
                                     DesiredDeviceSettings settings, std::shared_ptr<Apply> apply);
    void record(std::optional<std::int64_t> dpi, std::optional<std::int64_t> reported);
    void record(const HIDPPError& error);
    void setState(SettingsApplyState state);
    void beginFullApply();

    const std::shared_ptr<HIDPPControlling> control_;
    const std::shared_ptr<DispatchQueue> queue_;

    // Owned by the queue.
    std::shared_ptr<Apply> lastApply_;
    DPIObserver dpiObserver_;
    ReadyObserver readyObserver_;
    StateObserver stateObserver_;

    /// Written on the queue only.
    mutable Mutex mutex_;
    Published published_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
