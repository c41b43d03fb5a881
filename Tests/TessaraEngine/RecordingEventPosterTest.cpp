#include <unordered_set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TessaraEngine/RecordingEventPoster.h"

namespace tessara {
namespace {

using ::testing::ElementsAre;

void postOneOfEach(EventPosting& poster) {
    poster.postScrollStep(ScrollAxis::horizontal, -7, ScrollPhase::began,
                          {ModifierFlags::shift, ModifierFlags::command});
    poster.postKey(8, true, ModifierFlags::command);
    poster.postMouseButton(3, false);
}

TEST(RecordingEventPoster, emissions_read_as_one_line_each) {
    RecordingEventPoster poster;
    postOneOfEach(poster);
    poster.postKey(9, false, ModifierFlags::none);
    poster.postMouseButton(4, true);

    std::vector<std::string> lines;
    for (const Emission& emission : poster.emissions())
        lines.push_back(description(emission));
    EXPECT_THAT(lines, ElementsAre("scroll(horizontal -7px began mods=18)", "key(8 down mods=16)",
                                   "mouseButton(3 up)", "key(9 up mods=0)", "mouseButton(4 down)"));
    poster.reset();
    EXPECT_TRUE(poster.emissions().empty());
}

TEST(RecordingEventPoster, only_scroll_steps_are_forwarded) {
    const auto further = std::make_shared<RecordingEventPoster>();
    RecordingEventPoster poster(further);
    postOneOfEach(poster);

    EXPECT_EQ(poster.emissions().size(), 3U);
    EXPECT_THAT(further->emissions(), ElementsAre(poster.emissions().front()));
}

TEST(RecordingEventPoster, emissions_hash_by_their_fields) {
    RecordingEventPoster poster;
    for (int round = 0; round < 2; ++round) {
        postOneOfEach(poster);
        poster.postKey(8, false, ModifierFlags::command);
        poster.postScrollStep(ScrollAxis::vertical, -7, ScrollPhase::began, {});
    }
    const auto emissions = poster.emissions();
    const std::unordered_set<Emission> distinct(emissions.begin(), emissions.end());
    EXPECT_EQ(distinct.size(), 5U);
}

}  // namespace
}  // namespace tessara
