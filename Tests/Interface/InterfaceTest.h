#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "AppWiring/SimulatedAppHost.h"
#include "Support/TestDispatcher.h"
#include "TessaraApp/AppModel.h"
#include "TessaraApp/Interface/InterfaceEngine.h"
#include "TessaraApp/ViewModels/SettingsViewModel.h"
#include "WindowDriver.h"

namespace tessara {

/// The application on the simulated desktop, with its real settings window drawn off any screen.
class InterfaceTest : public testing::VirtualTimeTest {
  protected:
    InterfaceTest() { host.desktop.workspace().bringToFront(editor); }
    ~InterfaceTest() override {
        window.reset();
        settings.reset();
        model.reset();
        dispatcher.advance(std::chrono::seconds(20));
        dispatcher.discard();
    }

    /// Launches with the mouse plugged in and opens the window.
    void open() {
        host.plugInMouse();
        model = std::make_unique<AppModel>(host.appPlatform());
        model->start();
        settle();
        settings = std::make_unique<SettingsViewModel>(*model);
        engine.theme().setMotionMillis(0);
        window =
            engine.makeWindow(QStringLiteral("SettingsRootView"),
                              {{QStringLiteral("settings"), QVariant::fromValue(settings.get())}});
        driver.emplace(*window);
    }
    /// Until edits have reached the engine and the disk, and glides have run out.
    void settle() { dispatcher.advance(std::chrono::seconds(5)); }

    SimulatedAppHost host{dispatcher};
    SimulatedApplication& editor = host.desktop.workspace().install("org.example.editor", "Editor");
    InterfaceEngine engine;
    std::unique_ptr<AppModel> model;
    std::unique_ptr<SettingsViewModel> settings;
    std::unique_ptr<QQuickWindow> window;
    std::optional<WindowDriver> driver;
};

}  // namespace tessara
