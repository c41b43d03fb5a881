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

/// The application on the simulated desktop, with its real windows drawn off any screen.
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

    void launch() {
        model = std::make_unique<AppModel>(host.appPlatform());
        model->start();
        settle();
    }
    /// The window of that name, with its view-model for the property of that name.
    template <typename ViewModel>
    void show(const QString& name, const QString& property, ViewModel& viewModel,
              const QString& module = QStringLiteral("Tessara.Interface")) {
        engine.theme().setMotionMillis(0);
        window = engine.makeWindow(name, {{property, QVariant::fromValue(&viewModel)}}, module);
        driver.emplace(*window);
    }
    /// Launches with the mouse plugged in and opens the settings.
    void open() {
        host.plugInMouse();
        launch();
        settings = std::make_unique<SettingsViewModel>(*model);
        show(QStringLiteral("SettingsRootView"), QStringLiteral("settings"), *settings);
    }
    /// Until edits have reached the engine and the disk, and glides have run out.
    void settle() { dispatcher.advance(std::chrono::seconds(5)); }

    SimulatedAppHost host{dispatcher};
    SimulatedApplication& editor = host.desktop.workspace().install("org.example.notes", "Notes");
    InterfaceEngine engine;
    std::unique_ptr<AppModel> model;
    std::unique_ptr<SettingsViewModel> settings;
    std::unique_ptr<QQuickWindow> window;
    std::optional<WindowDriver> driver;
};

}  // namespace tessara
