#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "TessaraReplay/ReplayRecord.h"

namespace tessara {

/// Draws what the wheel did and what became of it: a panel per recording with the pixels posted so
/// far over the clicks, both over time. The picture is one SVG document that follows the reader's
/// choice of light or dark.
class ReplayPlot {
  public:
    /// Starts the panel of a further recording. Comes before the first `add`.
    void begin(std::string title);

    void add(const ReplayRecord& record);

    [[nodiscard]] std::string svg() const;

    /// A moment and a number: the lines of a click, or the pixels posted up to then.
    struct Point {
        TimePoint at;
        std::int64_t value = 0;
    };
    /// The time from the first step of a gesture to its last.
    struct Span {
        TimePoint start;
        TimePoint end;
    };
    /// What there is to draw of one axis.
    struct Track {
        std::vector<Point> clicks;
        std::vector<Point> pixels;
        std::vector<Span> glides;
        std::optional<TimePoint> openGlide;
    };
    struct Panel {
        std::string title;
        std::array<Track, 2> tracks;  ///< by `ScrollAxis`
        TimePoint end = replayStart;
    };

  private:
    std::vector<Panel> panels_;
};

}  // namespace tessara
