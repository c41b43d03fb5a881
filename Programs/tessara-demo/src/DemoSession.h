#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "HIDPlusPlus/HIDPPRunLoop.h"
#include "Platform/Dispatch/EventStream.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Platform/Simulated/SimulatedDesktop.h"
#include "Platform/Simulated/SimulatedHIDTransport.h"
#include "Platform/Simulated/SimulatedMouse.h"
#include "TessaraEngine/TessaraEngine.h"

namespace tessara {

class HIDPPDevice;

/// A short session of the program on the simulated desktop, on real threads and in real time:
/// everything that a user of the mouse meets in a day, played in a few seconds and told on the
/// terminal as it happens.
class DemoSession {
  public:
    DemoSession();
    ~DemoSession();

    DemoSession(const DemoSession&) = delete;
    DemoSession& operator=(const DemoSession&) = delete;

    /// Plays it. True when nothing was left held and no foreign event was touched.
    [[nodiscard]] bool play();

  private:
    void plugIn();
    void scroll();
    void pressButtons();
    void switchProfiles();
    void shiftResolution();
    void replug();
    void useForeignDevices();
    void cutOffTap();
    void stop();
    [[nodiscard]] bool audit();

    /// Opens the next chapter.
    void chapter(std::string_view title);
    /// Tells what the application in front received in the last chapter.
    void tellReceived();
    void tellMouse();
    void tellMouseFacts();

    /// Does something on the main executor and waits for it.
    void onMain(const std::function<void()>& work);
    /// Waits for something that other threads bring about, for five seconds at most.
    void waitUntil(std::string_view what, const std::function<bool()>& condition);
    void waitForScope();
    void letGlideEnd();
    void settle();
    [[nodiscard]] EnginePlatform platform();

    ThreadedDispatcher dispatcher_;
    const std::shared_ptr<DispatchQueue> mainQueue_;
    SimulatedMouse mouseFirmware_;
    SimulatedHIDTransport transport_;
    SimulatedDesktop desktop_;
    SimulatedApplication& editor_;
    SimulatedApplication& canvas_;
    const std::shared_ptr<HIDPPRunLoop> runLoop_;
    const std::shared_ptr<HIDPPDevice> device_;
    std::shared_ptr<TessaraEngine> engine_;
    EventSubscription deviceEvents_;
    SimulatedPointingDevice* mouse_ = nullptr;
    std::set<std::uint64_t> foreignDevices_;
    bool isComplete_ = true;  // false once something that was waited for did not come
};

}  // namespace tessara
