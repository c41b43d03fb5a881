#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <functional>
#include <memory>

#include <QtQml/qqmlregistration.h>

#include "TessaraApp/ViewModels/OnboardingHelpModel.h"

namespace tessara {

class AppModel;
class DispatchQueue;
class DispatchTimer;
class PermissionHelp;

/// One line of the list on the first page.
struct OnboardingBullet {
    Q_GADGET
    QML_VALUE_TYPE(onboardingBullet)
    Q_PROPERTY(QString text MEMBER text CONSTANT)
    Q_PROPERTY(QString symbol MEMBER symbol CONSTANT)

  public:
    QString text;
    QString symbol;
};

/// The onboarding window as data: which step is shown, every text of it, and what its buttons do.
/// It never makes the system prompt; it opens the right page of the system's settings, and while
/// the window is there watches for the switch and moves on by itself.
///
/// Main executor only. `contentChanged` comes once for each change that shows, `stepChanged` after
/// it when another step is shown, and neither otherwise.
class OnboardingViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the program")
    Q_PROPERTY(QString windowTitle READ windowTitle CONSTANT)
    Q_PROPERTY(Step step READ step NOTIFY stepChanged)
    Q_PROPERTY(int stepCount READ stepCount CONSTANT)
    Q_PROPERTY(QString symbol READ symbol NOTIFY contentChanged)
    Q_PROPERTY(QString title READ title NOTIFY contentChanged)
    Q_PROPERTY(QString progressText READ progressText NOTIFY contentChanged)
    Q_PROPERTY(bool canGoBack READ canGoBack NOTIFY contentChanged)
    Q_PROPERTY(QString backText READ backText CONSTANT)
    Q_PROPERTY(QString primaryText READ primaryText NOTIFY contentChanged)
    Q_PROPERTY(QString stateSymbol READ stateSymbol NOTIFY contentChanged)
    Q_PROPERTY(StateLevel stateLevel READ stateLevel NOTIFY contentChanged)
    Q_PROPERTY(QString stateText READ stateText NOTIFY contentChanged)
    Q_PROPERTY(QString leadText READ leadText NOTIFY contentChanged)
    Q_PROPERTY(QVariantList bullets READ bullets NOTIFY contentChanged)
    Q_PROPERTY(QString detailText READ detailText NOTIFY contentChanged)
    Q_PROPERTY(QString extraText READ extraText NOTIFY contentChanged)
    Q_PROPERTY(bool asksForGrant READ asksForGrant NOTIFY contentChanged)
    Q_PROPERTY(QString howToText READ howToText NOTIFY contentChanged)
    Q_PROPERTY(QString openSettingsText READ openSettingsText NOTIFY contentChanged)
    Q_PROPERTY(bool showsHelp READ showsHelp NOTIFY showsHelpChanged)
    Q_PROPERTY(tessara::OnboardingHelpModel* help READ help CONSTANT)
    Q_PROPERTY(QString watchingText READ watchingText CONSTANT)
    Q_PROPERTY(QString promiseText READ promiseText CONSTANT)
    Q_PROPERTY(bool offersLogin READ offersLogin NOTIFY contentChanged)
    Q_PROPERTY(QString startAtLoginText READ startAtLoginText CONSTANT)
    Q_PROPERTY(bool startsAtLogin READ startsAtLogin WRITE setStartsAtLogin NOTIFY contentChanged)
    Q_PROPERTY(QString loginStatusText READ loginStatusText NOTIFY contentChanged)
    Q_PROPERTY(QString loginErrorText READ loginErrorText NOTIFY contentChanged)
    Q_PROPERTY(QString closingText READ closingText NOTIFY contentChanged)

  public:
    enum Step { welcome, inputMonitoring, accessibility, done };
    Q_ENUM(Step)
    /// How the permissions of a step stand.
    enum StateLevel { notYet, good, missing };
    Q_ENUM(StateLevel)

    /// Opens a page of the system's settings, given its link.
    using OpenLink = std::function<void(const QString& url)>;

    /// Starts at `welcome`, without a watch. The queue is the main one. With `help`, the button of
    /// a permission step shows that instead of opening a page; null where there are pages. Model
    /// and help outlive this.
    OnboardingViewModel(AppModel& model, std::shared_ptr<DispatchQueue> mainQueue,
                        PermissionHelp* help, OpenLink openLink);
    ~OnboardingViewModel() override;

    /// Watches the permissions while the window is there: looks at once, then every 600 ms, and
    /// goes on by itself from a step whose permission is there. Twice the same is once.
    Q_INVOKABLE void setWatching(bool isWatching);

