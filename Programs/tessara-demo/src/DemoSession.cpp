#include "DemoSession.h"

#include <thread>
#include <utility>

#include <asio/any_io_executor.hpp>
#include <asio/co_spawn.hpp>
#include <asio/use_future.hpp>
#include <fmt/format.h>

#include "DemoReport.h"
#include "HIDPlusPlus/HIDPPDevice.h"
#include "TessaraEngine/CGEventPoster.h"
#include "TessaraEngine/HIDPPControlling.h"

namespace tessara {
namespace {

using std::chrono::milliseconds;

constexpr std::int64_t copyButton = 3;
constexpr std::int64_t panButton = 4;
constexpr std::uint16_t keyC = 8;
constexpr std::uint16_t keySpace = 49;
constexpr std::int64_t canvasDPI = 1200;

/// The factory document with two bound buttons, and another resolution for the canvas.
Config demoConfig() {
    Config config = Config::default_();
    auto& buttons = config.profiles.front().buttons;
    buttons.push_back(
        {.button = copyButton,
         .action = KeyStrokeAction{.code = keyC, .modifiers = ModifierFlags::command}});
    buttons.push_back({.button = panButton, .action = HoldAction{.code = keySpace}});
    config.profiles.back().pointer.dpi = canvasDPI;
    return config;
}

}  // namespace

DemoSession::DemoSession()
    : mainQueue_(dispatcher_.makeQueue("ai.tessara.main", QualityOfService::userInteractive)),
      desktop_(dispatcher_),
      editor_(desktop_.workspace().install("org.example.editor", "Editor")),
      canvas_(desktop_.workspace().install("com.figma.Desktop", "Canvas")),
      runLoop_(std::make_shared<HIDPPRunLoop>(dispatcher_, transport_)),
      device_(std::make_shared<HIDPPDevice>(HIDPPDeviceMatch::g502X, runLoop_)) {
    desktop_.workspace().bringToFront(editor_);
    TessaraEngine::Options options;
    options.deviceMatches = {HIDPPDeviceMatch::g502X};
    options.poster =
        std::make_shared<CGEventPoster>(desktop_.eventServices(), CGEventTapLocation::session);
    options.hidControl = std::make_shared<LiveHIDPPControl>(device_);
    onMain([&] {
        engine_ = std::make_shared<TessaraEngine>(demoConfig(), std::move(options), platform());
    });
}

DemoSession::~DemoSession() {
    deviceEvents_.cancel();
    onMain([this] { engine_.reset(); });
}

EnginePlatform DemoSession::platform() {
    return {.dispatcher = dispatcher_,
            .mainQueue = mainQueue_,
            .eventTaps = desktop_.taps(),
            .events = desktop_.eventServices(),
            .cursor = &desktop_.displays(),
            .hidEvents = desktop_.devices(),
            .hidRunLoop = runLoop_,
            .permissions = desktop_.permissions(),
            .workspace = desktop_.workspace(),
            .shortcuts = desktop_.shortcuts()};
}

bool DemoSession::play() {
    plugIn();
    scroll();
    pressButtons();
    switchProfiles();
    shiftResolution();
    replug();
    useForeignDevices();
    cutOffTap();
    stop();
    return audit();
}

void DemoSession::plugIn() {
    chapter("The mouse is plugged in and the program starts");
    mouse_ = &desktop_.attachTargetMouse();
    transport_.plug(mouseFirmware_);
    deviceEvents_ = device_->makeEventStream(
        mainQueue_, [this](const HIDPPEvent& event) { engine_->handleDeviceEvent(event); });
    onMain([this] {
        if (const auto started = engine_->start(); !started) {
            fmt::print("  {}\n", EventTapController::description(started.error()));
            isComplete_ = false;
        }
    });
    const auto connected =
        asio::co_spawn(mainQueue_->executor(), device_->connect(), asio::use_future).get();
    if (!connected) fmt::print("  the mouse: {}\n", connected.error().description());
    waitForScope();
    waitUntil("the mouse to take the profile's resolution",
              [this] { return mouseFirmware_.dpi() == Profile::defaultDPI; });
    tellMouseFacts();
    tellMouse();
}

void DemoSession::scroll() {
    chapter("One click of the wheel");
    mouse_->spin(-1);
    letGlideEnd();
    tellReceived();

    chapter("Four quick clicks, which chain into one glide");
    for (int click = 0; click < 4; ++click) {
        mouse_->spin(-1);
        std::this_thread::sleep_for(milliseconds(60));
    }
    letGlideEnd();
    tellReceived();
}

void DemoSession::pressButtons() {
    chapter("A button bound to Command-C, one bound to nothing, and motion");
    mouse_->click(copyButton);
    mouse_->click(0);
    mouse_->move(10, 0);
    settle();
    tellReceived();
}

void DemoSession::switchProfiles() {
    chapter("A key is held by a button while another application comes to the front");
    mouse_->press(panButton);
    settle();
    waitUntil("the key to go down", [this] { return desktop_.sessionState().isKeyDown(keySpace); });
    // Releases go to whoever is in front when they come: the switch lets go of the key by itself.
    desktop_.workspace().bringToFront(canvas_);
    waitUntil("the profile of the canvas", [this] {
        bool isThere = false;
        onMain([&] { isThere = engine_->status().activeProfileID == "canvas"; });
        return isThere;
    });
    mouse_->release(panButton);
    settle();
    waitUntil("the resolution of the canvas", [this] { return mouseFirmware_.dpi() == canvasDPI; });
    fmt::print("{}", receivedText("Editor", editor_.takeReceived()));
    fmt::print("{}", receivedText("Canvas", canvas_.takeReceived()));
    tellMouse();
}

void DemoSession::shiftResolution() {
    constexpr std::int64_t shifted = 400;
    chapter("The resolution is shifted for as long as a button is held");
    mouse_->press(Profile::sniperButton);
    waitUntil("the lower resolution", [&] { return mouseFirmware_.dpi() == shifted; });
    tellMouse();
    mouse_->release(Profile::sniperButton);
    waitUntil("the profile's resolution", [this] { return mouseFirmware_.dpi() == canvasDPI; });
    tellMouse();
}

void DemoSession::replug() {
    chapter("The mouse is unplugged in the middle of a request, and plugged in again");
    mouseFirmware_.injectFault(SimulatedMouse::Fault::vanish);
    const auto answer =
        asio::co_spawn(mainQueue_->executor(), device_->dpi(), asio::use_future).get();
    fmt::print("  the request ended with: {}\n",
               answer ? "an answer" : answer.error().description());
    mouse_->detach();
    waitUntil("the connection to end", [this] {
        return !asio::co_spawn(mainQueue_->executor(), device_->isConnected(), asio::use_future)
                    .get();
    });
    mouse_ = &desktop_.attachTargetMouse();
    transport_.plug(mouseFirmware_);
    fmt::print("  back with its power-on settings: {} DPI\n", mouseFirmware_.dpi());
    waitForScope();
    waitUntil("the settings to be put back", [this] { return mouseFirmware_.dpi() == canvasDPI; });
    tellMouse();
}

void DemoSession::useForeignDevices() {
    chapter("Another mouse, a trackpad and a mouse without ids: left alone");
    for (SimulatedPointingDevice* device :
         {&desktop_.attachForeignMouse(), &desktop_.attachTrackpad(),
          &desktop_.attachMouseWithoutVendor()}) {
        foreignDevices_.insert(device->id());
        device->spin(2);
        device->swipe(30, 0, 3);
        device->click(copyButton);
        device->move(5, 5);
    }
    settle();
    tellReceived();
}

void DemoSession::cutOffTap() {
    chapter("The system takes the tap out of the stream in the middle of a glide");
    mouse_->spin(-2);
    std::this_thread::sleep_for(milliseconds(60));
    desktop_.disableTapsByTimeout();
    waitUntil("the tap to be put back", [this] {
        bool isBack = false;
        onMain([&] {
            engine_->refreshMetrics();
            isBack = engine_->status().tap.reEnables == 1 && engine_->status().isTapEnabled;
        });
        return isBack;
    });
    letGlideEnd();
    tellReceived();
    mouse_->spin(1);
    letGlideEnd();
    fmt::print("  and one more click\n");
    tellReceived();
}

void DemoSession::stop() {
    chapter("The program stops");
    std::string text;
    onMain([&] {
        engine_->refreshMetrics();
        text = statusText(engine_->status());
        engine_->stop();
    });
    fmt::print("{}", text);
    asio::co_spawn(mainQueue_->executor(), device_->disconnect(), asio::use_future).get();
    mouse_->spin(1);
    settle();
    fmt::print("  a click of the wheel without the program\n");
    tellReceived();
}

bool DemoSession::audit() {
    chapter("What is left");
    const auto keys = desktop_.sessionState().keysDown().size();
    const auto buttons = desktop_.sessionState().buttonsDown().size();
    std::size_t foreign = 0;
    std::size_t touched = 0;
    for (const SimulatedPassage& passage : desktop_.events().journal()) {
        if (passage.isPosted || !foreignDevices_.contains(passage.entered.hidEventReference)) {
            continue;
        }
        ++foreign;
        if (passage.delivered != passage.entered) ++touched;
    }
    fmt::print("  {} keys and {} buttons held; {} of {} events of other devices touched\n", keys,
               buttons, touched, foreign);
    return isComplete_ && keys == 0 && buttons == 0 && foreign > 0 && touched == 0;
}

void DemoSession::chapter(std::string_view title) {
    settle();
    editor_.takeReceived();
    canvas_.takeReceived();
    fmt::print("\n{}\n", title);
}

void DemoSession::tellReceived() {
    SimulatedApplication& front = *desktop_.workspace().frontmost();
    fmt::print("{}", receivedText(front.description().displayName, front.takeReceived()));
}

void DemoSession::tellMouse() {
    const auto state =
        asio::co_spawn(mainQueue_->executor(), device_->dpi(), asio::use_future).get();
    fmt::print("  the mouse says: {}\n",
               state ? fmt::format("{} DPI", state->current) : state.error().description());
}

void DemoSession::tellMouseFacts() {
    const auto ask = [this](auto operation) {
        auto result =
            asio::co_spawn(mainQueue_->executor(), std::move(operation), asio::use_future).get();
        return result ? result->description() : result.error().description();
    };
    const auto name =
        asio::co_spawn(mainQueue_->executor(), device_->deviceName(), asio::use_future).get();
    fmt::print("  {}, {}\n", name ? *name : name.error().description(),
               ask(device_->protocolVersion()));
    fmt::print("  resolution {}; report rate {}\n", ask(device_->dpiRange()),
               ask(device_->reportRate()));
    fmt::print("  wheel {}\n", ask(device_->wheelMode()));
}

void DemoSession::onMain(const std::function<void()>& work) {
    mainQueue_->post([&work] { work(); });
    mainQueue_->drain();
}

void DemoSession::waitUntil(std::string_view what, const std::function<bool()>& condition) {
    constexpr auto patience = std::chrono::seconds(5);
    const TimePoint limit = dispatcher_.clock().now() + patience;
    while (!condition()) {
        if (dispatcher_.clock().now() > limit) {
            fmt::print("  waited in vain for {}\n", what);
            isComplete_ = false;
            return;
        }
        std::this_thread::sleep_for(milliseconds(1));
    }
}

void DemoSession::waitForScope() {
    // Until the input devices have been listed the mouse's events pass like any other's.
    waitUntil("the mouse to be known among the input devices", [this] {
        bool isKnown = false;
        onMain([&] {
            engine_->refreshMetrics();
            isKnown = engine_->status().targetDeviceAttached;
        });
        return isKnown;
    });
}

void DemoSession::letGlideEnd() {
    settle();
    // Longer than the longest glide of the document, and its steps on their way back.
    std::this_thread::sleep_for(milliseconds(400));
    settle();
}

void DemoSession::settle() {
    desktop_.settle();
    // What a button sets off is posted from a queue of its own.
    std::this_thread::sleep_for(milliseconds(20));
    desktop_.settle();
}

}  // namespace tessara
