#include <cmath>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Paths.h"
#include "TessaraCore/Config.h"
#include "TessaraCore/Overloaded.h"
#include "TessaraCore/Profile.h"
#include "TessaraReplay/FrameAssembler.h"
#include "TessaraReplay/Recording.h"
#include "TessaraReplay/ReplayPlayer.h"

// What must hold of every replay, whatever the hand did. The rules are checked on real recordings
// where there are any, and on those of the project.

namespace tessara {
namespace {

std::vector<ReplayRecord> replayed(const Recording& recording, const Profile& profile) {
    std::vector<ReplayRecord> records;
    Config config = Config::default_();
    config.profiles = {profile};
    play(assembleInputs(recording), {.config = config, .frontmostBundleID = std::nullopt},
         [&](const ReplayRecord& record) { records.push_back(record); });
    return records;
}

/// Follows the glides: a second transformer, told what was posted, says what should come.
class GlideRules {
  public:
    explicit GlideRules(const Profile& profile) : transformer_(profile.makeScrollTransformer()) {}

    void see(TimePoint at, ModifierFlags modifiers, const WheelTurn& turn) {
        Axis& axis = axes_[turn.axis];
        const auto outcome =
            transformer_.transform({.lineDelta = turn.lines,
                                    .axis = turn.axis,
                                    .modifiers = modifiers,
                                    .timestampMillis = millisSinceStart(at),
                                    .deviceID = DeviceID{1}},
                                   axis.plan ? std::optional(axis.posted) : std::nullopt);
        if (const auto* animate = std::get_if<ScrollAnimate>(&outcome)) {
            axis.plan = animate->plan;
            axis.posted = 0;
            axis.planStart = at;
        }
    }

    void see(TimePoint at, const PostedScroll& scroll) {
        Axis& axis = axes_[scroll.axis];
        ASSERT_EQ(scroll.phase == ScrollPhase::began, !axis.isOpen);
        axis.isOpen = scroll.phase != ScrollPhase::ended;
        axis.posted += scroll.pixels;
        if (scroll.phase != ScrollPhase::ended) {
            ASSERT_NE(scroll.pixels, 0);
            return;
        }
        ASSERT_EQ(scroll.pixels, 0);
        ++gesturesEnded_;
        ASSERT_TRUE(axis.plan);
        if (at != axis.planStart + nanosecondsFromMillis(axis.plan->durationMillis)) return;
        EXPECT_EQ(axis.posted, axis.plan->totalPixelDelta);
        ++glidesPlayedOut_;
        axis.plan.reset();
    }

    void finish() const {
        for (const auto& [name, axis] : axes_)
            EXPECT_FALSE(axis.isOpen);
    }

    [[nodiscard]] int glidesPlayedOut() const { return glidesPlayedOut_; }

  private:
    struct Axis {
        bool isOpen = false;
        std::optional<ScrollPlan> plan;  // until it has been played to its end
        TimePoint planStart;
        std::int64_t posted = 0;  // of the plan
    };

    ScrollTransformer transformer_;
    std::map<ScrollAxis, Axis> axes_;
    int gesturesEnded_ = 0;
    int glidesPlayedOut_ = 0;
};

/// Adds up what the curve makes of each motion; the pixels out may lag behind by a fraction only.
class MotionRules {
  public:
    explicit MotionRules(const Profile& profile) : curve_(profile.pointer.curve) {}

    void see(TimePoint at, const HandledMotion& motion) {
        if (motion.motion == MouseMotion{}) return;
        const double now = millisSinceStart(at);
        const double elapsed = last_ ? now - *last_ : 0;
        const double interval = elapsed > 0 && elapsed <= 250 ? std::max(elapsed, 0.25) : 0;
        const PointerDelta scaled = curve_.apply({.dx = static_cast<double>(motion.motion.dx),
                                                  .dy = static_cast<double>(motion.motion.dy)},
                                                 interval);
        lagX_ += scaled.dx - static_cast<double>(motion.out.dx);
        lagY_ += scaled.dy - static_cast<double>(motion.out.dy);
        constexpr double rounding = 1e-6;
        ASSERT_LT(std::abs(lagX_), 1 + rounding);
        ASSERT_LT(std::abs(lagY_), 1 + rounding);
        last_ = now;
    }

