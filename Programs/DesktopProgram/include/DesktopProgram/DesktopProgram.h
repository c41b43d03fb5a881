#pragma once

#include <QIcon>
#include <QObject>
#include <QQuickWindow>
#include <QString>
#include <QTimer>
#include <memory>

#include "TessaraApp/AppModel.h"
#include "TessaraApp/Interface/InterfaceEngine.h"
#include "TessaraApp/Wording/SystemWording.h"

namespace tessara {

class MenuBarContent;
class OnboardingViewModel;
class PermissionHelp;
class SettingsViewModel;
class TrayItem;
struct AppPlatform;

/// The program with its interface: the model, the tray item, the settings window, and the
/// onboarding window, on whatever platform it is given. There is a `QApplication` for as long as
/// it lives, and Qt's loop runs the platform's main queue. Main thread.
class DesktopProgram : public QObject {
    Q_OBJECT

  public:
    /// Starts nothing. `help` is null where the system's settings have pages for permissions; it
    /// and what the platform refers to outlive this.
    DesktopProgram(const AppPlatform& platform, PermissionHelp* help);
    ~DesktopProgram() override;

    enum class Launch {
        byUser,
        atLogin,  ///< by the desktop, whose tray may be slower than this program
    };

    /// Launches the model and shows what a user has to see: the onboarding until it was gone
    /// through once, and the settings where there is no tray. A tray has half a minute to come at
    /// login, and to come back when it goes while the program runs.
    void start(Launch launch);

    /// A second start of the program brings the window of this one forward, and so does whoever
    /// calls this.
    void raise();

    /// Opens the window, or brings it forward as it is. The settings start afresh each time that
    /// they are opened; the onboarding is where the user left it.
    void showSettings();
    void showOnboarding();

    [[nodiscard]] AppModel& model() { return *model_; }
    [[nodiscard]] InterfaceEngine& interface() { return interface_; }
    /// The symbol of that name as an icon for what is outside of the program's windows.
    [[nodiscard]] static QIcon icon(const QString& symbol);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void followTray();

    /// Ahead of all that has texts.
    const SystemWording wording_;
    const std::unique_ptr<AppModel> model_;
    InterfaceEngine interface_;
    const std::unique_ptr<MenuBarContent> menu_;
    const std::unique_ptr<TrayItem> tray_;
    const std::unique_ptr<OnboardingViewModel> onboarding_;
    /// Made anew each time the settings are opened, and gone once they are closed.
    std::unique_ptr<SettingsViewModel> settings_;
    std::unique_ptr<QQuickWindow> settingsWindow_;
    /// Kept once it was made: it comes back as the user left it.
    std::unique_ptr<QQuickWindow> onboardingWindow_;
    /// Runs while a tray that is not there may still come.
    QTimer trayPatience_;
};

}  // namespace tessara
