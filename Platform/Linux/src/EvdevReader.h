#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include <linux/input.h>

#include "Platform/Linux/FileDescriptor.h"
#include "Platform/Linux/KeyboardState.h"
#include "Platform/Linux/MouseFrameTranslator.h"
#include "ReadableWatch.h"

struct libevdev;

namespace tessara {

class DispatchQueue;

/// An open evdev node that is read on a queue, frame by frame. It knows nothing of what is in the
/// frames. Everything happens on the queue; no frame allocates.
class EvdevReader : public std::enable_shared_from_this<EvdevReader> {
  public:
    using Frame = MouseFrameTranslator::Frame;
    static constexpr std::size_t frameCapacity = MouseFrameTranslator::frameCapacity;

    struct Handlers {
        /// A frame, its `SYN_REPORT` last. One of more events than fit comes in several pieces.
        std::move_only_function<void(Frame)> onFrame;
        /// The kernel dropped frames; the next one brings the keys up to date.
        std::move_only_function<void()> onLoss;
        /// The node is of no use any more, for this reason of errno's. Comes last.
        std::move_only_function<void(int error)> onEnd;
    };

    /// Opens the node; the times of its events are those of `CLOCK_MONOTONIC`. The error is
    /// errno's.
    [[nodiscard]] static std::expected<std::shared_ptr<EvdevReader>, int> open(
        const std::string& node, std::shared_ptr<DispatchQueue> queue);

    explicit EvdevReader(std::shared_ptr<DispatchQueue> queue);
    ~EvdevReader();

    EvdevReader(const EvdevReader&) = delete;
    EvdevReader& operator=(const EvdevReader&) = delete;

    /// False when the queue has no room for one more descriptor to wait for.
    [[nodiscard]] bool start(Handlers handlers);

    /// Ends the reading; no handler is called afterwards. A grab ends with it.
    void close();

    /// Takes the node for this reader alone, or gives it back. 0, or the reason of errno's.
    [[nodiscard]] int setGrabbed(bool isGrabbed);

    /// Whether the kernel has any key or button of the node down now; true also when it does not
    /// say. What it said of keys until now and was not read yet is lost with the question.
    [[nodiscard]] bool isAnyKeyDown() const;

    // As of the last frame, and of the opening.

    [[nodiscard]] PressedKeys::Keys keysDown() const;
    [[nodiscard]] bool isCapsLockLit() const;

  private:
    struct Free {
        void operator()(libevdev* device) const noexcept;
    };

    int openNode(const std::string& node);
    [[nodiscard]] bool read();
    [[nodiscard]] bool synchronize();
    void take(const input_event& event);
    void end(int error);

    const std::shared_ptr<DispatchQueue> queue_;
    FileDescriptor descriptor_;
    std::unique_ptr<libevdev, Free> device_;  // on the descriptor's number, which it does not own
    std::optional<ReadableWatch> watch_;      // while it is read
    Handlers handlers_;
    std::array<input_event, frameCapacity> frame_{};
    std::size_t frameSize_ = 0;
};

}  // namespace tessara
