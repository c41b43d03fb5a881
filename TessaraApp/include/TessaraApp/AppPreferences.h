#pragma once

#include <QObject>
#include <cstdint>
#include <optional>

namespace tessara {

class UserDefaults;

/// The settings of this machine and this mouse, which are no part of the portable document. This
/// keeps them and says when they change; what follows from a change is `AppModel`'s to do, so that
/// most of them are set through it.
///
/// They are read once, at construction: what another program stores is not seen before the next
/// launch. A write is stored at once. One of an equal value is stored too, and tells nobody.
/// Whoever is told of a change is told before it is stored. Nothing fails here: what cannot be
/// stored holds for this run, as `UserDefaults` promises.
///
/// Main executor only. The keys, which others may set where the platform keeps them:
///
/// | Key | Type | Absent |
/// |---|---|---|
/// | onboarding.completed | boolean | false |
/// | engine.pausedByUser | boolean | false |
/// | device.manageSettings | boolean | true |
/// | device.reportRateHertz | integer | the mouse's own rate |
/// | device.highResolutionWheel | boolean | see the next |
/// | device.leavesWheelUnchanged | boolean | false: the normal resolution |
/// | updates.automaticChecks | boolean | true |
class AppPreferences : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool hasCompletedOnboarding READ hasCompletedOnboarding WRITE
                   setHasCompletedOnboarding NOTIFY hasCompletedOnboardingChanged)
    Q_PROPERTY(
        bool isPausedByUser READ isPausedByUser WRITE setPausedByUser NOTIFY isPausedByUserChanged)
    Q_PROPERTY(bool managesDeviceSettings READ managesDeviceSettings WRITE setManagesDeviceSettings
                   NOTIFY managesDeviceSettingsChanged)
    Q_PROPERTY(bool automaticUpdateChecks READ automaticUpdateChecks WRITE setAutomaticUpdateChecks
                   NOTIFY automaticUpdateChecksChanged)

  public:
    /// A value that is absent, or of a type that it cannot have, is the factory's. The defaults
    /// outlive this.
    explicit AppPreferences(UserDefaults& defaults);

    /// The user went through the onboarding to its last button; it is not shown by itself again.
    [[nodiscard]] bool hasCompletedOnboarding() const { return hasCompletedOnboarding_; }
    void setHasCompletedOnboarding(bool value);

    /// The user paused the program, in this run or an earlier one.
    [[nodiscard]] bool isPausedByUser() const { return isPausedByUser_; }
    void setPausedByUser(bool value);

    /// The program may write resolution, report rate and wheel mode to the mouse.
    [[nodiscard]] bool managesDeviceSettings() const { return managesDeviceSettings_; }
    void setManagesDeviceSettings(bool value);

    /// The report rate that the user chose, in Hz, which the mouse need not know; nothing leaves
    /// the mouse's own.
    [[nodiscard]] std::optional<std::int64_t> reportRateHertz() const { return reportRateHertz_; }
    void setReportRateHertz(std::optional<std::int64_t> value);

    /// The wheel's resolution that the user chose; nothing leaves the wheel as it is. It is the
    /// normal one until the user chooses.
    [[nodiscard]] std::optional<bool> highResolutionWheel() const { return highResolutionWheel_; }
    void setHighResolutionWheel(std::optional<bool> value);

    /// The updater may check on its own.
    [[nodiscard]] bool automaticUpdateChecks() const { return automaticUpdateChecks_; }
    void setAutomaticUpdateChecks(bool value);

  Q_SIGNALS:
    void hasCompletedOnboardingChanged();
    void isPausedByUserChanged();
    void managesDeviceSettingsChanged();
    void reportRateHertzChanged();
    void highResolutionWheelChanged();
    void automaticUpdateChecksChanged();

  private:
    using ChangeSignal = void (AppPreferences::*)();

    /// Takes the value over and says so when it differs.
    template <typename T>
    void assign(T& field, const T& value, ChangeSignal changed);
    void setBoolean(bool& field, bool value, const char* key, ChangeSignal changed);

    UserDefaults& defaults_;
    bool hasCompletedOnboarding_;
    bool isPausedByUser_;
    bool managesDeviceSettings_;
    std::optional<std::int64_t> reportRateHertz_;
    std::optional<bool> highResolutionWheel_;
    bool automaticUpdateChecks_;
};

}  // namespace tessara
