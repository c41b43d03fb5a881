// tessara-pictures FOLDER [NAME...]: draws every window of the interface in each of its states, or
// in those that are named, in light and in dark, small and large, into FOLDER. It needs no display,
// no mouse and no time: the application runs on the simulated desktop in virtual time.

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QQuickItem>
#include <QQuickWindow>
#include <functional>
#include <vector>

#include <fmt/core.h>

#include "AppWiring/SimulatedAppHost.h"
#include "Desk/DeskModel.h"
#include "Desk/DeskProgram.h"
#include "Platform/Dispatch/ManualDispatcher.h"
#include "Platform/PermissionHelp.h"
#include "TessaraApp/AppModel.h"
#include "TessaraApp/Interface/InterfaceEngine.h"
#include "TessaraApp/ViewModels/OnboardingViewModel.h"
#include "TessaraApp/ViewModels/SettingsViewModel.h"
#include "TessaraApp/Wording/SystemWording.h"

namespace tessara {
namespace {

/// A system without pages for permissions, where most of what is needed is missing.
class MissingRights final : public PermissionHelp {
  public:
    [[nodiscard]] std::vector<PermissionFinding> findings() const override {
        return {
            {"/dev/uinput may not be written by you, so Tessara cannot send scrolling, keys and "
             "buttons.",
             false},
            {"Tessara can see the mouse's wheel, buttons and movement. The keyboard may not be "
             "read by you, so scrolling and buttons that ask for Shift, Control or another "
             "modifier key act as if it were never held.",
             true},
            {"/dev/hidraw3 may not be used by you, so Tessara cannot read or set the mouse's "
             "resolution.",
             false}};
    }
    [[nodiscard]] std::string command() const override {
        return "sudo /usr/libexec/tessara/tessara-grant-access";
    }
    void grant() override {}
};

/// A running application in front of which a window is photographed.
struct Scene {
    ManualDispatcher dispatcher{TimePoint(std::chrono::seconds(1))};
    SimulatedAppHost host{dispatcher};
    MissingRights help;
    std::unique_ptr<AppModel> model;
    std::unique_ptr<SettingsViewModel> settings;
    std::unique_ptr<OnboardingViewModel> onboarding;
    std::unique_ptr<DeskModel> desk;

    /// The Desk brings applications and mouse of its own.
    void start(bool hasDesk) {
        if (hasDesk) desk = std::make_unique<DeskModel>(host);
        model = std::make_unique<AppModel>(host.appPlatform());
        model->start();
        advance();
        settings = std::make_unique<SettingsViewModel>(*model);
        onboarding =
            std::make_unique<OnboardingViewModel>(*model, host.mainQueue, &help, [](auto) {});
    }

    void advance() { dispatcher.advance(std::chrono::seconds(5)); }

