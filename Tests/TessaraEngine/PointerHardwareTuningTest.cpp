#include <functional>

#include <gmock/gmock.h>

#include "Platform/Simulated/SimulatedFileSystem.h"
#include "Platform/Simulated/SimulatedUserDefaults.h"
#include "Platform/Simulated/SimulatedWallClock.h"
#include "TessaraEngine/FakePointerPropertyBackend.h"
#include "TessaraEngine/PointerHardwareTuning.h"

namespace tessara {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Reason = PointerTuningRestoreReason;
using Unsynced = SimulatedFileSystem::UnsyncedWork;
using Write = PointerPropertyWrite;

constexpr std::int64_t fixedOne = 65536;
constexpr std::uint64_t mouseID = 9;
constexpr const char* capturePath = "/home/support/pointer-hardware-capture.json";
constexpr const char* resolution = PointerPropertyKey::resolution;
constexpr const char* acceleration = PointerPropertyKey::mouseAcceleration;

PointerServiceIdentity mouseService(std::uint64_t registryID) {
    return {.registryID = registryID,
            .vendorID = HIDPPDeviceMatch::g502X.vendorID,
            .productID = HIDPPDeviceMatch::g502X.productID,
            .product = "Gaming Mouse",
            .primaryUsagePage = 1,
            .primaryUsage = 2};
}

/// A system whose properties outlive the program, and a program that may die at a write. No write
/// but of an original is taken while the file does not hold the originals.
class MortalBackend final : public PointerPropertyBackend {
  public:
    explicit MortalBackend(SimulatedFileSystem& files) : files_(files) {
        system.identities = {mouseService(mouseID)};
        system.values[mouseID] = {{resolution, 400 * fixedOne}, {acceleration, 45000}};
    }

    [[nodiscard]] bool canWrite() const override { return system.canWrite(); }
    std::vector<PointerServiceIdentity> services() override { return system.services(); }
    std::optional<std::int64_t> readNumber(const std::string& key, std::uint64_t id) override {
        return system.readNumber(key, id);
    }
    std::optional<std::string> readString(const std::string& key, std::uint64_t id) override {
        return system.readString(key, id);
    }
    Write writeNumber(const std::string& key, std::int64_t value, std::uint64_t id) override {
        if (files_.hasCrashed()) return Write::refused;
        if (dieAtWrite && writeCount++ == *dieAtWrite) {
            // The first thing that a dead program does is nothing.
            files_.crashAtStep(files_.stepCount(), Unsynced::lost);
            (void)files_.exists(capturePath);
            return Write::refused;
        }
        if (value != originals.at(id).at(key)) {
            const auto file = files_.contents(capturePath);
            const auto capture = file ? PointerTuningCapture::decoded(*file) : std::nullopt;
            EXPECT_TRUE(capture && capture->service.registryID == id &&
                        (key == resolution ? capture->resolution : capture->acceleration) ==
                            originals.at(id).at(key))
                << "no way back from " << key;
        }
        return system.writeNumber(key, value, id);
    }
    [[nodiscard]] bool isOriginal() const { return system.values == originals; }

    FakePointerPropertyBackend system;
    std::map<std::uint64_t, std::map<std::string, std::int64_t>> originals{
        {mouseID, {{resolution, 400 * fixedOne}, {acceleration, 45000}}}};
    std::optional<std::size_t> dieAtWrite;
    std::size_t writeCount = 0;

  private:
    SimulatedFileSystem& files_;
};

/// A machine with the mouse plugged in, on which the program runs once or several times.
struct Machine {
    SimulatedFileSystem files;
    SimulatedUserDefaults defaults;
    SimulatedWallClock wallClock;
    MortalBackend backend{files};
    std::optional<std::string> path = capturePath;

