#include <QSignalSpy>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "AppWiring/SimulatedAppHost.h"
#include "Support/TestDispatcher.h"
#include "TessaraApp/AppModel.h"
#include "TessaraApp/ViewModels/Notice.h"
#include "TessaraApp/ViewModels/SettingsViewModel.h"

namespace tessara {
namespace {

using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class SettingsViewModelTest : public testing::VirtualTimeTest {
  protected:
    ~SettingsViewModelTest() override {
        settings.reset();
        model.reset();
        dispatcher.advance(seconds(20));
        dispatcher.discard();
    }

    void open() {
        model = std::make_unique<AppModel>(host.appPlatform());
        model->start();
        dispatcher.advance(seconds(5));
        settings = std::make_unique<SettingsViewModel>(*model);
    }
    const Notice& notice(int index) const {
        return *settings->notices().at(index).value<Notice*>();
    }
    void perform(int noticeIndex, int action) {
        settings->notices().at(noticeIndex).value<Notice*>()->perform(action);
    }
    /// Of each notice its symbol and its title.
    std::vector<std::string> titles() const {
        std::vector<std::string> titles;
        for (int i = 0; i < settings->notices().size(); ++i)
            titles.push_back((notice(i).symbol() + ' ' + notice(i).title()).toStdString());
        return titles;
    }

    const std::string problem = "xmark.octagon.fill Your Tessara settings file could not be read";
    const std::string missing =
        "exclamationmark.triangle.fill Tessara is not allowed to touch your input yet";
    const std::string paused = "info.circle.fill Tessara is paused";

    SimulatedAppHost host{dispatcher};
    std::unique_ptr<AppModel> model;
    std::unique_ptr<SettingsViewModel> settings;
};

TEST_F(SettingsViewModelTest, the_notices_tell_what_is_wrong_and_then_what_holds_the_program_up) {
    host.files.putFile(SimulatedAppHost::configPath, "{");
    open();
    QSignalSpy changes(settings.get(), &SettingsViewModel::noticesChanged);
    EXPECT_THAT(titles(), ElementsAre(problem));
    model->setPausedByUser(true);
    EXPECT_THAT(titles(), ElementsAre(problem, paused));
    host.desktop.permissions().revokeAccessibility();
    dispatcher.advance(seconds(5));
    EXPECT_THAT(titles(), ElementsAre(problem, missing));
    host.desktop.permissions().revokeInputMonitoring();
    dispatcher.advance(seconds(5));
    EXPECT_EQ(changes.count(), 2) << "one permission missing looks like two";
    host.desktop.permissions().grantAccessibility();
    host.desktop.permissions().grantInputMonitoring();
    dispatcher.advance(seconds(5));
    EXPECT_THAT(titles(), ElementsAre(problem, paused));

    perform(1, 0);
    EXPECT_FALSE(model->needsBanner() && titles().size() == 2);
    EXPECT_THAT(titles(), ElementsAre(problem));
    EXPECT_EQ(changes.count(), 4);
}

TEST_F(SettingsViewModelTest, a_document_that_cannot_be_read_has_three_ways_out) {
    const std::string mine = Config::default_().encoded().value();
    host.files.putFile(SimulatedAppHost::configPath, "{");
    open();
    EXPECT_THAT(
        notice(0).actions(),
        ElementsAre("Try Reading It Again", "Move It Aside And Start Fresh", "Show In Finder"));
    EXPECT_TRUE(notice(0).message().endsWith(
        " Your file is still on disk at /home/user/.local/share/tessara/config.json."));
    perform(0, 0);
    EXPECT_THAT(titles(), ElementsAre(problem)) << "it is as bad as before";
    perform(0, 2);
    EXPECT_EQ(host.shell.revealedFiles, std::vector<std::string>{SimulatedAppHost::configPath});
    perform(0, 1);
    EXPECT_THAT(titles(), IsEmpty());
    EXPECT_EQ(host.files.contents(SimulatedAppHost::configPath), mine);
}

TEST_F(SettingsViewModelTest, what_could_not_be_written_is_told_until_it_is) {
    using enum SimulatedFileSystem::Step;
    open();
    host.files.failEvery(writeTemporary, FileError::Kind::noSpace);
    model->editConfig([](Config& config) { config.profiles[0].name = "Mine"; });
    dispatcher.advance(seconds(2));
    EXPECT_THAT(titles(), ElementsAre("xmark.octagon.fill Your settings could not be saved"));
    perform(0, 0);
    EXPECT_EQ(titles().size(), 1U) << "it is as bad as before";
    host.files.failEvery(writeTemporary, std::nullopt);
    perform(0, 0);
    EXPECT_THAT(titles(), IsEmpty());
    EXPECT_THAT(host.files.contents(SimulatedAppHost::configPath).value(), HasSubstr("Mine"));

    host.files.putFile(SimulatedAppHost::configPath, "{");
    host.files.failEvery(rename, FileError::Kind::noSpace);
    model->retryReadingConfig();
    model->startFreshConfig();
    EXPECT_THAT(titles(), ElementsAre(problem,
                                      "xmark.octagon.fill Your settings file could not "
                                      "be moved aside"));
}

TEST_F(SettingsViewModelTest, what_the_session_hides_is_told_until_the_user_knows) {
    open();
    const auto limit = [this](const char* reason) {
        host.desktop.workspace().setLimitation(reason);
        dispatcher.advance(seconds(5));
        return titles().size();
    };
    EXPECT_EQ(limit("There is no display."), 1U);
    EXPECT_EQ(limit("No window can be seen."), 1U);
    EXPECT_EQ(notice(0).message(), "No window can be seen.");
    perform(0, 0);
    EXPECT_THAT(titles(), IsEmpty());
    EXPECT_EQ(limit("No window can be seen."), 0U);
    EXPECT_EQ(limit("The compositor has gone."), 1U) << "that is news";
}

TEST_F(SettingsViewModelTest, the_tabs_name_the_window_and_some_edit_a_profile) {
    open();
    QSignalSpy changes(settings.get(), &SettingsViewModel::selectedTabChanged);
    std::vector<std::string> seen;
    for (int i = 0; i < settings->tabs().size(); ++i) {
        settings->setSelectedTab(i);
        seen.push_back((settings->isInProfileScope() ? "+ " : "- ") +
                       settings->windowTitle().toStdString());
    }
    EXPECT_THAT(seen, ElementsAre("+ Scroll", "+ Buttons", "+ Pointer", "- Profiles", "- Device",
                                  "- Updates"));
    settings->setSelectedTab(6);
    settings->setSelectedTab(-1);
    EXPECT_EQ(settings->windowTitle(), "Updates");
    EXPECT_EQ(changes.count(), 5);
}

TEST_F(SettingsViewModelTest, the_scope_compares_the_edited_profile_with_the_one_in_use) {
    SimulatedApplication& figma = host.desktop.workspace().install("com.figma.Desktop", "Figma");
    open();
    ProfileScopeModel& scope = *settings->profileScope();
    QSignalSpy changes(&scope, &ProfileScopeModel::useChanged);
    EXPECT_TRUE(scope.isInUse());
    EXPECT_EQ(scope.useText(), "In use right now");
    EXPECT_EQ(scope.names(), (QStringList{"Default", "Canvas & Design Apps"}));

    host.desktop.workspace().bringToFront(figma);
    dispatcher.advance(seconds(5));
    EXPECT_FALSE(scope.isInUse());
    EXPECT_EQ(scope.useText(), "Figma is currently using “Canvas & Design Apps”");
    scope.choose(1);
    EXPECT_TRUE(scope.isInUse());
    EXPECT_EQ(settings->profile().profile().id, "canvas");
    EXPECT_EQ(scope.currentIndex(), 1);

    host.desktop.workspace().bringToFront(
        host.desktop.workspace().install("org.example.editor", "Editor"));
    dispatcher.advance(seconds(5));
    EXPECT_EQ(scope.useText(), "Editor is currently using “Default”");
}

TEST_F(SettingsViewModelTest, a_deleted_profile_gives_way_to_the_first_until_another_is_picked) {
    open();
    ProfileScopeModel& scope = *settings->profileScope();
    scope.choose(1);
    QSignalSpy profileChanges(&settings->profile(), &ProfileBinding::profileChanged);
    model->editConfig([](Config& config) { config.profiles.pop_back(); });
    EXPECT_EQ(settings->profile().profile().id, "default");
    EXPECT_EQ(settings->profile().selectedProfileID(), "canvas");
    EXPECT_EQ(scope.currentIndex(), 0);
    EXPECT_EQ(profileChanges.count(), 1);
    settings->scrollPage()->smoothing->turn(false);
    EXPECT_FALSE(model->config().profiles.front().scroll.isEnabled);

    const Config emptied{.profiles = {}};
    model->setConfig(emptied);
    EXPECT_EQ(settings->profile().profile(), Profile::default_());
    EXPECT_EQ(scope.currentIndex(), -1);
    settings->scrollPage()->smoothing->turn(false);
    EXPECT_EQ(model->config(), emptied) << "there is nothing that it could be written to";
}

TEST_F(SettingsViewModelTest, profiles_of_one_name_are_told_apart) {
    open();
    model->editConfig([](Config& config) { config.profiles.back().name = "Default"; });
    ProfileScopeModel& scope = *settings->profileScope();
    EXPECT_EQ(scope.names(), (QStringList{"Default", "Default"}));
    scope.choose(1);
    EXPECT_EQ(settings->profile().profile().id, "canvas");
}

}  // namespace
}  // namespace tessara
