#include <chrono>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "AppWiring/SimulatedAppHost.h"
#include "Support/TestDispatcher.h"
#include "TessaraApp/AppModel.h"
#include "TessaraApp/ConfigStore.h"
#include "TessaraHeadless/SituationReport.h"

namespace tessara {
namespace {

using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

const std::string active = "Active: the mouse's events go through Tessara.";
const std::string waiting = "Waiting for the mouse: it is not plugged in.";

class SituationReportTest : public testing::VirtualTimeTest {
  protected:
    ~SituationReportTest() override {
        model.stop();
        dispatcher.advance(seconds(5));
        dispatcher.discard();  // what the engine was waiting for with the mouse's settings
    }

    /// What was said in the next three seconds.
    std::vector<std::string> heard() {
        dispatcher.advance(seconds(3));
        return std::exchange(sentences, {});
    }

    SimulatedAppHost host{dispatcher};
    AppModel model{host.appPlatform()};
    Obstacles obstacles;
    std::vector<std::string> sentences;
    SituationReport report{model, host.mainQueue, [this] { return obstacles; },
                           [this](const std::string& said) { sentences.push_back(said); }};
};

TEST_F(SituationReportTest, each_new_situation_is_told_once_and_lasts_before_it_is_told) {
    host.plugInMouse();
    model.start();
    EXPECT_THAT(heard(), IsEmpty()) << "not that the mouse is missing, before it is looked for";
    EXPECT_THAT(heard(), ElementsAre(active));
    EXPECT_THAT(heard(), IsEmpty());

    host.unplugMouse();
    heard();
    EXPECT_THAT(heard(), ElementsAre(waiting));
    host.plugInMouse();
    heard();
    EXPECT_THAT(heard(), ElementsAre(active));

    model.setPausedByUser(true);
    EXPECT_THAT(heard(), ElementsAre("Paused: the mouse is left alone."));
    model.setPausedByUser(false);
    model.setPausedByUser(true);
    EXPECT_THAT(heard(), IsEmpty()) << "what did not last is not told";
}

TEST_F(SituationReportTest, what_stands_in_the_way_is_told_by_name) {
    host.files.putFile(host.configPath, "[]");
    host.desktop.permissions().revokeAccessibility();
    model.retryReadingConfig();
    obstacles.missingRights = {"The output device may not be written."};
    model.start();
    EXPECT_THAT(heard(), ElementsAre("The output device may not be written.",
                                     "Not running: the mouse works as it does without Tessara.",
                                     HasSubstr(SimulatedAppHost::configPath)));

    host.desktop.permissions().grantAccessibility();
    obstacles = {.missingRights = {}, .tap = "\"other\" holds the mouse"};
    host.plugInMouse();
    heard();
    EXPECT_THAT(heard(), ElementsAre("Waiting for the mouse: \"other\" holds the mouse"));
    host.files.failEvery(SimulatedFileSystem::Step::createTemporary, FileError::Kind::noSpace);
    model.startFreshConfig();
    EXPECT_THAT(heard(), ElementsAre(HasSubstr("The settings are not saved: ")));
}

}  // namespace
}  // namespace tessara
