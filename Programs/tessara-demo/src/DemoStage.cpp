#include "DemoStage.h"

#include <chrono>
#include <thread>

#include <asio/any_io_executor.hpp>
#include <asio/co_spawn.hpp>
#include <asio/use_future.hpp>
#include <fmt/format.h>

#include "DemoReport.h"
#include "TessaraApp/DeviceMonitor.h"
#include "TessaraEngine/TessaraEngine.h"

namespace tessara {

using std::chrono::milliseconds;

DemoStage::DemoStage()
    : host_(dispatcher_),
      editor_(host_.desktop.workspace().install("org.example.editor", "Editor")),
      canvas_(host_.desktop.workspace().install("com.figma.Desktop", "Canvas")) {
    host_.desktop.workspace().bringToFront(editor_);
    onMain([](AppModel&) {});
}

DemoStage::~DemoStage() {
    host_.mainQueue->post([this] { model_.reset(); });
    host_.mainQueue->drain();
    host_.awaitEndOfConnections();
}

void DemoStage::chapter(std::string_view title) {
    settle();
    editor_.takeReceived();
    canvas_.takeReceived();
    fmt::print("\n{}\n", title);
}

void DemoStage::tellReceived() {
    SimulatedApplication& front = *host_.desktop.workspace().frontmost();
    fmt::print("{}", receivedText(front.description().displayName, front.takeReceived()));
}

void DemoStage::tellMenuBar() {
    MenuBarStatus status;
    onMain([&](AppModel& model) { status = model.menuBarStatus(); });
    fmt::print("  the menu bar says: {}{}{}\n", status.headline, status.detail ? ", " : "",
               status.detail.value_or(""));
}

std::string DemoStage::askResolution() {
    std::shared_ptr<GatedHIDPPControl> control;
    onMain([&](AppModel& model) { control = model.deviceMonitor().control(); });
    const auto dpi =
        asio::co_spawn(host_.mainQueue->executor(), control->readDPI(), asio::use_future).get();
    return dpi ? fmt::format("{} DPI", *dpi) : dpi.error().description();
}

void DemoStage::tellResolution() {
    fmt::print("  the mouse says: {}\n", askResolution());
}

void DemoStage::onMain(const std::function<void(AppModel&)>& work) {
    host_.mainQueue->post([this, &work] {
        if (!model_) model_.emplace(host_.appPlatform());
        work(*model_);
    });
    host_.mainQueue->drain();
}

bool DemoStage::isTrueOnMain(const std::function<bool(AppModel&)>& question) {
    bool isTrue = false;
    onMain([&](AppModel& model) { isTrue = question(model); });
    return isTrue;
}

void DemoStage::waitUntil(std::string_view what, const std::function<bool()>& condition) {
    constexpr auto patience = std::chrono::seconds(5);
    const TimePoint limit = dispatcher_.clock().now() + patience;
    while (!condition()) {
        if (dispatcher_.clock().now() > limit) {
            fmt::print("  waited in vain for {}\n", what);
            fail();
            return;
        }
        std::this_thread::sleep_for(milliseconds(1));
    }
}

void DemoStage::waitUntilOnMain(std::string_view what,
                                const std::function<bool(AppModel&)>& condition) {
    waitUntil(what, [&] { return isTrueOnMain(condition); });
}

void DemoStage::waitForMouse() {
    waitUntilOnMain("the mouse to be known among the input devices", [](AppModel& model) {
        model.engine()->refreshMetrics();
        return model.status().targetDeviceAttached;
    });
}

void DemoStage::letGlideEnd() {
    settle();
    // Longer than the longest glide of the document, and its steps on their way back.
    std::this_thread::sleep_for(milliseconds(400));
    settle();
}

void DemoStage::settle() {
    host_.desktop.settle();
    // What a button sets off is posted from a queue of its own.
    std::this_thread::sleep_for(milliseconds(20));
    host_.desktop.settle();
}

void DemoStage::endApplication() {
    onMain([](AppModel& model) { model.stop(); });
    waitUntil("the connection to the mouse to be closed",
              [this] { return host_.hidTransport.openInterfaceCount() == 0; });
}

}  // namespace tessara
