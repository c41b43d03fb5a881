#include <functional>
#include <memory>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "Platform/Simulated/SimulatedFileSystem.h"
#include "Platform/Simulated/SimulatedWallClock.h"
#include "TessaraApp/ConfigStore.h"
#include "TessaraCore/Config.h"

namespace tessara {
namespace {

using Problem = ConfigStore::Problem;
using Step = SimulatedFileSystem::Step;
using Unsynced = SimulatedFileSystem::UnsyncedWork;

const std::string path = "/home/user/.local/share/tessara/config.json";
const std::string previousPath = "/home/user/.local/share/tessara/config.previous.json";
const std::string archivePath =
    "/home/user/.local/share/tessara/config-2026-01-02-000000.unreadable.json";

Config named(const std::string& name) {
    Config config = Config::default_();
    config.profiles.front().name = name;
    return config;
}

std::string bytesOf(const Config& config) {
    return config.encoded().value();
}

class ConfigStoreTest : public ::testing::Test {
  protected:
    std::unique_ptr<ConfigStore> makeStore() {
        auto made = std::make_unique<ConfigStore>(files, wallClock, path);
        QObject::connect(made.get(), &ConfigStore::problemChanged, [this] { ++problemChanges; });
        QObject::connect(made.get(), &ConfigStore::lastSaveErrorChanged,
                         [this] { ++saveErrorChanges; });
        return made;
    }

