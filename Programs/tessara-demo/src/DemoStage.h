#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "AppWiring/SimulatedAppHost.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "TessaraApp/AppModel.h"

namespace tessara {

/// What the scenes of the demonstration are played on: the whole application on a simulated
/// computer, on real threads and in real time, and a voice that tells what came of it.
class DemoStage {
  public:
    DemoStage();
    ~DemoStage();

    DemoStage(const DemoStage&) = delete;
    DemoStage& operator=(const DemoStage&) = delete;

    [[nodiscard]] SimulatedAppHost& host() { return host_; }
    [[nodiscard]] SimulatedPointingDevice& mouse() { return *host_.mouse; }
    [[nodiscard]] SimulatedApplication& editor() { return editor_; }
    [[nodiscard]] SimulatedApplication& canvas() { return canvas_; }

    /// Opens the next chapter.
    void chapter(std::string_view title);
    /// Tells what the application in front received since the chapter began, or since the last
    /// time.
    void tellReceived();
    /// Tells what the menu bar shows.
    void tellMenuBar();
    /// Tells what the mouse says its resolution is.
    void tellResolution();

    /// Does something with the application, where it lives, and waits for it.
    void onMain(const std::function<void(AppModel& model)>& work);
    [[nodiscard]] bool isTrueOnMain(const std::function<bool(AppModel& model)>& question);
    /// The resolution by the mouse's own words, or what kept it from answering.
    [[nodiscard]] std::string askResolution();

    /// Waits for something that other threads bring about, for five seconds at most.
    void waitUntil(std::string_view what, const std::function<bool()>& condition);
    void waitUntilOnMain(std::string_view what,
                         const std::function<bool(AppModel& model)>& condition);
    /// Waits until the mouse is known among the input devices: until then its events pass like any
    /// other's.
    void waitForMouse();
    void letGlideEnd();
    void settle();

    /// Ends the application, as a user who quits.
    void endApplication();

    /// Notes a disappointment: the demonstration has failed.
    void fail() { isComplete_ = false; }
    /// False once something that was waited for did not come.
    [[nodiscard]] bool isComplete() const { return isComplete_; }

  private:
    ThreadedDispatcher dispatcher_;
    SimulatedAppHost host_;
    SimulatedApplication& editor_;
    SimulatedApplication& canvas_;
    std::optional<AppModel> model_;  // on the main queue
    bool isComplete_ = true;
};

}  // namespace tessara
