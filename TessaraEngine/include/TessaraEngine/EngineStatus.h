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

/// All that the engine has to say, in one value. Two that are equal say the same: only a value that
/// differs from the last is published.
struct EngineStatus {
    /// The engine is started.
    bool isRunning = false;
    /// There is a tap, and events come through it.
    bool isTapEnabled = false;
    PermissionState permissions;
    std::string activeProfileID{Profile::defaultProfileID};
    std::string activeProfileName = "Default";
    std::optional<std::string> frontmostBundleID;
    /// Why no profile but the default one can be chosen in this session, in words for the user.
    std::optional<std::string> workspaceLimitation;
    /// The mouse is among the system's input devices.
    bool targetDeviceAttached = false;
    SettingsApplyState deviceSettings;
    PointerTuningStatus pointerTuning;
    HIDPPConnectionState hidConnection;
    TapMetrics tap;
    DeviceScope::Counters scope;
    ScrollPipeline::Metrics scroll;
    PointerPipeline::Metrics pointer;
    ButtonPipeline::Metrics buttons;
    /// The system's calls for telling devices apart that this system lacks.
    std::vector<std::string> missingSPISymbols;
    /// Why the system last took the tap out of the stream.
    std::optional<TapDisableReason> lastTapDisableReason;
    /// What last went wrong, in words for the user. A later success does not clear it.
    std::optional<std::string> lastError;

    bool operator==(const EngineStatus&) const = default;
};

}  // namespace tessara