    ~Scene() {
        desk.reset();
        onboarding.reset();
        settings.reset();
        model.reset();
        dispatcher.advance(std::chrono::seconds(20));
        dispatcher.discard();
    }
};

enum class Shown { settings, onboarding, desk };

struct Picture {
    QString name;
    /// Before the start, and after it.
    std::function<void(Scene&)> prepare;
    std::function<void(Scene&)> adjust;
    /// Where the page is scrolled to: 0 for its top, 1 for its end.
    double scrolledTo = 0;
    Shown shown = Shown::settings;
    /// What is done to the open window.
    std::function<void(QQuickWindow&)> work = {};
};

void mouseIsIn(Scene& scene) {
    SimulatedApplication& figma =
        scene.host.desktop.workspace().install("com.figma.Desktop", "Figma");
    scene.host.desktop.workspace().bringToFront(figma);
    scene.host.plugInMouse();
}

/// Opens the part of the page that is folded at first.
void opensAdvanced(QQuickWindow& window) {
    for (QQuickItem* item : window.findChildren<QQuickItem*>())
        if (item->property("isOpen").isValid()) item->setProperty("isOpen", true);
}

/// Opens the picker of the modifier, with the keyboard's focus on it.
void opensPicker(QQuickWindow& window) {
    for (QQuickItem* item : window.findChildren<QQuickItem*>()) {
        if (item->property("count").toInt() != 5 || !item->property("popup").isValid()) continue;
        item->forceActiveFocus(Qt::TabFocusReason);
        QMetaObject::invokeMethod(item->property("popup").value<QObject*>(), "open");
    }
}

void nothingIsGranted(Scene& scene) {
    mouseIsIn(scene);
    scene.host.desktop.permissions().revokeAccessibility();
    scene.host.desktop.permissions().revokeInputMonitoring();
}

void goTo(Scene& scene, OnboardingViewModel::Step step) {
    while (scene.onboarding->step() < step)
        scene.onboarding->advance();
}

void turnTheWheel(Scene& scene) {
    for (int click = 0; click < 3; ++click) {
        scene.host.mouse->spin(-1);
        scene.advance();
    }
}

void workTheMouse(Scene& scene) {
    DeskModel& desk = *scene.desk;
    for (const int lines : {-1, -1, -1, 1}) {
        desk.spin(lines);
        scene.advance();
    }
    desk.move(14, -6);
    desk.click(3);
    scene.advance();
    desk.bringToFront(1);
    desk.spin(2);
    scene.advance();
    desk.setInputMonitoring(false);
}

std::vector<Picture> allPictures() {
    const auto selects = [](SettingsViewModel::Tab tab) {
        return [tab](Scene& scene) { scene.settings->setSelectedTab(static_cast<int>(tab)); };
    };
    const auto goesTo = [](OnboardingViewModel::Step step) {
        return [step](Scene& scene) { goTo(scene, step); };
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
        {"scroll-end", mouseIsIn, turnTheWheel, 1},
        {"scroll-advanced", mouseIsIn, nothing, 1, Shown::settings, opensAdvanced},
        {"scroll-picker", mouseIsIn, nothing, 0.12, Shown::settings, opensPicker},
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
        {"limited-session",
         [](Scene& scene) {
             mouseIsIn(scene);
             scene.host.desktop.workspace().setLimitation(
                 "This Wayland session tells which application is in front only of those that use "
                 "X11, so all others have the default profile.");
         },
         nothing},
        {"no-tray", mouseIsIn, [](Scene& scene) { scene.settings->setHasTray(false); }},
        {"onboarding-welcome", mouseIsIn, nothing, 0, Shown::onboarding},
        {"onboarding-input-monitoring", nothingIsGranted,
         goesTo(OnboardingViewModel::inputMonitoring), 0, Shown::onboarding},
        {"onboarding-help", nothingIsGranted,
         [](Scene& scene) {
             goTo(scene, OnboardingViewModel::inputMonitoring);
             scene.onboarding->openSettings();
         },
         1, Shown::onboarding},
        {"onboarding-accessibility", mouseIsIn, goesTo(OnboardingViewModel::accessibility), 0,
         Shown::onboarding},
        {"onboarding-done", mouseIsIn, goesTo(OnboardingViewModel::done), 0, Shown::onboarding},
        {"onboarding-missing", nothingIsGranted, goesTo(OnboardingViewModel::done), 0,
         Shown::onboarding},
        {"desk", nothing, workTheMouse, 0, Shown::desk},
    };
}

/// Everything that can scroll within a window.
QList<QQuickItem*> pagesOf(QQuickWindow& window) {
    return window.findChildren<QQuickItem*>(QStringLiteral("page"));
}

std::unique_ptr<QQuickWindow> makeWindow(InterfaceEngine& engine, Shown shown, const Scene& scene) {
    switch (shown) {
        case Shown::settings:
            break;
        case Shown::onboarding:
            return engine.makeWindow(
                QStringLiteral("OnboardingView"),
                {{QStringLiteral("onboarding"), QVariant::fromValue(scene.onboarding.get())}});
        case Shown::desk:
            return engine.makeWindow(
                QStringLiteral("DeskWindow"),
                {{QStringLiteral("desk"), QVariant::fromValue(scene.desk.get())}},
                QStringLiteral("Tessara.Desk"));
    }
    return engine.makeWindow(
        QStringLiteral("SettingsRootView"),
        {{QStringLiteral("settings"), QVariant::fromValue(scene.settings.get())}});
}

/// The window's size is its own when `size` is empty.
void draw(const Picture& picture, Theme::Appearance appearance, QSize size, const QDir& folder) {
    Scene scene;
    picture.prepare(scene);
    scene.start(picture.shown == Shown::desk);
    picture.adjust(scene);

    InterfaceEngine engine;
    engine.theme().setAppearance(appearance);
    engine.theme().setMotionMillis(0);
    const auto window = makeWindow(engine, picture.shown, scene);
    if (!size.isEmpty()) window->resize(size);
    window->show();
    QCoreApplication::processEvents();
    if (picture.work) {
        picture.work(*window);
        QCoreApplication::processEvents();
    }
    for (QQuickItem* page : pagesOf(*window)) {
        const double room = page->property("contentHeight").toDouble() - page->height();
        page->setProperty("contentY", std::max(0.0, room) * picture.scrolledTo);
    }
    QCoreApplication::processEvents();

    const QString name =
        QStringLiteral("%1-%2-%3x%4.png")
            .arg(picture.name, appearance == Theme::Appearance::dark ? "dark" : "light")
            .arg(window->width())
            .arg(window->height());
    if (!window->grabWindow().save(folder.filePath(name))) {
        fmt::print(stderr, "tessara-pictures: cannot write {}\n",
                   folder.filePath(name).toStdString());
        std::exit(1);
    }
}

std::vector<QSize> sizesOf(Shown shown) {
    switch (shown) {
        case Shown::settings:
            return {QSize(720, 520), QSize(1280, 900)};
        case Shown::desk:
            return {QSize(720, 560), QSize(1280, 900)};
        case Shown::onboarding:
            break;
    }
    return {QSize()};
}

}  // namespace
}  // namespace tessara

int main(int argc, char** argv) {
    using namespace tessara;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    const QGuiApplication application(argc, argv);
    const SystemWording wording;
    registerDeskTypes();
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
            for (const QSize size : sizesOf(picture.shown))
                draw(picture, appearance, size, folder);
    }
    return 0;
}
