#pragma once

#include <expected>
#include <memory>
#include <span>
#include <system_error>
#include <utility>
#include <vector>

#include <linux/input.h>

#include "Platform/Linux/VirtualDevice.h"

namespace tessara {

/// An event of a frame, without its time.
struct FrameEvent {
    int type;
    int code;
    int value;
    bool operator==(const FrameEvent&) const = default;
};

/// The outputs of the virtual devices of a test, and what was written to them.
struct RecordedFrames {
    std::vector<std::vector<FrameEvent>> frames;  ///< each without its `SYN_REPORT`
    bool refuses = false;
    int opened = 0;
    int alive = 0;

    /// Makes devices that write here; must outlive them.
    VirtualDevice::Opener opener() {
        return [this]() -> std::expected<std::unique_ptr<FrameSink>, std::error_code> {
            if (refuses) return std::unexpected(std::make_error_code(std::errc::permission_denied));
            ++opened;
            return std::make_unique<Sink>(*this);
        };
    }

    /// All frames since the last call.
    std::vector<std::vector<FrameEvent>> take() { return std::exchange(frames, {}); }

  private:
    class Sink final : public FrameSink {
      public:
        explicit Sink(RecordedFrames& record) : record_(record) { ++record_.alive; }
        ~Sink() override { --record_.alive; }

        bool write(std::span<const input_event> frame) override {
            if (record_.refuses) return false;
            auto& events = record_.frames.emplace_back();
            for (const auto& event : frame.first(frame.size() - 1))
                events.push_back({event.type, event.code, event.value});
            return true;
        }

      private:
        RecordedFrames& record_;
    };
};

}  // namespace tessara
