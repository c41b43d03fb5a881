
#include <gmock/gmock.h>

#include "Platform/Simulated/SimulatedDesktop.h"
#include "Support/TestDispatcher.h"
#include "TessaraEngine/CGEventPoster.h"
#include "TessaraEngine/TessaraEventTag.h"

namespace tessara {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class CGEventPosterTest : public testing::VirtualTimeTest {
  protected:
    CGEventPosterTest() { desktop.workspace().bringToFront(application); }

    std::vector<CGEvent> takeReceived() {
        dispatcher.runReady();
        return application.takeReceived();
    }

    SimulatedDesktop desktop{dispatcher};
    SimulatedApplication& application = desktop.workspace().install("org.example.a", "A");
    CGEventPoster poster{desktop.eventServices(), CGEventTapLocation::session};
};

TEST_F(CGEventPosterTest, a_scroll_step_is_a_continuous_event_of_whole_pixels_with_its_phase) {
    constexpr std::int64_t beyond = std::int64_t{1} << 40;
    const struct {
        ScrollAxis axis;
        std::int64_t pixels;
        ScrollPhase phase;
        std::int64_t phaseField;
    } rows[] = {
        {ScrollAxis::vertical, -7, ScrollPhase::began, 1},
        {ScrollAxis::horizontal, 12, ScrollPhase::changed, 2},
        {ScrollAxis::vertical, 0, ScrollPhase::ended, 4},
        {ScrollAxis::vertical, beyond, ScrollPhase::changed, 2},
        {ScrollAxis::horizontal, -beyond, ScrollPhase::changed, 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.pixels);
        poster.postScrollStep(row.axis, row.pixels, row.phase,
                              ModifierFlags::shift | ModifierFlags::function);
        const auto received = takeReceived();
        ASSERT_EQ(received.size(), 1U);
        const CGEvent& event = received.front();
        const bool isVertical = row.axis == ScrollAxis::vertical;
        const std::int64_t vertical = isVertical ? row.pixels : 0;
        const std::int64_t horizontal = isVertical ? 0 : row.pixels;
        EXPECT_EQ(event.type, CGEventType::scrollWheel);
        EXPECT_EQ(event.flags, 0x820000U);
        EXPECT_TRUE(isTessaraEmitted(event));
        const std::pair<CGEventField, std::int64_t> fields[] = {
            {CGEventField::scrollWheelEventIsContinuous, 1},
            {CGEventField::scrollWheelEventDeltaAxis1, 0},
            {CGEventField::scrollWheelEventDeltaAxis2, 0},
            {CGEventField::scrollWheelEventPointDeltaAxis1, vertical},
            {CGEventField::scrollWheelEventPointDeltaAxis2, horizontal},
            {CGEventField::scrollWheelEventFixedPtDeltaAxis1, vertical},
            {CGEventField::scrollWheelEventFixedPtDeltaAxis2, horizontal},
            {CGEventField::scrollWheelEventScrollPhase, row.phaseField},
            {CGEventField::scrollWheelEventMomentumPhase, 0},
        };
        for (const auto& [field, value] : fields)
            EXPECT_EQ(event.integerValue(field), value) << static_cast<std::uint32_t>(field);
    }
}

TEST_F(CGEventPosterTest, a_button_goes_down_and_up_where_the_cursor_is) {
    const struct {
        std::int64_t number;
        std::uint32_t down;
        std::uint32_t up;
    } rows[] = {{0, 1, 2}, {1, 3, 4}, {2, 25, 26}, {15, 25, 26}, {-1, 25, 26}};
    desktop.displays().moveCursor({.x = 12, .y = 34});
    for (const auto& row : rows) {
        poster.postMouseButton(row.number, true);
        poster.postMouseButton(row.number, false);
        const auto received = takeReceived();
        ASSERT_EQ(received.size(), 2U);
        EXPECT_EQ(received[0].type, CGEventType{row.down});
        EXPECT_EQ(received[1].type, CGEventType{row.up});
        for (const CGEvent& event : received) {
            EXPECT_EQ(event.integerValue(CGEventField::mouseEventButtonNumber), row.number);
            EXPECT_EQ(event.location, (CGPoint{.x = 12, .y = 34}));
            EXPECT_TRUE(isTessaraEmitted(event));
        }
    }
}

TEST_F(CGEventPosterTest, events_enter_where_the_poster_was_told) {
    poster.postKey(8, true, ModifierFlags::none);
    dispatcher.runReady();
    EXPECT_THAT(desktop.hardwareState().keysDown(), IsEmpty());
    CGEventPoster atHID(desktop.eventServices(), CGEventTapLocation::hid);
    atHID.postKey(9, true, ModifierFlags::none);
    atHID.postMouseButton(3, true);
    dispatcher.runReady();
    EXPECT_THAT(desktop.hardwareState().keysDown(), ElementsAre(9));
    EXPECT_THAT(desktop.hardwareState().buttonsDown(), ElementsAre(3));
    EXPECT_THAT(desktop.sessionState().keysDown(), ElementsAre(8, 9));
}

TEST_F(CGEventPosterTest, what_the_system_will_not_make_is_dropped) {
    const auto post = [&] {
        poster.postScrollStep(ScrollAxis::vertical, 1, ScrollPhase::began, ModifierFlags::none);
        poster.postMouseButton(2, true);
        return takeReceived();
    };
    desktop.eventServices().refuseSources(2);
    EXPECT_THAT(post(), IsEmpty());
    desktop.eventServices().refuseEvents();
    EXPECT_THAT(post(), IsEmpty());
    desktop.eventServices().refuseEvents(0);
    EXPECT_EQ(post().size(), 2U);
}

}  // namespace
}  // namespace tessara
