#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "TessaraReplay/ReplayRecord.h"

namespace tessara {

/// What the applications, and the hand, hold down at one moment of a replay. It tells whether a
/// replay leaves anything behind; it counts nothing.
class ReplayHoldings {
  public:
    /// A mouse at `baseDPI`, in counts per inch, has no shift of resolution.
    explicit ReplayHoldings(std::int64_t baseDPI) : baseDPI_(baseDPI) {}

    /// Takes the next record. From a `FinalReset` on what the hand holds no longer counts.
    void add(const ReplayRecord& record);

    /// "button 3, key 8, vertical glide, 400 DPI", or "nothing".
    [[nodiscard]] std::string description() const;

  private:
    std::int64_t baseDPI_;  // constant after construction
    std::set<std::int64_t> handButtons_;
    std::set<std::int64_t> appButtons_;
    std::set<std::uint16_t> appKeys_;
    std::set<ScrollAxis> openGlides_;
    std::optional<std::int64_t> shiftedDPI_;
};

/// Counts what happens in the replay of one recording, for a person to read.
class ReplaySummary {
  public:
    /// `events` are the recording's, inputs or not. `pixelsPerLine` is what a line of the wheel
    /// comes to without acceleration, `baseDPI` the resolution without a shift.
    ReplaySummary(std::string recording, std::size_t events, double pixelsPerLine,
                  std::int64_t baseDPI);

    /// Takes the next record, in the order in which they happened.
    void add(const ReplayRecord& record);

    /// The table: a line with the recording's name, then one figure or group of figures a line.
    [[nodiscard]] std::string text() const;

  private:
    /// One gesture, chained plans and all, from its first step to the latest.
    struct Glide {
        TimePoint start;
        std::chrono::nanoseconds duration{0};
        std::int64_t pixels = 0;
    };
    /// How often things went down and came up.
    struct Strokes {
        std::int64_t downs = 0;
        std::int64_t ups = 0;
        void count(bool isDown) { ++(isDown ? downs : ups); }
    };

    void count(const HandledWheel& wheel);
    void count(const HandledMotion& motion);
    void count(const PostedScroll& scroll, TimePoint at);

    std::string recording_;  // the first three are constant after construction
    std::size_t events_;
    double pixelsPerLine_;

    // The wheel under the hand.
    std::int64_t clicks_ = 0;
    std::int64_t clicksPassed_ = 0;
    std::int64_t lines_ = 0;  // of the clicks that were not passed, whatever their direction

    // What became of it. A gesture that is still open counts as a glide, and can't be the longest.
    std::int64_t glides_ = 0;
    std::int64_t steps_ = 0;
    std::int64_t pixelsPosted_ = 0;
    std::map<ScrollAxis, Glide> openGlides_;
    std::optional<Glide> longest_;

    // Motion: the counts of both axes, each way, before and after.
    std::int64_t motions_ = 0;
    std::int64_t countsIn_ = 0;
    std::int64_t countsOut_ = 0;

    // What went down and up, and what else was asked for.
    Strokes handButtons_;
    Strokes postedButtons_;
    Strokes postedKeys_;
    std::int64_t dpiRequests_ = 0;
    std::int64_t launches_ = 0;
    std::int64_t shortcuts_ = 0;

    ReplayHoldings holdings_;
    std::string heldBeforeReset_;
    TimePoint end_ = replayStart;
};

}  // namespace tessara
