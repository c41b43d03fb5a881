// tessara-pictures FOLDER: draws every window of the interface in each of its states, in light and
// in dark, small and large, into FOLDER. It needs no display, no mouse and no time: the application
// runs on the simulated desktop in virtual time.

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QQuickItem>
#include <QQuickWindow>
#include <functional>
#include <vector>

#include <fmt/core.h>

#include "AppWiring/SimulatedAppHost.h"
#include "Platform/Dispatch/ManualDispatcher.h"
#include "TessaraApp/AppModel.h"
#include "TessaraApp/Interface/InterfaceEngine.h"
#include "TessaraApp/ViewModels/SettingsViewModel.h"

namespace tessara {
namespace {

/// A running application in front of which a window is photographed.
struct Scene {
    ManualDispatcher dispatcher{TimePoint(std::chrono::seconds(1))};
    SimulatedAppHost host{dispatcher};
    std::unique_ptr<AppModel> model;
    std::unique_ptr<SettingsViewModel> settings;

    void start() {
        model = std::make_unique<AppModel>(host.appPlatform());
        model->start();
        dispatcher.advance(std::chrono::seconds(5));
        settings = std::make_unique<SettingsViewModel>(*model);
    }

    ~Scene() {
        settings.reset();
        model.reset();
        dispatcher.advance(std::chrono::seconds(20));
        dispatcher.discard();
    }
};

struct Picture {
    QString name;
    /// Before the start, and after it.
    std::function<void(Scene&)> prepare;
    std::function<void(Scene&)> adjust;
    /// Where the page is scrolled to: 0 for its top, 1 for its end.
    double scrolledTo = 0;
    /// What has the keyboard's focus, by its accessible name; empty for nothing.
    QString focus = {};
};

void mouseIsIn(Scene& scene) {
    SimulatedApplication& figma =
        scene.host.desktop.workspace().install("com.figma.Desktop", "Figma");
    scene.host.desktop.workspace().bringToFront(figma);
    scene.host.plugInMouse();
}

std::vector<Picture> allPictures() {
    const auto selects = [](SettingsViewModel::Tab tab) {
        return [tab](Scene& scene) { scene.settings->setSelectedTab(static_cast<int>(tab)); };
    };
    const auto nothing = [](Scene&) {};
    const auto edits = [](const std::function<void(ScrollSettings&)>& change) {
        return [change](Scene& scene) {
            scene.settings->profile().edit([&](Profile& profile) { change(profile.scroll); });
        };
    };
    return {
        {"scroll", mouseIsIn, nothing},
        {"scroll-middle", mouseIsIn, nothing, 0.5},
        {"scroll-end", mouseIsIn, nothing, 1},
        {"scroll-off", mouseIsIn, edits([](ScrollSettings& scroll) { scroll.isEnabled = false; })},
        {"buttons", mouseIsIn, selects(SettingsViewModel::Tab::buttons)},
        {"device", mouseIsIn, selects(SettingsViewModel::Tab::device)},
        {"permissions",
         [](Scene& scene) {
             mouseIsIn(scene);
             scene.host.desktop.permissions().revokeAccessibility();
         },
         nothing},
        {"paused-and-problem",
         [](Scene& scene) {
             mouseIsIn(scene);
             scene.host.files.putFile(SimulatedAppHost::configPath, "{ this is no document");
         },
         [](Scene& scene) { scene.model->setPausedByUser(true); }},
    };
}

/// Everything that can scroll within a window.
QList<QQuickItem*> pagesOf(QQuickWindow& window) {
    return window.findChildren<QQuickItem*>(QStringLiteral("page"));
}

void draw(const Picture& picture, Theme::Appearance appearance, QSize size, const QDir& folder) {
    Scene scene;
    picture.prepare(scene);
    scene.start();
    picture.adjust(scene);

    InterfaceEngine engine;
    engine.theme().setAppearance(appearance);
    engine.theme().setMotionMillis(0);
    const auto window = engine.makeWindow(
        QStringLiteral("SettingsRootView"),
        {{QStringLiteral("settings"), QVariant::fromValue(scene.settings.get())}});
    window->resize(size);
    window->show();
    QCoreApplication::processEvents();
    for (QQuickItem* page : pagesOf(*window)) {
        const double room = page->property("contentHeight").toDouble() - page->height();
        page->setProperty("contentY", std::max(0.0, room) * picture.scrolledTo);
    }
    QCoreApplication::processEvents();

    const QString name =
        QStringLiteral("%1-%2-%3x%4.png")
            .arg(picture.name, appearance == Theme::Appearance::dark ? "dark" : "light")
            .arg(size.width())
            .arg(size.height());
    if (!window->grabWindow().save(folder.filePath(name))) {
        fmt::print(stderr, "tessara-pictures: cannot write {}\n",
                   folder.filePath(name).toStdString());
        std::exit(1);
    }
}

}  // namespace
}  // namespace tessara

int main(int argc, char** argv) {
    using namespace tessara;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    const QGuiApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 2) {
        fmt::print(stderr, "usage: tessara-pictures FOLDER [NAME...]\n");
        return 2;
    }
    const QDir folder(arguments.at(1));
    if (!folder.mkpath(".")) {
        fmt::print(stderr, "tessara-pictures: cannot make the folder {}\n",
                   folder.path().toStdString());
        return 1;
    }
    const QStringList wanted = arguments.mid(2);
    for (const Picture& picture : allPictures()) {
        if (!wanted.isEmpty() && !wanted.contains(picture.name)) continue;
        for (const auto appearance : {Theme::Appearance::light, Theme::Appearance::dark})
            for (const QSize size : {QSize(720, 520), QSize(1280, 900)})
                draw(picture, appearance, size, folder);
    }
    return 0;
}
