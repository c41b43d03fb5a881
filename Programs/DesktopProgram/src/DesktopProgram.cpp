#include "DesktopProgram/DesktopProgram.h"

#include <QColor>
#include <QCoreApplication>
#include <QEvent>
#include <QPixmap>
#include <QScreen>
#include <QVariantMap>
#include <chrono>

#include "Platform/DesktopShell.h"
#include "TessaraApp/AppPlatform.h"
#include "TessaraApp/AppPreferences.h"
#include "TessaraApp/Style/Icon.h"
#include "TessaraApp/Tray/TrayItem.h"
#include "TessaraApp/ViewModels/MenuBarContent.h"
#include "TessaraApp/ViewModels/OnboardingViewModel.h"
#include "TessaraApp/ViewModels/SettingsViewModel.h"

namespace tessara {
namespace {

constexpr std::chrono::seconds trayPatience{30};

void bringForward(QQuickWindow& window) {
    if (window.windowStates().testFlag(Qt::WindowMinimized)) {
        window.showNormal();
    } else {
        window.show();
    }
    window.raise();
    window.requestActivate();
}

void centre(QQuickWindow& window) {
    QRect place({}, window.size());
    place.moveCenter(window.screen()->availableGeometry().center());
    window.setPosition(place.topLeft());
}

AppPlatform withActivation(AppPlatform platform, std::function<void()> activate) {
    platform.activateApplication = std::move(activate);
    return platform;
}

}  // namespace

DesktopProgram::DesktopProgram(const AppPlatform& platform, PermissionHelp* help)
    : model_(std::make_unique<AppModel>(withActivation(platform, [this] { raise(); }))),
      menu_(std::make_unique<MenuBarContent>(
          *model_, MenuBarContent::Program{.showOnboarding = [this] { showOnboarding(); },
                                           .showSettings = [this] { showSettings(); },
                                           .terminate = [] { QCoreApplication::quit(); }})),
      tray_(std::make_unique<TrayItem>(*menu_, &DesktopProgram::icon)),
      onboarding_(std::make_unique<OnboardingViewModel>(
          *model_, platform.engine.mainQueue, help,
          [&shell = platform.shell](const QString& url) { shell.openURL(url.toStdString()); })) {
    trayPatience_.setSingleShot(true);
    trayPatience_.setInterval(trayPatience);
    connect(&trayPatience_, &QTimer::timeout, this, &DesktopProgram::followTray);
    connect(tray_.get(), &TrayItem::isAvailableChanged, this, [this] {
        if (!tray_->isAvailable()) trayPatience_.start();
        followTray();
    });
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, model_.get(),
            &AppModel::stop);
}

DesktopProgram::~DesktopProgram() = default;

QIcon DesktopProgram::icon(const QString& symbol) {
    QIcon icon;
    // A tray may be light or dark, and does not say: a grey that stands out from both.
    for (const int size : {16, 22, 24, 32, 48, 64})
        icon.addPixmap(QPixmap::fromImage(Icon::image(symbol, QColor(0x80, 0x80, 0x86), size)));
    return icon;
}

void DesktopProgram::start(Launch launch) {
    model_->start();
    if (launch == Launch::atLogin) trayPatience_.start();
    followTray();
    if (!model_->preferences().hasCompletedOnboarding()) showOnboarding();
}

void DesktopProgram::raise() {
    if (onboardingWindow_ && onboardingWindow_->isVisible()) {
        showOnboarding();
    } else {
        showSettings();
    }
}

void DesktopProgram::followTray() {
    const bool hasTray = tray_->isAvailable();
    if (settings_) settings_->setHasTray(hasTray);
    // Without a tray this window is the only way to the program.
    if (!hasTray && !trayPatience_.isActive() && !settingsWindow_) showSettings();
}

void DesktopProgram::showSettings() {
    if (!settingsWindow_) {
        settings_ = std::make_unique<SettingsViewModel>(*model_);
        settings_->setHasTray(tray_->isAvailable());
        connect(settings_.get(), &SettingsViewModel::onboardingRequested, this,
                &DesktopProgram::showOnboarding);
        connect(settings_.get(), &SettingsViewModel::quitRequested, this,
                [this] { menu_->run(MenuBarContent::Command::quit); });
        settingsWindow_ = interface_.makeWindow(
            QStringLiteral("SettingsRootView"),
            {{QStringLiteral("settings"), QVariant::fromValue(settings_.get())}});
        settingsWindow_->installEventFilter(this);
    }
    bringForward(*settingsWindow_);
}

void DesktopProgram::showOnboarding() {
    if (!onboardingWindow_) {
        onboardingWindow_ = interface_.makeWindow(
            QStringLiteral("OnboardingView"),
            {{QStringLiteral("onboarding"), QVariant::fromValue(onboarding_.get())}});
        centre(*onboardingWindow_);
    }
    bringForward(*onboardingWindow_);
}

bool DesktopProgram::eventFilter(QObject* watched, QEvent* event) {
    if (watched != settingsWindow_.get() || event->type() != QEvent::Close)
        return QObject::eventFilter(watched, event);
    if (!tray_->isAvailable()) {
        settingsWindow_->showMinimized();
        event->ignore();
        return true;
    }
    // What it showed goes with it, but not before the window has heard of its end.
    settingsWindow_.release()->deleteLater();
    settings_.release()->deleteLater();
    return false;
}

}  // namespace tessara
