#pragma once

#include "HIDPlusPlus/HIDPPInputMonitoringAccess.h"

namespace tessara {

class HIDTransport;
class PermissionService;

/// What the user has granted: a value of one moment. Nothing asks the user here; that is for the
/// interface to do, in the system's settings.
struct PermissionState {
    /// To sit in the event stream and to post events.
    bool accessibility = false;
    /// To listen to input events.
    bool inputMonitoring = false;
    /// To open the mouse for its protocol.
    HIDPPInputMonitoringAccess hidInputMonitoring = HIDPPInputMonitoringAccess::unknown;

    /// The state as it is now, read without ever prompting. Any thread.
    [[nodiscard]] static PermissionState current(const PermissionService& permissions,
                                                 const HIDTransport& transport);

    bool operator==(const PermissionState&) const = default;
};

}  // namespace tessara
