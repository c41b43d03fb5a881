#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "HIDPlusPlus/HIDPPDeviceMatch.h"
#include "TessaraEngine/PointerTuningStatus.h"

namespace tessara {

class FileSystem;
class UserDefaults;
class WallClock;

/// What the engine wants of the pointer tuning.
struct PointerTuningRequest {
    bool isPermitted = false;
    /// What the mouse really runs at, in DPI; absent leaves the last figure in place.
    std::optional<std::int64_t> deviceDPI;

    bool operator==(const PointerTuningRequest&) const = default;
};

/// Corrects the figures that the system keeps for one pointer device: tells it the counts per inch
/// that the mouse really runs at and switches its own acceleration off, so that the pointer curve
/// starts from raw motion. It is a setting of this machine and this mouse, and of no profile.
///
/// No figure is changed without a way back. The originals go into a file before anything is written
/// to the system; whatever happens to the process afterwards, the next start finds the file and
/// puts them back first. A value that cannot be read is not written, and a value that the system
/// does not take back is kept until it does.
///
/// A correction is in force while the system can take it (`isSupported`), the user wants it
/// (`isEnabled`) and the engine allows it (`isPermitted`). What comes of each call is told by
/// `status()`; nothing here fails otherwise. Calls block for as long as the system and the disk
/// take. Main executor only.
class PointerHardwareTuning {
  public:
    /// The user's switch among the defaults; on when absent.
    static constexpr const char* enabledKey = "pointer.hardwareTuning.enabled";
    /// The name of the capture's file, in the program's support folder.
    static constexpr const char* captureFileName = "pointer-hardware-capture.json";

    /// Where the originals are kept and what else the tuning stands on. All outlive it.
    struct Environment {
        PointerPropertyBackend& backend;
        UserDefaults& defaults;
        FileSystem& files;
        const WallClock& wallClock;
        /// Absent when there is no place for the file: nothing is then ever written to the system.
        std::optional<std::string> capturePath;
    };

    /// Puts back at once what an earlier run left in force.
    PointerHardwareTuning(Environment environment, std::vector<HIDPPDeviceMatch> matches);

    PointerHardwareTuning(const PointerHardwareTuning&) = delete;
    PointerHardwareTuning& operator=(const PointerHardwareTuning&) = delete;

    /// Takes effect at the next correction.
    void setDeviceMatches(std::vector<HIDPPDeviceMatch> matches) { matches_ = std::move(matches); }

    /// Corrects or restores as the engine wants it. A correction that failed is tried again by each
    /// call.
    void request(const PointerTuningRequest& request);

    /// The mouse runs at another resolution: the correction follows. Nothing, and what is below 1,
    /// is ignored.
    void deviceDPIReported(std::optional<std::int64_t> dpi);

    /// The mouse is there, perhaps plugged in anew: drops the originals of an earlier plug, which
    /// went with it, and corrects again.
    void deviceBecameReady();

    /// The user's switch, kept in the defaults; it takes effect at once.
    void setEnabled(bool isEnabled);
    [[nodiscard]] bool isEnabled() const { return status_.isEnabled; }

    /// Puts the originals back and forgets them, their file included. What the system does not take
    /// stays noted, for the next restore and for the next start. With nothing to put back only the
    /// reason is noted.
    void restore(PointerTuningRestoreReason reason);

    /// Stores the live values in the status, for display.
    void refreshReading();
    /// The live values; nothing when no device is there.
    [[nodiscard]] std::optional<PointerTuningCapture> currentReading();
    /// The live resolution and acceleration of the target.
    [[nodiscard]] std::pair<std::optional<std::int64_t>, std::optional<std::int64_t>> readBack();
    /// The mice that the correction could be for.
    [[nodiscard]] std::vector<PointerServiceIdentity> candidateServices();

    [[nodiscard]] const PointerTuningStatus& status() const { return status_; }

  private:
    [[nodiscard]] bool shouldBeApplied() const;
    [[nodiscard]] std::optional<PointerServiceIdentity> resolveTarget();
    [[nodiscard]] bool isAttached(const PointerServiceIdentity& service);
    [[nodiscard]] std::string accelerationKey(const PointerServiceIdentity& service);
    [[nodiscard]] PointerTuningCapture readCapture(const PointerServiceIdentity& service);

    void applyOrRestore();
    void apply();
    /// Makes sure that the originals of `target` are in the file. False when they are not.
    [[nodiscard]] bool captureOriginals(const PointerServiceIdentity& target, bool& isFresh);
    void recoverStrandedCapture();

    [[nodiscard]] std::optional<PointerTuningCapture> loadCapture() const;
    [[nodiscard]] bool persist(const PointerTuningCapture& capture);
    void forgetCapture();
    /// Writes the originals back and gives the keys that were refused.
    [[nodiscard]] std::vector<std::string> writeBack(const PointerTuningCapture& capture);
    void readBack(const PointerTuningCapture& capture);

    const Environment environment_;
    std::vector<HIDPPDeviceMatch> matches_;
    PointerTuningRequest lastRequest_;
    PointerTuningStatus status_;
};

}  // namespace tessara
