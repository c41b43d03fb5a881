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
/// choice of light or dark. It draws the wheel only: buttons and motion leave no trace in it.
class ReplayPlot {
  public:
    /// Starts the panel of a further recording. Comes before the first `add`.
    void begin(std::string title);

    /// Takes the next record of the recording begun last, in the order in which they happened.
    void add(const ReplayRecord& record);

    /// The picture of all that was added so far, for a file of its own. Equal records give equal
    /// pictures.
    [[nodiscard]] std::string svg() const;

    // What there is to draw.

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
    /// One axis of one recording, each list in the order of time.
    struct Track {
        std::vector<Point> clicks;  ///< those of at least one line
        std::vector<Point> pixels;
        std::vector<Span> glides;
        std::optional<TimePoint> openGlide;  ///< the start of a gesture that has not ended
    };
    /// One recording.
    struct Panel {
        std::string title;            ///< UTF-8; it is escaped for the picture
        std::array<Track, 2> tracks;  ///< by `ScrollAxis`
        TimePoint end = replayStart;  ///< of the last record
    };

  private:
    std::vector<Panel> panels_;
};

}  // namespace tessara
