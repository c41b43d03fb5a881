#pragma once

namespace tessara {

/// Asks what the user has granted, and never prompts: to help the user grant it is
/// `PermissionHelp`'s and the interface's. Either may come and go while the program runs. Any
/// thread; cheap enough for a poll.
class PermissionService {
  public:
    virtual ~PermissionService() = default;

    /// Whether the program may sit in the event stream and post events.
    [[nodiscard]] virtual bool isProcessTrusted() const = 0;

    /// Whether it may listen to input events.
    [[nodiscard]] virtual bool preflightListenEventAccess() const = 0;
};

}  // namespace tessara
