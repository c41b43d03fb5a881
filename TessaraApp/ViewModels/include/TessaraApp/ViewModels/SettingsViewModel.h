#pragma once

#include <QObject>
#include <QString>
#include <QVariantList>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "TessaraApp/ViewModels/ProfileBinding.h"
#include "TessaraApp/ViewModels/ProfileScopeModel.h"
#include "TessaraApp/ViewModels/ScrollPageModel.h"

namespace tessara {

class AppModel;
class Notice;

/// How one tab stands in the bar.
struct SettingsTab {
    Q_GADGET
    QML_VALUE_TYPE(settingsTab)
    Q_PROPERTY(QString title MEMBER title CONSTANT)
    Q_PROPERTY(QString symbol MEMBER symbol CONSTANT)

  public:
    QString title;
    QString symbol;
};

/// The settings window: its tabs, the notices above the pages, the profile that the pages edit, and
/// the pages. Which tab and which profile are picked is forgotten with the window.
///
/// Main thread. A property that stays equal tells nobody.
class SettingsViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the program")
    Q_PROPERTY(QVariantList tabs READ tabs CONSTANT)
    Q_PROPERTY(int selectedTab READ selectedTab WRITE setSelectedTab NOTIFY selectedTabChanged)
    Q_PROPERTY(QString windowTitle READ windowTitle NOTIFY selectedTabChanged)
    Q_PROPERTY(QString pageSymbol READ pageSymbol NOTIFY selectedTabChanged)
    Q_PROPERTY(bool isInProfileScope READ isInProfileScope NOTIFY selectedTabChanged)
    Q_PROPERTY(QString tabBarLabel READ tabBarLabel CONSTANT)
    Q_PROPERTY(QString comingText READ comingText CONSTANT)
    Q_PROPERTY(QVariantList notices READ notices NOTIFY noticesChanged)
    Q_PROPERTY(bool hasTray READ hasTray NOTIFY hasTrayChanged)
    Q_PROPERTY(QString noTrayText READ noTrayText CONSTANT)
    Q_PROPERTY(QString quitText READ quitText CONSTANT)
    Q_PROPERTY(tessara::ProfileScopeModel* profileScope READ profileScope CONSTANT)
    Q_PROPERTY(tessara::ScrollPageModel* scrollPage READ scrollPage CONSTANT)

  public:
    /// In the order of the bar.
    enum class Tab { scroll, buttons, pointer, profiles, device, updates };
    Q_ENUM(Tab)

    /// The model outlives this.
    explicit SettingsViewModel(AppModel& model, QObject* parent = nullptr);
    ~SettingsViewModel() override;

    /// A `SettingsTab` for each `Tab`.
    [[nodiscard]] QVariantList tabs() const;
    /// The index of a `Tab`; another is ignored.
    [[nodiscard]] int selectedTab() const { return static_cast<int>(selectedTab_); }
    void setSelectedTab(int index);
    /// The title of the selected tab, which is the window's.
    [[nodiscard]] QString windowTitle() const;
    /// The symbol of the selected tab.
    [[nodiscard]] QString pageSymbol() const;
    /// Whether the selected page edits one profile.
    [[nodiscard]] bool isInProfileScope() const;

    /// What a screen reader calls the bar, and what a page says that is not made yet.
    [[nodiscard]] QString tabBarLabel() const;
    [[nodiscard]] QString comingText() const;

    /// `Notice`s, from top to bottom: a document that cannot be read, one that could not be
    /// written, what holds the program up, and what this session keeps it from. They live until
    /// `noticesChanged`.
    [[nodiscard]] QVariantList notices() const;

    /// Whether the desktop has a tray with the program's menu; taken for granted at first. Without
    /// one the window tells so and has the way out of the program.
    [[nodiscard]] bool hasTray() const { return hasTray_; }
    void setHasTray(bool hasTray);
    [[nodiscard]] QString noTrayText() const;
    [[nodiscard]] QString quitText() const;
    Q_INVOKABLE void quit() { Q_EMIT quitRequested(); }

    /// The profile that the pages edit.
    [[nodiscard]] ProfileBinding& profile() { return profile_; }
    [[nodiscard]] ProfileScopeModel* profileScope() { return &profileScope_; }
    [[nodiscard]] ScrollPageModel* scrollPage() { return &scrollPage_; }

  Q_SIGNALS:
    void selectedTabChanged();
    void noticesChanged();
    void hasTrayChanged();
    /// The user wants to end the program.
    void quitRequested();
    /// The user wants to finish setting up; whoever has the onboarding window shows it.
    void onboardingRequested();

  private:
    void refreshNotices();
    [[nodiscard]] std::vector<std::unique_ptr<Notice>> makeNotices();
    [[nodiscard]] std::unique_ptr<Notice> makeProblemNotice();
    [[nodiscard]] std::unique_ptr<Notice> makeSaveNotice();
    [[nodiscard]] std::unique_ptr<Notice> makeStateNotice();
    [[nodiscard]] std::unique_ptr<Notice> makeLimitationNotice();

    AppModel& model_;
    ProfileBinding profile_;
    ProfileScopeModel profileScope_;
    ScrollPageModel scrollPage_;
    Tab selectedTab_ = Tab::scroll;
    bool hasTray_ = true;
    /// The limitation of this session that the user has read.
    std::optional<std::string> knownLimitation_;
    std::vector<std::unique_ptr<Notice>> notices_;
};

}  // namespace tessara