    std::unique_ptr<PointerHardwareTuning> startProgram() {
        return std::make_unique<PointerHardwareTuning>(
            PointerHardwareTuning::Environment{.backend = backend,
                                               .defaults = defaults,
                                               .files = files,
                                               .wallClock = wallClock,
                                               .capturePath = path},
            std::vector{HIDPPDeviceMatch::g502X});
    }
    std::int64_t live(const char* key) { return backend.system.values[mouseID][key]; }
    [[nodiscard]] bool hasFile() const { return files.contents(capturePath).has_value(); }
};

void applyAt(PointerHardwareTuning& tuning, std::int64_t dpi) {
    tuning.request({.isPermitted = true, .deviceDPI = dpi});
}

TEST(PointerHardwareTuning, corrects_both_figures_and_puts_them_back) {
    Machine machine;
    const auto tuning = machine.startProgram();
    applyAt(*tuning, 1600);
    EXPECT_EQ(machine.live(resolution), 104857600);
    EXPECT_EQ(machine.live(acceleration), -65536);
    PointerTuningStatus status = tuning->status();
    EXPECT_TRUE(status.isSupported && status.isEnabled && status.isPermitted && status.isApplied);
    EXPECT_EQ(status.target, mouseService(mouseID));
    EXPECT_EQ(status.overestimateFactor(), 4.0);
    EXPECT_EQ(status.lastReadBackResolution, 104857600);
    const auto taken = status.capture;
    ASSERT_TRUE(taken);
    EXPECT_EQ(taken->capturedAt, machine.wallClock.moment);
    EXPECT_EQ(taken->accelerationValue(), 45000.0 / fixedOne);

    // Again with another figure: the originals stay as first taken.
    machine.wallClock.moment += std::chrono::hours(1);
    tuning->deviceDPIReported(800);
    EXPECT_EQ(machine.live(resolution), 800 * fixedOne);
    EXPECT_EQ(tuning->status().capture, taken);
    const std::size_t writes = machine.backend.system.writeLog.size();
    for (const std::optional<std::int64_t> nothingNew :
         {std::optional<std::int64_t>(800), std::optional<std::int64_t>(0),
          std::optional<std::int64_t>(-1), std::optional<std::int64_t>()})
        tuning->deviceDPIReported(nothingNew);
    EXPECT_EQ(machine.backend.system.writeLog.size(), writes);

    tuning->request({.isPermitted = false, .deviceDPI = {}});
    EXPECT_TRUE(machine.backend.isOriginal());
    EXPECT_FALSE(machine.hasFile() || tuning->status().capture || tuning->status().isApplied);
    EXPECT_EQ(tuning->status().lastRestoreReason, Reason::notRequested);
    tuning->request({.isPermitted = true, .deviceDPI = {}});
    EXPECT_EQ(machine.live(resolution), 800 * fixedOne) << "the last figure stands";
    EXPECT_EQ(tuning->status().lastRestoreReason, std::nullopt);
}

TEST(PointerHardwareTuning, writes_only_what_it_can_put_back_and_says_what_it_left) {
    struct Row {
        const char* name;
        std::function<void(Machine&)> prepare;
        std::optional<Write> resolutionWrite, accelerationWrite;
        bool isApplied;
        const char* error;
    };
    const auto refuse = [](std::set<std::string> keys) {
        return [keys](Machine& machine) { machine.backend.system.keysRefusedEverywhere = keys; };
    };
    const auto lack = [](const char* key) {
        return [key](Machine& machine) { machine.backend.system.values[mouseID].erase(key); };
    };
    const Row rows[] = {
        {"acceleration refused", refuse({acceleration}), Write::eventSystem, Write::refused, true,
         "macOS refused to change HIDMouseAcceleration on this device"},
        {"all refused", refuse({acceleration, resolution}), Write::refused, Write::refused, false,
         "macOS refused to change HIDMouseAcceleration on this device"},
        {"only the second choice takes it",
         [](Machine& machine) {
             machine.backend.system.keysRefusedByEventSystem = {resolution, acceleration};
         },
         Write::registryEntry, Write::registryEntry, true, ""},
        {"unreadable acceleration", lack(acceleration), Write::eventSystem, Write::skipped, true,
         "this device carries no per-device HIDMouseAcceleration to read, so Tessara left it alone "
         "— a value it cannot put back is a value it will not write"},
        {"unreadable resolution", lack(resolution), Write::skipped, Write::eventSystem, true, ""},
        {"no place for the file",
         [](Machine& machine) { machine.path.reset(); },
         {},
         {},
         false,
         "could not save the original values to disk — nothing was written"},
        {"nothing attached",
         [](Machine& machine) { machine.backend.system.identities.clear(); },
         {},
         {},
         false,
         "no matching pointer collection is attached"},
        {"no mouse but its keyboard",
         [](Machine& machine) { machine.backend.system.identities[0].primaryUsage = 6; },
         {},
         {},
         false,
         "no matching pointer collection is attached"},
        {"another mouse",
         [](Machine& machine) { machine.backend.system.identities[0].vendorID.reset(); },
         {},
         {},
         false,
         "no matching pointer collection is attached"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Machine machine;
        row.prepare(machine);
        const auto before = machine.backend.system.values;
        const auto tuning = machine.startProgram();
        applyAt(*tuning, 1600);
        const PointerTuningStatus& status = tuning->status();
        EXPECT_EQ(status.resolutionWrite, row.resolutionWrite);
        EXPECT_EQ(status.accelerationWrite, row.accelerationWrite);
        EXPECT_EQ(status.isApplied, row.isApplied);
        EXPECT_EQ(status.lastError.value_or(""), row.error);
        EXPECT_EQ(machine.hasFile(), row.isApplied) << "with nothing changed nothing is kept";
        EXPECT_EQ(status.capture.has_value(), row.isApplied);
        machine.backend.system.keysRefusedEverywhere.clear();
        tuning->restore(Reason::engineStopped);
        EXPECT_EQ(machine.backend.system.values, before);
    }
}

TEST(PointerHardwareTuning, a_refused_restore_keeps_the_originals_until_they_are_taken) {
    Machine machine;
    auto tuning = machine.startProgram();
    applyAt(*tuning, 1600);
    machine.backend.system.keysRefusedEverywhere = {resolution, acceleration};
    tuning->request({.isPermitted = false, .deviceDPI = {}});
    EXPECT_TRUE(tuning->status().restoreFailed && tuning->status().isApplied);
    EXPECT_THAT(tuning->status().restoreFailedKeys, ElementsAre(resolution, acceleration));
    EXPECT_EQ(tuning->status().lastError,
              "macOS refused to put HIDPointerResolution and HIDMouseAcceleration back on this "
              "device. Tessara's values are still in force and the saved originals have been kept "
              "— they will be tried again, and on the next launch.");
    machine.backend.system.keysRefusedEverywhere.clear();
    tuning->deviceBecameReady();
    EXPECT_TRUE(machine.backend.isOriginal());
    EXPECT_FALSE(tuning->status().isApplied || tuning->status().lastError);

    applyAt(*tuning, 1600);
    machine.backend.system.keysRefusedEverywhere = {resolution, acceleration};
    tuning->restore(Reason::engineStopped);
    tuning = machine.startProgram();
    EXPECT_TRUE(machine.hasFile());
    EXPECT_TRUE(tuning->status().recoveredStrandedCapture && tuning->status().restoreFailed);
    EXPECT_THAT(*tuning->status().lastError,
                HasSubstr("put HIDPointerResolution and HIDMouseAcceleration back yet. The saved "
                          "originals have been kept and will be tried again."));
    applyAt(*tuning, 1600);
    EXPECT_EQ(tuning->status().capture->resolution, 400 * fixedOne) << "not the corrected one";
    EXPECT_FALSE(tuning->status().restoreFailed) << "of the last correction";

    machine.backend.system.keysRefusedEverywhere.clear();
    tuning = machine.startProgram();
    EXPECT_TRUE(machine.backend.isOriginal());
    EXPECT_TRUE(tuning->status().recoveredStrandedCapture);
    EXPECT_EQ(tuning->status().lastRestoreReason, Reason::strandedCaptureRecovered);
    EXPECT_FALSE(tuning->status().restoreFailed || machine.hasFile());
    tuning = machine.startProgram();
    EXPECT_FALSE(tuning->status().recoveredStrandedCapture);
}

TEST(PointerHardwareTuning, a_death_at_any_moment_leaves_the_next_start_a_way_back) {
    const auto session = [](Machine& machine) {
        const auto tuning = machine.startProgram();
        applyAt(*tuning, 1600);
        tuning->deviceDPIReported(800);
        tuning->deviceBecameReady();
        tuning->restore(Reason::engineStopped);
        applyAt(*tuning, 1200);
        tuning->setEnabled(false);
        tuning->setEnabled(true);
    };
    Machine whole;
    session(whole);
    const std::size_t fileSteps = whole.files.stepCount();
    const std::size_t writes = whole.backend.system.writeLog.size();
    ASSERT_GT(fileSteps, 15U);
    ASSERT_GT(writes, 10U);

    const auto expectAWayBack = [&](const std::function<void(Machine&)>& doom) {
        for (const bool isRefusedAtFirst : {false, true}) {
            Machine machine;
            doom(machine);
            session(machine);
            machine.files.restart();
            machine.backend.dieAtWrite.reset();
            machine.defaults.values.clear();
            if (isRefusedAtFirst && !machine.backend.isOriginal()) {
                machine.backend.system.keysRefusedEverywhere = {resolution, acceleration};
                const auto refused = machine.startProgram();
                EXPECT_TRUE(machine.hasFile() && refused->status().restoreFailed);
                EXPECT_TRUE(refused->status().lastError);
                machine.backend.system.keysRefusedEverywhere.clear();
            }
            const bool wasOriginal = machine.backend.isOriginal();
            const auto next = machine.startProgram();
            EXPECT_TRUE(machine.backend.isOriginal());
            EXPECT_TRUE(wasOriginal || next->status().recoveredStrandedCapture);
            EXPECT_FALSE(next->status().capture || machine.hasFile());
        }
    };
    for (std::size_t step = 0; step < fileSteps; ++step) {
        for (const Unsynced unsynced : {Unsynced::lost, Unsynced::kept}) {
            SCOPED_TRACE(::testing::Message() << "death at file step " << step);
            expectAWayBack([&](Machine& m) { m.files.crashAtStep(step, unsynced); });
        }
        SCOPED_TRACE(::testing::Message() << "file step " << step << " fails");
        expectAWayBack([&](Machine& m) { m.files.failAtStep(step, FileError::Kind::noSpace); });
    }
    for (std::size_t write = 0; write < writes; ++write) {
        SCOPED_TRACE(::testing::Message() << "death at write " << write);
        expectAWayBack([&](Machine& m) { m.backend.dieAtWrite = write; });
    }
}

TEST(PointerHardwareTuning, no_originals_are_lost_where_mice_come_and_go) {
    Machine machine;
    auto& system = machine.backend.system;
    const auto tuning = machine.startProgram();
    applyAt(*tuning, 1600);

    // A key that the device names later has no original on disk.
    system.strings[mouseID][PointerPropertyKey::accelerationType] = "HIDOther";
    system.values[mouseID]["HIDOther"] = 7;
    applyAt(*tuning, 900);
    EXPECT_EQ(machine.live("HIDOther"), 7);
    system.values[mouseID].erase("HIDOther");

    // A second one beside it becomes the target: the first gets its own figures back.
    constexpr std::uint64_t secondID = 5;
    system.identities.push_back(mouseService(secondID));
    system.values[secondID] = {{resolution, 300 * fixedOne}, {acceleration, 30000}};
    machine.backend.originals[secondID] = system.values[secondID];
    system.keysRefusedEverywhere = {acceleration};
    applyAt(*tuning, 1600);
    EXPECT_EQ(tuning->status().capture->service.registryID, mouseID) << "kept while refused";
    EXPECT_TRUE(tuning->status().restoreFailed);
    system.keysRefusedEverywhere.clear();
    applyAt(*tuning, 1600);
    EXPECT_EQ(tuning->status().target, mouseService(secondID));
    EXPECT_EQ(system.values[mouseID], machine.backend.originals[mouseID]);
    EXPECT_EQ(system.values[secondID][resolution], 1600 * fixedOne);

    // Plugged in anew they are others; what was kept of the old one goes with it.
    constexpr std::uint64_t thirdID = 20;
    system.identities = {mouseService(thirdID)};
    system.values = {{thirdID, {{resolution, 400 * fixedOne}, {acceleration, 45000}}}};
    machine.backend.originals[thirdID] = system.values[thirdID];
    system.writeLog.clear();
    tuning->deviceBecameReady();
    EXPECT_EQ(tuning->status().capture->service.registryID, thirdID);
    for (const auto& write : system.writeLog)
        EXPECT_EQ(write.registryID, thirdID);

    // The last one goes while it is corrected.
    tuning->setDeviceMatches({});
    applyAt(*tuning, 1600);
    EXPECT_EQ(tuning->status().lastRestoreReason, Reason::targetDisappeared);
    EXPECT_EQ(tuning->status().target, std::nullopt);
    EXPECT_EQ(system.values[thirdID], machine.backend.originals[thirdID]);
}

TEST(PointerHardwareTuning, the_users_switch_is_kept_and_obeyed) {
    Machine machine;
    auto tuning = machine.startProgram();
    tuning->setEnabled(false);
    EXPECT_EQ(tuning->status().lastRestoreReason, Reason::switchedOff);
    applyAt(*tuning, 1600);
    tuning->deviceBecameReady();
    tuning->deviceDPIReported(900);
    EXPECT_TRUE(machine.backend.isOriginal());
    tuning = machine.startProgram();
    EXPECT_FALSE(tuning->isEnabled());
    applyAt(*tuning, 1600);
    tuning->setEnabled(true);
    EXPECT_FALSE(machine.backend.isOriginal());
    tuning->restore(Reason::engineStopped);

    machine.backend.system.isWritable = false;
    tuning = machine.startProgram();
    applyAt(*tuning, 1600);
    EXPECT_FALSE(tuning->status().isSupported || tuning->status().isApplied);
    EXPECT_TRUE(machine.backend.isOriginal());
}

TEST(PointerHardwareTuning, a_file_that_is_no_capture_of_this_form_is_left_alone) {
    const std::string valid = [] {
        Machine machine;
        const auto tuning = machine.startProgram();
        applyAt(*tuning, 1600);
        return *machine.files.contents(capturePath);
    }();
    EXPECT_THAT(valid, HasSubstr(R"("capturedAt": "2026-01-02T00:00:00Z")"));
    const auto with = [&](const std::string& what, const std::string& by) {
        std::string text = valid;
        return text.replace(text.find(what), what.size(), by);
    };
    const std::string rejected[] = {"",
                                    "{}",
                                    valid.substr(0, valid.size() / 2),
                                    with(R"("schema": 1)", R"("schema": 2)"),
                                    with("2026-01-02T", "2026-02-31T"),
                                    with("00:00:00Z", "00:00:00 ")};
    for (const std::string& text : rejected) {
        SCOPED_TRACE(text);
        Machine machine;
        machine.files.putFile(capturePath, text);
        const auto tuning = machine.startProgram();
        EXPECT_FALSE(tuning->status().recoveredStrandedCapture);
        EXPECT_EQ(machine.files.contents(capturePath), text);
        EXPECT_THAT(machine.backend.system.writeLog, IsEmpty());
    }
}

TEST(PointerHardwareTuning, a_reading_shows_the_live_values_and_writes_nothing) {
    Machine machine;
    machine.backend.system.strings[mouseID][PointerPropertyKey::accelerationType] = "HIDOther";
    machine.backend.system.values[mouseID]["HIDOther"] = 7;
    const auto tuning = machine.startProgram();
    tuning->refreshReading();
    ASSERT_TRUE(tuning->status().currentReading);
    EXPECT_EQ(tuning->status().currentReading->accelerationKey, "HIDOther");
    EXPECT_EQ(tuning->status().currentReading->resolutionCPI(), 400.0);
    EXPECT_EQ(
        tuning->readBack(),
        (std::pair<std::optional<std::int64_t>, std::optional<std::int64_t>>(400 * fixedOne, 7)));
    EXPECT_EQ(tuning->candidateServices().front().label(),
              "Gaming Mouse [0x046D:0xC099] usage 1/2 registry 0x9");
    EXPECT_EQ(PointerServiceIdentity{}.label().substr(0, 9), "(unnamed)");
    EXPECT_FALSE(machine.hasFile());
    machine.backend.system.identities.clear();
    tuning->refreshReading();
    EXPECT_EQ(tuning->currentReading(), std::nullopt);
    EXPECT_THAT(machine.backend.system.writeLog, IsEmpty());
}

}  // namespace
}  // namespace tessara
