#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

namespace tessara {

class AppModel;
class DispatchQueue;
class DispatchTimer;

/// The onboarding window as data: which step is shown, every text of it, and what its buttons do.
/// It never makes the system prompt; it opens the right page of the system's settings, and while
/// the window is there watches for the switch and moves on by itself.
///
/// Main executor only. `contentChanged` comes once for each change that shows, and never otherwise.
class OnboardingViewModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(Step step READ step NOTIFY contentChanged)
    Q_PROPERTY(QString title READ title NOTIFY contentChanged)
    Q_PROPERTY(QString progressText READ progressText NOTIFY contentChanged)
    Q_PROPERTY(bool canGoBack READ canGoBack NOTIFY contentChanged)
    Q_PROPERTY(QString backText READ backText CONSTANT)
    Q_PROPERTY(QString primaryText READ primaryText NOTIFY contentChanged)
    Q_PROPERTY(bool isPermissionStep READ isPermissionStep NOTIFY contentChanged)
    Q_PROPERTY(QString stateSymbol READ stateSymbol NOTIFY contentChanged)
    Q_PROPERTY(QString stateText READ stateText NOTIFY contentChanged)
    Q_PROPERTY(QString leadText READ leadText NOTIFY contentChanged)
    Q_PROPERTY(QStringList bulletTexts READ bulletTexts NOTIFY contentChanged)
    Q_PROPERTY(QStringList bulletSymbols READ bulletSymbols CONSTANT)
    Q_PROPERTY(QString detailText READ detailText NOTIFY contentChanged)
    Q_PROPERTY(QString extraText READ extraText NOTIFY contentChanged)
    Q_PROPERTY(bool asksForGrant READ asksForGrant NOTIFY contentChanged)
    Q_PROPERTY(QString howToText READ howToText NOTIFY contentChanged)
    Q_PROPERTY(QString openSettingsText READ openSettingsText NOTIFY contentChanged)
    Q_PROPERTY(QString watchingText READ watchingText CONSTANT)
    Q_PROPERTY(QString promiseText READ promiseText CONSTANT)
    Q_PROPERTY(QString startAtLoginText READ startAtLoginText CONSTANT)
    Q_PROPERTY(bool startsAtLogin READ startsAtLogin WRITE setStartsAtLogin NOTIFY contentChanged)
    Q_PROPERTY(QString loginStatusText READ loginStatusText NOTIFY contentChanged)
    Q_PROPERTY(QString loginErrorText READ loginErrorText NOTIFY contentChanged)
    Q_PROPERTY(QString closingText READ closingText NOTIFY contentChanged)

  public:
    enum Step { welcome, inputMonitoring, accessibility, done };
    Q_ENUM(Step)

    /// Opens a page of the system's settings, given its link.
    using OpenLink = std::function<void(const QString& url)>;

    /// Starts at `welcome`, without a watch. The model outlives this; the queue is the main one.
    OnboardingViewModel(AppModel& model, std::shared_ptr<DispatchQueue> mainQueue,
                        OpenLink openLink);
    ~OnboardingViewModel() override;

    /// Watches the permissions while the window is there; looks at once, then every 600 ms.
    void setWatching(bool isWatching);

    /// The primary button: one step on, and on the last one the end of the onboarding.
    Q_INVOKABLE void advance();
    /// One step back, never below the first.
    Q_INVOKABLE void goBack();
    /// Opens the page where the permission of this step is granted. Permission steps only.
    Q_INVOKABLE void openSettings();

    [[nodiscard]] Step step() const { return content_.step; }
    [[nodiscard]] QString title() const { return content_.title; }
    /// "Step {n} of 4".
    [[nodiscard]] QString progressText() const { return content_.progressText; }
    [[nodiscard]] bool canGoBack() const { return content_.step != welcome; }
    [[nodiscard]] QString backText() const { return tr("Back"); }
    [[nodiscard]] QString primaryText() const { return content_.primaryText; }
    [[nodiscard]] bool isPermissionStep() const;
    /// The symbol of the line that tells how the permissions of this step stand, and its text;
    /// empty on the first step.
    [[nodiscard]] QString stateSymbol() const { return content_.stateSymbol; }
    [[nodiscard]] QString stateText() const { return content_.stateText; }
    /// What the step is about; on a permission step, why the permission is needed.
    [[nodiscard]] QString leadText() const { return content_.leadText; }
    [[nodiscard]] QStringList bulletTexts() const { return content_.bulletTexts; }
    /// One for each bullet of the first step.
    [[nodiscard]] QStringList bulletSymbols() const;
    [[nodiscard]] QString detailText() const { return content_.detailText; }
    /// Something particular about this machine; empty mostly.
    [[nodiscard]] QString extraText() const { return content_.extraText; }
    /// A permission step whose permission is not there: what to do is shown, and the button.
    [[nodiscard]] bool asksForGrant() const { return content_.asksForGrant; }
    [[nodiscard]] QString howToText() const { return content_.howToText; }
    [[nodiscard]] QString openSettingsText() const { return content_.openSettingsText; }
    [[nodiscard]] QString watchingText() const;
    [[nodiscard]] QString promiseText() const;
    [[nodiscard]] QString startAtLoginText() const { return tr("Start Tessara when I log in"); }
    [[nodiscard]] bool startsAtLogin() const { return content_.startsAtLogin; }
    void setStartsAtLogin(bool starts);
    [[nodiscard]] QString loginStatusText() const { return content_.loginStatusText; }
    /// Empty unless the system refused the last change of the switch.
    [[nodiscard]] QString loginErrorText() const { return content_.loginErrorText; }
    [[nodiscard]] QString closingText() const { return content_.closingText; }

  Q_SIGNALS:
    void contentChanged();
    /// The user is through: the window closes.
    void finished();

  private:
    struct Content {
        Step step = welcome;
        QString title;
        QString progressText;
        QString primaryText;
        QString stateSymbol;
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
    Content content_;
    std::unique_ptr<DispatchTimer> watching_;
};

}  // namespace tessara