    /// The primary button: one step on, with or without the permission; on the last one the end of
    /// the onboarding, which is remembered, and `finished`.
    Q_INVOKABLE void advance();
    /// One step back, never below the first.
    Q_INVOKABLE void goBack();
    /// Opens the page where the permission of this step is granted, or shows the help. Permission
    /// steps only.
    Q_INVOKABLE void openSettings();

    [[nodiscard]] QString windowTitle() const { return tr("Set Up Tessara"); }
    [[nodiscard]] Step step() const { return content_.step; }
    [[nodiscard]] int stepCount() const { return done + 1; }
    /// The symbol beside the title.
    [[nodiscard]] QString symbol() const { return content_.symbol; }
    [[nodiscard]] QString title() const { return content_.title; }
    /// "Step {n} of 4".
    [[nodiscard]] QString progressText() const { return content_.progressText; }
    [[nodiscard]] bool canGoBack() const { return content_.step != welcome; }
    [[nodiscard]] QString backText() const { return tr("Back"); }
    [[nodiscard]] QString primaryText() const { return content_.primaryText; }
    /// The symbol of the line that tells how the permissions of this step stand, and its text;
    /// empty on the first step.
    [[nodiscard]] QString stateSymbol() const { return content_.stateSymbol; }
    [[nodiscard]] StateLevel stateLevel() const { return content_.stateLevel; }
    [[nodiscard]] QString stateText() const { return content_.stateText; }
    /// What the step is about; on a permission step, why the permission is needed.
    [[nodiscard]] QString leadText() const { return content_.leadText; }
    /// An `OnboardingBullet` for each line of a list; empty mostly.
    [[nodiscard]] QVariantList bullets() const;
    /// What else there is to know of the step, less weighty.
    [[nodiscard]] QString detailText() const { return content_.detailText; }
    /// Something particular about this machine; empty mostly.
    [[nodiscard]] QString extraText() const { return content_.extraText; }
    /// A permission step whose permission is not there: what to do is shown, and the button.
    [[nodiscard]] bool asksForGrant() const { return content_.asksForGrant; }
    [[nodiscard]] QString howToText() const { return content_.howToText; }
    /// The button that opens the page of the system's settings, or shows the help.
    [[nodiscard]] QString openSettingsText() const { return content_.openSettingsText; }
    /// Whether the help is shown; once it is, it stays.
    [[nodiscard]] bool showsHelp() const { return showsHelp_; }
    [[nodiscard]] OnboardingHelpModel* help() { return &help_; }
    /// That the window goes on by itself, and what the program never does.
    [[nodiscard]] QString watchingText() const;
    [[nodiscard]] QString promiseText() const;
    /// The last step, where the switch for the login stands.
    [[nodiscard]] bool offersLogin() const { return content_.step == done; }
    [[nodiscard]] QString startAtLoginText() const { return tr("Start Tessara when I log in"); }
    [[nodiscard]] bool startsAtLogin() const { return content_.startsAtLogin; }
    /// Asks the system for it. What is shown is what the system says afterwards.
    void setStartsAtLogin(bool starts);
    /// What the state of the login item means for the user.
    [[nodiscard]] QString loginStatusText() const { return content_.loginStatusText; }
    /// Empty unless the system refused the last change of the switch.
    [[nodiscard]] QString loginErrorText() const { return content_.loginErrorText; }
    /// What stands at the end of the step; empty mostly.
    [[nodiscard]] QString closingText() const { return content_.closingText; }

  Q_SIGNALS:
    void contentChanged();
    void stepChanged();
    void showsHelpChanged();
    /// The user is through: the window closes.
    void finished();

  private:
    /// All that is shown of a step.
    struct Content {
        Step step = welcome;
        QString symbol;
        QString title;
        QString progressText;
        QString primaryText;
        QString stateSymbol;
        StateLevel stateLevel = notYet;
        QString stateText;
        QString leadText;
        QStringList bulletTexts;
        QString detailText;
        QString extraText;
        bool asksForGrant = false;
        QString howToText;
        QString openSettingsText;
        bool startsAtLogin = false;
        QString loginStatusText;
        QString loginErrorText;
        QString closingText;
        bool operator==(const Content&) const = default;
    };

    [[nodiscard]] bool isPermissionStep() const;
    void watch();
    void setStep(Step step);
    void refresh();
    [[nodiscard]] Content contentOf(Step step) const;
    void describeWelcome(Content& content) const;
    void describeInputMonitoring(Content& content) const;
    void describeAccessibility(Content& content) const;
    void describeGrant(Content& content, bool isGranted, const QString& heading) const;
    void describeDone(Content& content) const;

    AppModel& model_;
    const std::shared_ptr<DispatchQueue> mainQueue_;
    const OpenLink openLink_;
    OnboardingHelpModel help_;
    bool showsHelp_ = false;
    Content content_;
    std::unique_ptr<DispatchTimer> watching_;
};

}  // namespace tessara
