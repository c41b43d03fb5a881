#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Dispatch/Clock.h"
#include "Platform/Dispatch/Mutex.h"
#include "Platform/Linux/LinuxEventTapService.h"

namespace tessara {

struct InputDevice;

/// What the taps of one service have in common: whom they are for, where their frames go, and why
/// they do not get what they should.
class TapCircumstances {
  public:
    TapCircumstances(std::vector<InputDeviceMatch> wanted,
                     std::shared_ptr<VirtualDevices> virtualDevices,
                     std::shared_ptr<KeyboardState> keyboardState);

    [[nodiscard]] bool isWanted(const InputDevice& device) const;

    /// Why something cannot be had. Any thread, these three.
    struct Refusal {
        std::string what;  ///< "the mouse … at /dev/input/event5 cannot be taken over"
        int error = 0;     ///< errno's, 0 for none
        std::string node;  ///< who else has it open is of interest; may be empty

        bool operator==(const Refusal&) const = default;
    };
    /// `id` is the device's, 0 for the virtual devices. None ends it.
    void setRefusal(std::uint64_t id, std::optional<Refusal> refusal);
    void forgetRefusals();
    /// The first of them in words. Looks through all processes for one that it has not yet told of.
    [[nodiscard]] std::optional<std::string> refusalText() const;

    const std::vector<InputDeviceMatch> mice;
    const std::shared_ptr<VirtualDevices> output;
    const std::shared_ptr<KeyboardState> keyboards;

    /// When the virtual mouse was first seen among the system's devices, in nanoseconds on the
    /// program's time line; 0 when it was not.
    std::atomic<std::int64_t> virtualMouseSeen{0};

  private:
    mutable Mutex mutex_;
    std::map<std::uint64_t, Refusal> refusals_ TESSARA_GUARDED_BY(mutex_);
    mutable std::optional<Refusal> told_ TESSARA_GUARDED_BY(mutex_);
    mutable std::string toldText_ TESSARA_GUARDED_BY(mutex_);
};

/// The other processes that have this file open, as "name (number)", as far as this user may see
/// them.
[[nodiscard]] std::vector<std::string> processesWithOpenFile(const std::string& path);

}  // namespace tessara
