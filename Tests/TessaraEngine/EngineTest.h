#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "Support/TestDispatcher.h"
#include "TessaraEngine/RecordingEventPoster.h"
#include "TessaraEngine/RecordingSideEffects.h"

namespace tessara {

/// The ground that the pipelines' tests stand on: virtual time and sinks that remember.
class EngineTest : public testing::VirtualTimeTest {
  protected:
    /// What was posted since the last call, one line each.
    std::vector<std::string> takePosted() {
        std::vector<std::string> lines;
        for (const Emission& emission : poster->emissions())
            lines.push_back(description(emission));
        poster->reset();
        return lines;
    }

    [[nodiscard]] double nowMillis() const { return millisSinceStart(dispatcher.now()); }

    const std::shared_ptr<RecordingEventPoster> poster = std::make_shared<RecordingEventPoster>();
    const std::shared_ptr<RecordingSideEffects> sideEffects =
        std::make_shared<RecordingSideEffects>();
};

}  // namespace tessara
