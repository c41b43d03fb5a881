#pragma once

#include <optional>
#include <string>
#include <vector>

#include "HIDPlusPlus/HIDPPConnectionState.h"
#include "TessaraCore/Profile.h"
#include "TessaraEngine/ButtonPipeline.h"
#include "TessaraEngine/DeviceScope.h"
#include "TessaraEngine/PermissionState.h"
#include "TessaraEngine/PointerPipeline.h"
#include "TessaraEngine/PointerTuningStatus.h"
#include "TessaraEngine/ScrollPipeline.h"
#include "TessaraEngine/SettingsApplyState.h"
#include "TessaraEngine/TapMetrics.h"

namespace tessara {

/// All that the engine has to say, in one value: what the interface shows of it, and nothing that
/// is needed to go on. Two that are equal say the same: only a value that differs from the last is
/// published.
///
/// Whether it runs, what it may do and which profile is in force is of the moment. The counters, of
/// the tap and of each stage behind it, and what is attached are of the last
/// `TessaraEngine::refreshMetrics`.
struct EngineStatus {
    /// The engine is started.
    bool isRunning = false;
    /// There is a tap, and events come through it.
    bool isTapEnabled = false;
    /// As they were at the start or at the last `TessaraEngine::refreshPermissions`.
    PermissionState permissions;
    /// The profile that events meet, or that they would meet if the engine ran.
    std::string activeProfileID{Profile::defaultProfileID};
    /// Its name, as the user gave it.
    std::string activeProfileName = "Default";
    /// The application that the profile was chosen for; absent when it has no identifier.
    std::optional<std::string> frontmostBundleID;
    /// Why no profile but the default one can be chosen in this session, in words for the user.
    std::optional<std::string> workspaceLimitation;
    /// The mouse is among the system's input devices.
    bool targetDeviceAttached = false;
    /// How far the mouse's own settings have got.
    SettingsApplyState deviceSettings;
    /// How far the system's pointer figures for the mouse have been corrected.
    PointerTuningStatus pointerTuning;
    /// The connection to the mouse by its own protocol, whoever owns it.
    HIDPPConnectionState hidConnection;
    /// The way of all events; zero while there is no tap.
    TapMetrics tap;
    /// Whose events they were, since the engine was built, as with the counters below.
    DeviceScope::Counters scope;
    /// What became of the wheel.
    ScrollPipeline::Metrics scroll;
    /// What became of motion.
    PointerPipeline::Metrics pointer;
    /// What became of buttons.
    ButtonPipeline::Metrics buttons;
    /// The system's calls for telling devices apart that this system lacks, in the order of
    /// `hidSymbolNames`. Without them the engine runs and every event passes.
    std::vector<std::string> missingSPISymbols;
    /// Why the system last took the tap out of the stream.
    std::optional<TapDisableReason> lastTapDisableReason;
    /// What last went wrong, in words for the user. A later success does not clear it.
    std::optional<std::string> lastError;

    bool operator==(const EngineStatus&) const = default;
};

}  // namespace tessara