    SimulatedFileSystem files;
    SimulatedWallClock wallClock;
    int problemChanges = 0;
    int saveErrorChanges = 0;
    std::unique_ptr<ConfigStore> store = makeStore();
};

TEST_F(ConfigStoreTest, a_first_start_writes_nothing_and_what_is_saved_comes_back) {
    EXPECT_EQ(store->load(), Config::default_());
    EXPECT_TRUE(files.files().empty());

    store->save(named("one"));
    EXPECT_EQ(files.files(), std::vector{path}) << "there was no version before this one";
    EXPECT_EQ(makeStore()->load(), named("one"));

    store->save(named("two"));
    EXPECT_EQ(makeStore()->load(), named("two"));
    EXPECT_EQ(files.contents(previousPath), bytesOf(named("one")));

    store->save(named("two"));
    EXPECT_EQ(files.contents(previousPath), bytesOf(named("one"))) << "nothing was replaced";
    EXPECT_EQ(problemChanges + saveErrorChanges, 0);
}

TEST_F(ConfigStoreTest, a_file_that_cannot_be_used_is_told_and_left_alone_until_the_user_decides) {
    const std::string running =
        "Tessara is running on its factory defaults for now and will not save over the file. ";
    const std::string shape = running + "The file is not in a shape Tessara recognises (";
    const std::string unread = "Your Tessara settings file could not be read";
    const std::string unopened = "Your Tessara settings file could not be opened";
    const std::string quotedPath = running + "“" + path + "”: ";

    const auto expectLeftAlone = [&](const std::string& headline, const std::string& explanation) {
        store = makeStore();
        const auto before = files.contents(path);
        problemChanges = 0;
        EXPECT_EQ(store->load(), Config::default_());
        ASSERT_TRUE(store->problem());
        EXPECT_EQ(store->problem()->headline(), headline);
        EXPECT_TRUE(store->problem()->explanation().starts_with(explanation))
            << store->problem()->explanation();
        store->save(named("new"));
        EXPECT_EQ(store->load(), Config::default_());
        EXPECT_EQ(problemChanges, 1);
        EXPECT_EQ(saveErrorChanges, 0);
        EXPECT_EQ(files.contents(path), before);
        EXPECT_LE(files.files().size(), 1U);
    };
    const std::vector<std::tuple<std::string, std::string, std::string>> contents{
        {"", unread, shape},
        {"{\"schemaVersion\": 1, \"\xff\": 2}", unread, shape},
        {"[]", unread, shape + "root of the config must be a JSON object)."},
        {R"({"schemaVersion":0})", unread, shape + "no migration registered from schema version 0"},
        {R"({"schemaVersion":1,"isEnabled":true})", unread, shape},
        {R"({"schemaVersion":2,"profiles":7})",
         "Your settings were written by a newer version of Tessara (format 2; this build "
         "understands 1)",
         "Tessara is running on its factory defaults and will not save over the file, because"},
        {std::string(ConfigStore::maximumFileSizeInBytes + 1, ' '), unopened,
         quotedPath + "File too large."},
    };
    for (const auto& [text, headline, explanation] : contents) {
        SCOPED_TRACE(text.substr(0, 40));
        files.putFile(path, text);
        expectLeftAlone(headline, explanation);
    }
    files = {};
    files.putFolder(path);
    expectLeftAlone(unopened, quotedPath + "Is a directory.");
    files = {};
    files.putFile(path, bytesOf(named("mine")));
    for (const Step step : {Step::lookUp, Step::read}) {
        files.failEvery(step, FileError::Kind::notPermitted);
        expectLeftAlone(unopened, quotedPath + "Permission denied.");
        files.failEvery(step, std::nullopt);
    }
    // The cause has gone, and the settings are back.
    store->clearProblem();
    EXPECT_EQ(store->load(), named("mine"));
    EXPECT_FALSE(store->problem());
}

TEST_F(ConfigStoreTest, the_user_may_move_a_bad_file_aside_and_it_is_never_lost) {
    files.putFile(path, "first");
    (void)store->load();
    files.failEvery(Step::rename, FileError::Kind::notPermitted);
    EXPECT_FALSE(store->startFresh());
    EXPECT_TRUE(store->problem()) << "saving must stay blocked";
    EXPECT_EQ(store->lastSaveError(), "“" + path + "”: Permission denied.");

    files.failEvery(Step::rename, std::nullopt);
    EXPECT_TRUE(store->startFresh());
    EXPECT_FALSE(store->problem());
    EXPECT_EQ(store->archivedFileURL()->toLocalFile().toStdString(), archivePath);
    store->save(named("new"));
    EXPECT_FALSE(store->lastSaveError());

    // Another one within the same second finds its name taken.
    files.putFile(path, "second");
    (void)store->load();
    EXPECT_FALSE(store->startFresh());
    EXPECT_EQ(store->lastSaveError(), "“" + archivePath + "”: File exists.");
    EXPECT_EQ(files.contents(archivePath), "first");
    EXPECT_EQ(files.contents(path), "second");

    // A file that has gone meanwhile leaves nothing to move.
    ASSERT_TRUE(files.remove(path));
    EXPECT_TRUE(store->startFresh());
    EXPECT_FALSE(store->problem());
    EXPECT_EQ(store->archivedFileURL()->toLocalFile().toStdString(), archivePath);
}

TEST_F(ConfigStoreTest, a_save_that_fails_leaves_the_old_file_and_the_next_one_tries_again) {
    (void)store->load();
    store->save(named("old"));
    const std::vector<std::pair<Step, FileError::Kind>> failures{
        {Step::createTemporary, FileError::Kind::notPermitted},
        {Step::writeTemporary, FileError::Kind::noSpace},
        {Step::read, FileError::Kind::other},
        {Step::lookUp, FileError::Kind::other},
    };
    for (const auto& [step, kind] : failures) {
        files.failEvery(step, kind);
        store->save(named("new"));
        files.failEvery(step, std::nullopt);
        EXPECT_TRUE(store->lastSaveError());
        EXPECT_EQ(files.contents(path), bytesOf(named("old")));
    }
    store->save(named("new"));
    EXPECT_FALSE(store->lastSaveError());
    EXPECT_EQ(makeStore()->load(), named("new"));

    // Where the version before cannot be kept, the settings are saved all the same.
    files = {};
    files.putFile(path, bytesOf(named("old")));
    files.putFolder(previousPath);
    store->save(named("new"));
    EXPECT_FALSE(store->lastSaveError());
    EXPECT_EQ(makeStore()->load(), named("new"));
}

TEST_F(ConfigStoreTest, what_another_program_put_in_the_files_place_survives_a_save) {
    (void)store->load();
    store->save(named("mine"));
    files.putFile(path, R"({"schemaVersion":2})");
    store->save(named("new"));
    EXPECT_EQ(files.contents(archivePath), R"({"schemaVersion":2})");
    EXPECT_EQ(store->archivedFileURL()->toLocalFile().toStdString(), archivePath);
    EXPECT_EQ(makeStore()->load(), named("new"));

    files.putFile(path, "{");
    store->save(named("newer"));
    EXPECT_EQ(store->lastSaveError(), "“" + archivePath + "” is already there.");
    EXPECT_EQ(files.contents(path), "{");
}

TEST_F(ConfigStoreTest, a_crash_at_any_step_leaves_the_old_document_or_the_new_one_whole) {
    const auto walk = [this](const std::string& text, const std::function<void()>& action,
                             const std::function<void()>& expectWhole) {
        const auto arrange = [&] {
            files = {};
            files.putFile(previousPath, bytesOf(named("older")));
            files.putFile(path, text);
            store = makeStore();
            (void)store->load();
            return files.stepCount();
        };
        const std::size_t first = arrange();
        action();
        const std::size_t end = files.stepCount();
        ASSERT_GT(end, first);
        for (std::size_t step = first; step < end; ++step) {
            for (const Unsynced unsynced : {Unsynced::lost, Unsynced::kept}) {
                SCOPED_TRACE(::testing::Message() << "crash at step " << step - first);
                arrange();
                files.crashAtStep(step, unsynced);
                action();
                EXPECT_TRUE(files.hasCrashed());
                files.restart();
                expectWhole();
            }
        }
    };
    const auto save = [this] { store->save(named("new")); };
    walk(bytesOf(named("old")), save, [this] {
        const Config found = makeStore()->load();
        const auto previous = files.contents(previousPath);
        const bool isKept = previous == bytesOf(named("old"));
        EXPECT_TRUE(isKept || previous == bytesOf(named("older")));
        EXPECT_TRUE(found == named("old") || (found == named("new") && isKept));
    });
    const auto startFresh = [this] { (void)store->startFresh(); };
    walk("bad", startFresh, [this] {
        EXPECT_TRUE((files.contents(path) == "bad") != (files.contents(archivePath) == "bad"));
    });
}

TEST_F(ConfigStoreTest, no_mutated_document_is_lost_or_overwritten_unless_it_still_reads) {
    Config small = Config::default_();
    small.profiles.pop_back();
    small.ruleSet.rules.clear();
    const std::string original = bytesOf(small);
    Config next = small;
    next.isEnabled = false;
    const std::string nextBytes = bytesOf(next);
    std::mt19937 random(20260102);
    const auto below = [&](std::size_t end) { return random() % end; };
    int refused = 0;
    for (int round = 0; round < 10'000; ++round) {
        std::string text = original;
        const std::size_t place = below(text.size());
        const std::size_t length = below(40);
        if (below(2) == 0) text[place] = static_cast<char>(below(256));
        if (below(2) == 0) text.replace(place, length, original, below(text.size()), below(40));
        if (below(8) == 0) text.resize(place);
        files = {};
        files.putFile(path, text);
        ConfigStore mutated(files, wallClock, path);
        const Config found = mutated.load();
        mutated.save(next);
        if (mutated.problem()) {
            ++refused;
            ASSERT_EQ(found, Config::default_());
            ASSERT_FALSE(mutated.problem()->explanation().empty());
            ASSERT_EQ(files.contents(path), text);
        } else if (text != nextBytes) {
            ASSERT_EQ(files.contents(previousPath), text);
        }
    }
    EXPECT_GT(refused, 4'000);
    EXPECT_LT(refused, 10'000);
}

}  // namespace
}  // namespace tessara
