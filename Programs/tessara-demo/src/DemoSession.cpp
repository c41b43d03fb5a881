#include "DemoSession.h"

#include <chrono>
#include <string>
#include <thread>

#include <fmt/format.h>

#include "DemoReport.h"
#include "TessaraApp/ConfigStore.h"
#include "TessaraApp/DeviceMonitor.h"
#include "TessaraApp/UpdaterController.h"
#include "TessaraEngine/TessaraEngine.h"

namespace tessara {
namespace {

using std::chrono::milliseconds;

constexpr std::int64_t copyButton = 3;
constexpr std::int64_t panButton = 4;
constexpr std::uint16_t keyC = 8;
constexpr std::uint16_t keySpace = 49;
constexpr std::int64_t canvasDPI = 1200;

/// Two bound buttons, and another resolution for the canvas.
void bindButtons(Config& config) {
    auto& buttons = config.profiles.front().buttons;
    buttons.push_back(
        {.button = copyButton,
         .action = KeyStrokeAction{.code = keyC, .modifiers = ModifierFlags::command}});
    buttons.push_back({.button = panButton, .action = HoldAction{.code = keySpace}});
    config.profiles.back().pointer.dpi = canvasDPI;
}

template <typename Fact>
std::string factText(const std::optional<Fact>& fact) {
    return fact ? fact->description() : "unknown";
}

}  // namespace

bool DemoSession::play() {
    start();
    scroll();
    editDocument();
    pressButtons();
    switchProfiles();
    shiftResolution();
    replug();
    useForeignDevices();
    cutOffTap();
    tellCounts();
    pause();
    revokePermission();
    checkForUpdate();
    quit();
    return audit();
}

void DemoSession::start() {
    stage_.chapter("The program starts, and the mouse is plugged in");
    stage_.onMain([](AppModel& model) { model.start(); });
    stage_.settle();
    stage_.tellMenuBar();
    stage_.host().plugInMouse();
    stage_.waitUntil("the mouse to take the profile's resolution",
                     [this] { return stage_.host().firmware.dpi() == Profile::defaultDPI; });
    stage_.waitForMouse();
    stage_.waitUntilOnMain("the facts of the mouse", [](AppModel& model) {
        return model.deviceMonitor().snapshot().wheelMode.has_value();
    });
    stage_.tellMenuBar();
    stage_.onMain([](AppModel& model) {
        const DeviceMonitor::Snapshot& facts = model.deviceMonitor().snapshot();
        fmt::print("  {}, {}\n", facts.deviceName.value_or("unknown"),
                   factText(facts.protocolVersion));
        fmt::print("  resolution {}; report rate {}\n", factText(facts.dpiRange),
                   factText(facts.reportRate));
        fmt::print("  wheel {}\n", factText(facts.wheelMode));
    });
    stage_.tellResolution();
}

void DemoSession::scroll() {
    stage_.chapter("One click of the wheel");
    stage_.mouse().spin(-1);
    stage_.letGlideEnd();
    stage_.tellReceived();

    stage_.chapter("Four quick clicks, which chain into one glide");
    for (int click = 0; click < 4; ++click) {
        stage_.mouse().spin(-1);
        std::this_thread::sleep_for(milliseconds(60));
    }
    stage_.letGlideEnd();
    stage_.tellReceived();
}

void DemoSession::editDocument() {
    stage_.chapter("The user binds two buttons: the engine has it first, the disk a little later");
    const TimePoint edited = stage_.host().dispatcher.clock().now();
    const auto tell = [&](std::string_view what) {
        const auto passed = stage_.host().dispatcher.clock().now() - edited;
        fmt::print("  {} after {} ms\n", what,
                   std::chrono::duration_cast<milliseconds>(passed).count());
    };
    stage_.onMain([](AppModel& model) { model.editConfig(bindButtons); });
    stage_.waitUntilOnMain("the engine to have the edit", [](AppModel& model) {
        return model.engine()->currentConfig() == model.config();
    });
    tell("in force");
    stage_.waitUntilOnMain("the file", [this](AppModel& model) {
        return stage_.host().files.contents(SimulatedAppHost::configPath) ==
               model.config().encoded().value();
    });
    tell("saved");
}

void DemoSession::pressButtons() {
    stage_.chapter("A button bound to Command-C, one bound to nothing, and motion");
    stage_.mouse().click(copyButton);
    stage_.mouse().click(0);
    stage_.mouse().move(10, 0);
    stage_.settle();
    stage_.tellReceived();
}

void DemoSession::switchProfiles() {
    stage_.chapter("A key is held by a button while another application comes to the front");
    SimulatedDesktop& desktop = stage_.host().desktop;
    stage_.mouse().press(panButton);
    stage_.settle();
    stage_.waitUntil("the key to go down",
                     [&] { return desktop.sessionState().isKeyDown(keySpace); });
    // Releases go to whoever is in front when they come: the switch lets go of the key by itself.
    desktop.workspace().bringToFront(stage_.canvas());
    stage_.waitUntilOnMain("the profile of the canvas", [](AppModel& model) {
        return model.status().activeProfileID == "canvas";
    });
    stage_.mouse().release(panButton);
    stage_.settle();
    stage_.waitUntil("the resolution of the canvas",
                     [this] { return stage_.host().firmware.dpi() == canvasDPI; });
    fmt::print("{}", receivedText("Editor", stage_.editor().takeReceived()));
    fmt::print("{}", receivedText("Canvas", stage_.canvas().takeReceived()));
    stage_.tellResolution();
}

void DemoSession::shiftResolution() {
    constexpr std::int64_t shifted = 400;
    stage_.chapter("The resolution is shifted for as long as a button is held");
    stage_.mouse().press(Profile::sniperButton);
    stage_.waitUntil("the lower resolution",
                     [&] { return stage_.host().firmware.dpi() == shifted; });
    stage_.tellResolution();
    stage_.mouse().release(Profile::sniperButton);
    stage_.waitUntil("the profile's resolution",
                     [this] { return stage_.host().firmware.dpi() == canvasDPI; });
    stage_.tellResolution();
}

void DemoSession::replug() {
    stage_.chapter("The mouse is unplugged in the middle of a request, and plugged in again");
    SimulatedAppHost& host = stage_.host();
    host.firmware.injectFault(SimulatedMouse::Fault::vanish);
    fmt::print("  the request ended with: {}\n", stage_.askResolution());
    host.unplugMouse();
    stage_.waitUntilOnMain("the connection to end", [](AppModel& model) {
        return !model.deviceMonitor().snapshot().connection.isConnected();
    });
    host.plugInMouse();
    fmt::print("  back with its power-on settings: {} DPI\n", host.firmware.dpi());
    stage_.waitForMouse();
    stage_.waitUntil("the settings to be put back",
                     [&] { return host.firmware.dpi() == canvasDPI; });
    stage_.tellResolution();
}

void DemoSession::useForeignDevices() {
    stage_.chapter("Another mouse, a trackpad and a mouse without ids: left alone");
    SimulatedDesktop& desktop = stage_.host().desktop;
    for (SimulatedPointingDevice* device :
         {&desktop.attachForeignMouse(), &desktop.attachTrackpad(),
          &desktop.attachMouseWithoutVendor()}) {
        foreignDevices_.insert(device->id());
        device->spin(2);
        device->swipe(30, 0, 3);
        device->click(copyButton);
        device->move(5, 5);
    }
    stage_.settle();
    stage_.tellReceived();
}

void DemoSession::cutOffTap() {
    stage_.chapter("The system takes the tap out of the stream in the middle of a glide");
    stage_.mouse().spin(-2);
    std::this_thread::sleep_for(milliseconds(60));
    stage_.host().desktop.disableTapsByTimeout();
    stage_.waitUntilOnMain("the tap to be put back", [](AppModel& model) {
        model.engine()->refreshMetrics();
        return model.status().tap.reEnables == 1 && model.status().isTapEnabled;
    });
    stage_.letGlideEnd();
    stage_.tellReceived();
    stage_.mouse().spin(1);
    stage_.letGlideEnd();
    fmt::print("  and one more click\n");
    stage_.tellReceived();
}

void DemoSession::tellCounts() {
    stage_.chapter("What the engine has counted so far");
    stage_.onMain([](AppModel& model) {
        model.engine()->refreshMetrics();
        fmt::print("{}", statusText(model.engine()->status()));
    });
}

void DemoSession::pause() {
    stage_.chapter("The user pauses the program, scrolls, and resumes");
    for (const bool isPaused : {true, false}) {
        stage_.onMain([&](AppModel& model) { model.setPausedByUser(isPaused); });
        stage_.settle();
        stage_.tellMenuBar();
        stage_.mouse().spin(-1);
        stage_.letGlideEnd();
        stage_.tellReceived();
    }
}

void DemoSession::revokePermission() {
    stage_.chapter("A permission is revoked, and granted again");
    SimulatedPermissions& permissions = stage_.host().desktop.permissions();
    const auto waitForHeadline = [this](std::string_view headline) {
        stage_.waitUntilOnMain(fmt::format("\"{}\"", headline), [&](AppModel& model) {
            return model.menuBarStatus().headline == headline;
        });
        stage_.tellMenuBar();
    };
    permissions.revokeAccessibility();
    waitForHeadline("Needs permission to run");
    stage_.mouse().spin(-1);
    stage_.letGlideEnd();
    stage_.tellReceived();
    permissions.grantAccessibility();
    waitForHeadline("Active");
    stage_.mouse().spin(-1);
    stage_.letGlideEnd();
    stage_.tellReceived();
}

void DemoSession::checkForUpdate() {
    stage_.chapter("The user looks for updates");
    stage_.onMain([this](AppModel& model) {
        stage_.host().updater.offer = {UpdaterState::Available{
            .release = {.version = "0.2.0", .build = 2}, .lengthInBytes = 1'000'000}};
        UpdaterController& updater = model.updater();
        updater.checkForUpdates();
        const UpdaterState state = updater.state();
        const auto* available = std::get_if<UpdaterState::Available>(&state.value);
        fmt::print("  this is {}, and the feed has {}\n", updater.currentVersionDescription(),
                   available ? available->release.version : "nothing newer");
        if (!available) stage_.fail();
        updater.dismissUpdate();
    });
}

void DemoSession::quit() {
    stage_.chapter("The user quits, a moment after an edit");
    stage_.onMain([](AppModel& model) {
        model.editConfig([](Config& config) { config.profiles.front().name = "Everywhere"; });
    });
    stage_.endApplication();
    stage_.onMain([this](AppModel& model) {
        const bool isSaved = stage_.host().files.contents(SimulatedAppHost::configPath) ==
                             model.config().encoded().value();
        fmt::print("  the edit is {}\n", isSaved ? "saved" : "lost");
        if (!isSaved) stage_.fail();
    });
    stage_.mouse().spin(1);
    stage_.settle();
    fmt::print("  a click of the wheel without the program\n");
    stage_.tellReceived();
}

bool DemoSession::audit() {
    stage_.chapter("What is left");
    SimulatedDesktop& desktop = stage_.host().desktop;
    const auto keys = desktop.sessionState().keysDown().size();
    const auto buttons = desktop.sessionState().buttonsDown().size();
    std::size_t foreign = 0;
    std::size_t touched = 0;
    for (const SimulatedPassage& passage : desktop.events().journal()) {
        if (passage.isPosted || !foreignDevices_.contains(passage.entered.hidEventReference)) {
            continue;
        }
        ++foreign;
        if (passage.delivered != passage.entered) ++touched;
    }
    fmt::print("  {} keys and {} buttons held; {} of {} events of other devices touched\n", keys,
               buttons, touched, foreign);
    return stage_.isComplete() && keys == 0 && buttons == 0 && foreign > 0 && touched == 0;
}

}  // namespace tessara
