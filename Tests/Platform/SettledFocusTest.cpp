#include <gmock/gmock.h>

#include "Platform/Linux/SettledFocus.h"
#include "Support/TestDispatcher.h"

namespace tessara::testing {
namespace {

using std::chrono::milliseconds;
using ::testing::ElementsAre;

using SettledFocusTest = VirtualTimeTest;

TEST_F(SettledFocusTest, an_instant_without_a_window_in_front_is_no_change_and_a_while_is_one) {
    const auto queue = dispatcher.makeQueue("test.workspace", QualityOfService::standard);
    std::vector<std::string> told;
    SettledFocus focus(*queue, [&](const auto& id) { told.push_back(id.value_or("none")); });
    const auto settling = SettledFocus::settlingTime;

    focus.see(std::nullopt);
    dispatcher.advance(settling);
    focus.see("editor");
    focus.see("editor");
    EXPECT_THAT(told, ElementsAre("editor")) << "there was none before, and once is enough";

    focus.see(std::nullopt);
    dispatcher.advance(settling - milliseconds(1));
    focus.see("game");
    dispatcher.advance(2 * settling);
    EXPECT_THAT(told, ElementsAre("editor", "game"));

    focus.see(std::nullopt);
    dispatcher.advance(settling / 2);
    focus.see(std::nullopt);  // does not begin anew
    dispatcher.advance(settling / 2);
    EXPECT_THAT(told, ElementsAre("editor", "game", "none"));
    dispatcher.advance(3 * settling);
    focus.see("game");
    EXPECT_THAT(told, ElementsAre("editor", "game", "none", "game"));
}

}  // namespace
}  // namespace tessara::testing