  private:
    PointerCurve curve_;
    std::optional<double> last_;
    double lagX_ = 0;
    double lagY_ = 0;
};

/// What the applications take for held down.
class HeldRules {
  public:
    void button(std::int64_t number, bool isDown) { set(buttons_, number, isDown); }
    void key(std::int64_t code, bool isDown) { set(keys_, code, isDown); }
    void finish() const {
        EXPECT_TRUE(buttons_.empty());
        EXPECT_TRUE(keys_.empty());
    }

  private:
    static void set(std::set<std::int64_t>& held, std::int64_t element, bool isDown) {
        isDown ? void(held.insert(element)) : void(held.erase(element));
    }
    std::set<std::int64_t> buttons_;
    std::set<std::int64_t> keys_;
};

/// Checks the rules on one recording and returns how many glides were played to their end.
int expectRulesHold(const Recording& recording) {
    const Profile profile = Profile::default_();
    ReplayInputs inputs = assembleInputs(recording);
    std::erase_if(inputs.inputs, [](const ReplayInput& input) {
        return std::holds_alternative<ModifierKeyChange>(input.what);
    });
    GlideRules glides(profile);
    MotionRules motions(profile);
    HeldRules held;
    TimePoint last = replayStart;
    auto input = inputs.inputs.begin();
    for (const ReplayRecord& record : replayed(recording, profile)) {
        EXPECT_GE(record.at, last);
        last = record.at;
        std::visit(
            Overloaded{
                [&](const HandledWheel& wheel) {
                    EXPECT_EQ(input->at, record.at);
                    glides.see(record.at, input++->modifiers, wheel.turn);
                },
                [&](const HandledButton& button) {
                    ++input;
                    if (button.passes) held.button(button.change.number, button.change.isDown);
                },
                [&](const HandledMotion& motion) {
                    ++input;
                    motions.see(record.at, motion);
                },
                [&](const PostedScroll& scroll) { glides.see(record.at, scroll); },
                [&](const PostedButton& button) { held.button(button.number, button.isDown); },
                [&](const PostedKey& key) { held.key(key.code, key.isDown); },
                [](const auto&) {},
            },
            record.what);
    }
    EXPECT_EQ(input, inputs.inputs.end());
    glides.finish();
    held.finish();
    return glides.glidesPlayedOut();
}

void expectRulesHoldIn(const std::filesystem::path& folder, int leastGlides) {
    int recordings = 0;
    int glides = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() != ".events") continue;
        SCOPED_TRACE(entry.path().filename());
        const auto recording = readRecording(entry.path());
        ASSERT_TRUE(recording) << recording.error().description();
        glides += expectRulesHold(*recording);
        ++recordings;
    }
    EXPECT_GT(recordings, 0);
    EXPECT_GE(glides, leastGlides);
}

TEST(RecordedHands, of_real_mice_lose_no_pixel_and_leave_nothing_held) {
    const std::filesystem::path folder = TESSARA_RECORDINGS_DIR;
    if (!std::filesystem::is_directory(folder)) GTEST_SKIP() << "no recordings in " << folder;
    expectRulesHoldIn(folder, 2);
}

TEST(RecordedHands, of_the_project_lose_no_pixel_and_leave_nothing_held) {
    expectRulesHoldIn(TESSARA_SOURCE_DIR "/Recordings", 10);
    expectRulesHoldIn(TESSARA_SOURCE_DIR "/Tests/EndToEnd/data", 2);
}

}  // namespace
}  // namespace tessara
