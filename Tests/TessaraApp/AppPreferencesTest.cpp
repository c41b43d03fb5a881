#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Platform/FileUserDefaults.h"
#include "Platform/Simulated/SimulatedFileSystem.h"
#include "Platform/Simulated/SimulatedUserDefaults.h"
#include "Platform/Simulated/SimulatedWallClock.h"
#include "TessaraApp/AppPreferences.h"

namespace tessara {
namespace {

using Step = SimulatedFileSystem::Step;
using Unsynced = SimulatedFileSystem::UnsyncedWork;

const std::string path = "/home/user/.config/tessara/preferences.json";
const std::string asidePath =
    "/home/user/.config/tessara/preferences-2026-01-02-000000.unreadable.json";

TEST(AppPreferences, an_absent_value_or_one_of_another_type_is_the_factorys) {
    SimulatedUserDefaults defaults;
    for (const bool isMistyped : {false, true}) {
        SCOPED_TRACE(isMistyped);
        const AppPreferences preferences(defaults);
        EXPECT_FALSE(preferences.hasCompletedOnboarding());
        EXPECT_FALSE(preferences.isPausedByUser());
        EXPECT_TRUE(preferences.managesDeviceSettings());
        EXPECT_EQ(preferences.reportRateHertz(), std::nullopt);
        EXPECT_EQ(preferences.highResolutionWheel(), false);
        EXPECT_TRUE(preferences.automaticUpdateChecks());
        for (const char* key :
             {"onboarding.completed", "engine.pausedByUser", "device.manageSettings",
              "device.reportRateHertz", "device.highResolutionWheel", "updates.automaticChecks"}) {
            defaults.set(key, std::string("no"));
        }
    }
    defaults.values = {{"device.leavesWheelUnchanged", true}};
    EXPECT_EQ(AppPreferences(defaults).highResolutionWheel(), std::nullopt);
}

TEST(AppPreferences, each_choice_is_stored_at_once_told_once_and_there_after_a_relaunch) {
    SimulatedUserDefaults defaults;
    AppPreferences preferences(defaults);
    int changes = 0;
    const auto count = [&] { ++changes; };
    QObject::connect(&preferences, &AppPreferences::isPausedByUserChanged, count);
    QObject::connect(&preferences, &AppPreferences::reportRateHertzChanged, count);
    QObject::connect(&preferences, &AppPreferences::highResolutionWheelChanged, count);

    for (int time = 0; time < 2; ++time) {
        preferences.setHasCompletedOnboarding(true);
        preferences.setPausedByUser(true);
        preferences.setManagesDeviceSettings(false);
        preferences.setAutomaticUpdateChecks(false);
        preferences.setReportRateHertz(500);
        preferences.setHighResolutionWheel(std::nullopt);
    }
    EXPECT_EQ(changes, 3);
    EXPECT_EQ(defaults.values,
              (std::map<std::string, DefaultsValue>{{"onboarding.completed", true},
                                                    {"engine.pausedByUser", true},
                                                    {"device.manageSettings", false},
                                                    {"updates.automaticChecks", false},
                                                    {"device.reportRateHertz", std::int64_t{500}},
                                                    {"device.leavesWheelUnchanged", true}}));
    AppPreferences relaunched(defaults);
    EXPECT_TRUE(relaunched.hasCompletedOnboarding() && relaunched.isPausedByUser());
    EXPECT_FALSE(relaunched.managesDeviceSettings() || relaunched.automaticUpdateChecks());
    EXPECT_EQ(relaunched.reportRateHertz(), 500);
    EXPECT_EQ(relaunched.highResolutionWheel(), std::nullopt);

    relaunched.setReportRateHertz(std::nullopt);
    relaunched.setHighResolutionWheel(false);
    EXPECT_FALSE(defaults.object("device.reportRateHertz"));
    EXPECT_EQ(defaults.boolean("device.highResolutionWheel"), false);
    EXPECT_EQ(defaults.boolean("device.leavesWheelUnchanged"), false);

    // A write is stored also when the value is what it was.
    defaults.values.clear();
    relaunched.setPausedByUser(true);
    EXPECT_EQ(defaults.boolean("engine.pausedByUser"), true);
}

struct FileUserDefaultsTest : ::testing::Test {
    FileUserDefaults open() { return {files, wallClock, path}; }

