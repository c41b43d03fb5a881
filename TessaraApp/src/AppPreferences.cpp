#include "TessaraApp/AppPreferences.h"

#include "Platform/UserDefaults.h"

namespace tessara {
namespace {

namespace Key {
constexpr const char* completedOnboarding = "onboarding.completed";
constexpr const char* pausedByUser = "engine.pausedByUser";
constexpr const char* manageDeviceSettings = "device.manageSettings";
constexpr const char* reportRateHertz = "device.reportRateHertz";
constexpr const char* highResolutionWheel = "device.highResolutionWheel";
constexpr const char* leavesWheelUnchanged = "device.leavesWheelUnchanged";
constexpr const char* automaticUpdateChecks = "updates.automaticChecks";
}  // namespace Key

std::optional<bool> storedHighResolutionWheel(const UserDefaults& defaults) {
    if (const auto chosen = defaults.boolean(Key::highResolutionWheel)) return chosen;
    if (defaults.boolean(Key::leavesWheelUnchanged).value_or(false)) return std::nullopt;
    return false;
}

}  // namespace

AppPreferences::AppPreferences(UserDefaults& defaults)
    : defaults_(defaults),
      hasCompletedOnboarding_(defaults.boolean(Key::completedOnboarding).value_or(false)),
      isPausedByUser_(defaults.boolean(Key::pausedByUser).value_or(false)),
      managesDeviceSettings_(defaults.boolean(Key::manageDeviceSettings).value_or(true)),
      reportRateHertz_(defaults.integer(Key::reportRateHertz)),
      highResolutionWheel_(storedHighResolutionWheel(defaults)),
      automaticUpdateChecks_(defaults.boolean(Key::automaticUpdateChecks).value_or(true)) {}

template <typename T>
void AppPreferences::assign(T& field, const T& value, ChangeSignal changed) {
    if (value == field) return;
    field = value;
    Q_EMIT(this->*changed)();
}

void AppPreferences::setBoolean(bool& field, bool value, const char* key, ChangeSignal changed) {
    assign(field, value, changed);
    defaults_.set(key, value);
}

void AppPreferences::setHasCompletedOnboarding(bool value) {
    setBoolean(hasCompletedOnboarding_, value, Key::completedOnboarding,
               &AppPreferences::hasCompletedOnboardingChanged);
}

void AppPreferences::setPausedByUser(bool value) {
    setBoolean(isPausedByUser_, value, Key::pausedByUser, &AppPreferences::isPausedByUserChanged);
}

void AppPreferences::setManagesDeviceSettings(bool value) {
    setBoolean(managesDeviceSettings_, value, Key::manageDeviceSettings,
               &AppPreferences::managesDeviceSettingsChanged);
}

void AppPreferences::setAutomaticUpdateChecks(bool value) {
    setBoolean(automaticUpdateChecks_, value, Key::automaticUpdateChecks,
               &AppPreferences::automaticUpdateChecksChanged);
}

void AppPreferences::setReportRateHertz(std::optional<std::int64_t> value) {
    assign(reportRateHertz_, value, &AppPreferences::reportRateHertzChanged);
    if (value) {
        defaults_.set(Key::reportRateHertz, *value);
    } else {
        defaults_.remove(Key::reportRateHertz);
    }
}

void AppPreferences::setHighResolutionWheel(std::optional<bool> value) {
    assign(highResolutionWheel_, value, &AppPreferences::highResolutionWheelChanged);
    // In this order, a program that dies between the two writes has stored the old choice or the
    // new one: the second key counts only where the first is absent.
    if (value) {
        defaults_.set(Key::highResolutionWheel, *value);
        defaults_.set(Key::leavesWheelUnchanged, false);
    } else {
        defaults_.set(Key::leavesWheelUnchanged, true);
        defaults_.remove(Key::highResolutionWheel);
    }
}

}  // namespace tessara