    SimulatedFileSystem files;
    SimulatedWallClock wallClock;
};

TEST_F(FileUserDefaultsTest, every_type_comes_back_as_it_was_and_unknown_keys_stay) {
    files.putFile(path, R"({"other": {"list": [1, null]}, "huge": 18446744073709551615})");
    const std::vector<DefaultsValue> values{true, false, std::int64_t{0},      std::int64_t{-7},
                                            1.0,  0.25,  std::string("“text”")};
    FileUserDefaults first = open();
    EXPECT_FALSE(first.object("other") || first.object("huge") || first.problem());
    for (const DefaultsValue& value : values) {
        first.set("key", value);
        EXPECT_EQ(open().object("key"), value) << "index " << value.index();
    }
    first.remove("key");
    EXPECT_FALSE(open().object("key"));
    EXPECT_EQ(files.contents(path),
              "{\n  \"huge\": 18446744073709551615,\n  \"other\": {\n    \"list\": [\n      1,\n"
              "      null\n    ]\n  }\n}\n");
}

TEST_F(FileUserDefaultsTest, a_damaged_file_is_set_aside_and_told) {
    for (const std::string& damaged :
         {std::string("{\"a\": tru"), std::string("[]"), std::string("{\"a\": \"\xff\"}"),
          "{\"a\":" + std::string(100'000, '[') + std::string(100'000, ']') + "}",
          std::string(std::size_t{2} << 20, ' ')}) {
        SCOPED_TRACE(damaged.substr(0, 10));
        files = {};
        files.putFile(path, damaged);
        FileUserDefaults defaults = open();
        EXPECT_FALSE(defaults.object("a"));
        EXPECT_NE(defaults.problem().value().find(asidePath), std::string::npos);
        EXPECT_EQ(files.contents(asidePath), damaged);
        defaults.set("b", true);
        EXPECT_TRUE(defaults.problem()) << "a later success does not undo the loss";
        EXPECT_EQ(open().boolean("b"), true);
        EXPECT_FALSE(open().problem());
    }
}

TEST_F(FileUserDefaultsTest, what_cannot_be_read_or_written_is_told_and_changes_hold_for_the_run) {
    for (const Step step : {Step::lookUp, Step::read, Step::rename, Step::writeTemporary}) {
        files = {};
        files.putFile(path, step == Step::writeTemporary ? "{}" : "damaged");
        const auto before = files.contents(path);
        files.failEvery(step, FileError::Kind::notPermitted);
        FileUserDefaults defaults = open();
        defaults.set("a", true);
        EXPECT_NE(defaults.problem().value().find("Permission denied."), std::string::npos);
        EXPECT_EQ(defaults.boolean("a"), true);
        EXPECT_EQ(files.contents(path), before);

        // Only the write is made up for by the next one.
        files.failEvery(step, std::nullopt);
        defaults.set("b", true);
        EXPECT_EQ(defaults.problem().has_value(), step != Step::writeTemporary);
        EXPECT_EQ(open().boolean("a").has_value(), step == Step::writeTemporary);
    }
}

TEST_F(FileUserDefaultsTest, what_somebody_else_puts_into_the_file_meanwhile_is_not_lost) {
    FileUserDefaults defaults = open();
    defaults.set("a", true);
    files.putFile(path, R"({"a": false, "theirs": 1})");
    defaults.set("b", true);
    EXPECT_EQ(defaults.boolean("a"), true) << "nothing is read anew in this run";
    EXPECT_EQ(open().boolean("a"), false);
    EXPECT_EQ(open().integer("theirs"), 1);
    EXPECT_EQ(open().boolean("b"), true);

    files.putFile(path, "damaged");
    files.failEvery(Step::rename, FileError::Kind::notPermitted);
    defaults.remove("b");
    EXPECT_TRUE(defaults.problem());
    EXPECT_EQ(files.contents(path), "damaged");
    files.failEvery(Step::rename, std::nullopt);
    defaults.set("c", true);
    EXPECT_EQ(files.contents(asidePath), "damaged");
    EXPECT_NE(defaults.problem().value().find(asidePath), std::string::npos);
    EXPECT_EQ(open().boolean("a"), true) << "all that is known takes the damaged file's place";
    EXPECT_FALSE(open().boolean("b"));
}

TEST_F(FileUserDefaultsTest, a_crash_at_any_step_of_a_choice_leaves_the_old_one_or_the_new_one) {
    const std::vector<std::optional<bool>> choices{std::nullopt, false, true};
    for (std::size_t round = 0; round < choices.size() * choices.size() * 2; ++round) {
        const auto old = choices[round % 3];
        const auto next = choices[round / 3 % 3];
        for (std::size_t step = 0;; ++step) {
            files = {};
            FileUserDefaults before = open();
            AppPreferences preferences(before);
            preferences.setHighResolutionWheel(old);
            files.crashAtStep(files.stepCount() + step,
                              round < 9 ? Unsynced::lost : Unsynced::kept);
            preferences.setHighResolutionWheel(next);
            if (!files.hasCrashed()) break;
            files.restart();
            FileUserDefaults after = open();
            const auto found = AppPreferences(after).highResolutionWheel();
            EXPECT_TRUE(found == old || found == next) << "crash at step " << step;
            EXPECT_FALSE(after.problem());
        }
    }
}

}  // namespace
}  // namespace tessara
