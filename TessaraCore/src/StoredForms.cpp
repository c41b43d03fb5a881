#include "ConfigDecoding.h"
#include "TessaraCore/Config.h"
#include "TessaraCore/JSONCoding.h"

namespace tessara {

template <>
inline constexpr auto storedFields<ScrollSettings> = std::tuple(
    StoredField{"isEnabled", &ScrollSettings::isEnabled},
    StoredField{"enabledAxes", &ScrollSettings::enabledAxes},
    StoredField{"activationModifiers", &ScrollSettings::activationModifiers},
    StoredField{"durationMillis", &ScrollSettings::durationMillis},
    StoredField{"easing", &ScrollSettings::easing},
    StoredField{"pixelsPerDetent", &ScrollSettings::pixelsPerDetent},
    StoredField{"frameIntervalMillis", &ScrollSettings::frameIntervalMillis},
    StoredField{"maxInFlightPixels", &ScrollSettings::maxInFlightPixels},
    StoredField{"isInverted", &ScrollSettings::isInverted},
    StoredField{"accelerationEnabled", &ScrollSettings::accelerationEnabled},
    StoredField{"accelerationWindowMillis", &ScrollSettings::accelerationWindowMillis},
    StoredField{"accelerationGain", &ScrollSettings::accelerationGain},
    StoredField{"maxAccelerationMultiplier", &ScrollSettings::maxAccelerationMultiplier});

template <>
inline constexpr auto storedFields<AccelerationOff> = std::tuple();
template <>
inline constexpr auto storedFields<AccelerationCurve> = std::tuple(
    StoredField{"exponent", &AccelerationCurve::exponent},
    StoredField{"thresholdCountsPerSecond", &AccelerationCurve::thresholdCountsPerSecond},
    StoredField{"maxGain", &AccelerationCurve::maxGain});
template <>
inline constexpr auto storedCases<PointerAcceleration> =
    std::to_array<std::string_view>({"off", "curve"});

template <>
inline constexpr auto storedFields<PointerCurve> =
    std::tuple(StoredField{"sensitivity", &PointerCurve::sensitivity},
               StoredField{"acceleration", &PointerCurve::acceleration});
template <>
inline constexpr auto storedFields<PointerSettings> = std::tuple(
    StoredField{"isEnabled", &PointerSettings::isEnabled},
    StoredField{"dpi", &PointerSettings::dpi}, StoredField{"curve", &PointerSettings::curve});

/// What every case that is about a key looks like.
template <typename T>
inline constexpr auto keyFields =
    std::tuple(StoredField{"code", &T::code}, StoredField{"modifiers", &T::modifiers});

template <>
inline constexpr auto storedFields<KeyStep> = keyFields<KeyStep>;
template <>
inline constexpr auto storedFields<KeyDownStep> = keyFields<KeyDownStep>;
template <>
inline constexpr auto storedFields<KeyUpStep> = keyFields<KeyUpStep>;
template <>
inline constexpr auto storedFields<DelayStep> =
    std::tuple(StoredField{"millis", &DelayStep::millis});
template <>
inline constexpr auto storedFields<MouseButtonStep> =
    std::tuple(StoredField{"number", &MouseButtonStep::number});
template <>
inline constexpr auto storedCases<MacroStep> =
    std::to_array<std::string_view>({"key", "keyDown", "keyUp", "delay", "mouseButton"});

template <>
inline constexpr auto storedFields<PassThroughAction> = std::tuple();
template <>
inline constexpr auto storedFields<KeyStrokeAction> = keyFields<KeyStrokeAction>;
template <>
inline constexpr auto storedFields<SequenceAction> =
    std::tuple(StoredField{"_0", &SequenceAction::steps});
template <>
inline constexpr auto storedFields<HoldAction> = keyFields<HoldAction>;
template <>
inline constexpr auto storedFields<RepeatWhileHeldAction> =
    std::tuple(StoredField{"step", &RepeatWhileHeldAction::step},
               StoredField{"intervalMillis", &RepeatWhileHeldAction::intervalMillis});
template <>
inline constexpr auto storedFields<DPIShiftAction> =
    std::tuple(StoredField{"toDPI", &DPIShiftAction::toDPI});
template <>
inline constexpr auto storedFields<LaunchAppAction> =
    std::tuple(StoredField{"bundleID", &LaunchAppAction::bundleID});
template <>
inline constexpr auto storedFields<RunShortcutAction> =
    std::tuple(StoredField{"name", &RunShortcutAction::name});
template <>
inline constexpr auto storedCases<Action> =
    std::to_array<std::string_view>({"passThrough", "keyStroke", "sequence", "hold",
                                     "repeatWhileHeld", "dpiShift", "launchApp", "runShortcut"});

template <>
inline constexpr auto storedFields<ButtonBinding> =
    std::tuple(StoredField{"button", &ButtonBinding::button},
               StoredField{"modifiers", &ButtonBinding::modifiers},
               StoredField{"action", &ButtonBinding::action},
               StoredField{"isEnabled", &ButtonBinding::isEnabled});

template <>
inline constexpr auto storedFields<AnyBundleID> = std::tuple();
template <>
inline constexpr auto storedFields<ExactBundleID> =
    std::tuple(StoredField{"_0", &ExactBundleID::text});
template <>
inline constexpr auto storedFields<BundleIDPrefix> =
    std::tuple(StoredField{"_0", &BundleIDPrefix::text});
template <>
inline constexpr auto storedCases<BundleIDPattern> =
    std::to_array<std::string_view>({"any", "exact", "prefix"});

template <>
inline constexpr auto storedFields<Rule> =
    std::tuple(StoredField{"id", &Rule::id}, StoredField{"pattern", &Rule::pattern},
               StoredField{"profileID", &Rule::profileID}, StoredField{"priority", &Rule::priority},
               StoredField{"isEnabled", &Rule::isEnabled});
template <>
inline constexpr auto storedFields<RuleSet> =
    std::tuple(StoredField{"rules", &RuleSet::rules},
               StoredField{"defaultProfileID", &RuleSet::defaultProfileID});

template <>
inline constexpr auto storedFields<Profile> =
    std::tuple(StoredField{"id", &Profile::id}, StoredField{"name", &Profile::name},
               StoredField{"scroll", &Profile::scroll}, StoredField{"pointer", &Profile::pointer},
               StoredField{"buttons", &Profile::buttons});

template <>
inline constexpr auto storedFields<Config> = std::tuple(
    StoredField{"schemaVersion", &Config::schemaVersion},
    StoredField{"isEnabled", &Config::isEnabled}, StoredField{"profiles", &Config::profiles},
    StoredField{"ruleSet", &Config::ruleSet});

TESSARA_DEFINE_STORED_FORM(ModifierFlags)
TESSARA_DEFINE_STORED_FORM(DeviceID)
TESSARA_DEFINE_STORED_FORM(ScrollAxis)
TESSARA_DEFINE_STORED_FORM(ScrollAxes)
TESSARA_DEFINE_STORED_FORM(Easing)
TESSARA_DEFINE_STORED_FORM(ScrollSettings)
TESSARA_DEFINE_STORED_FORM(PointerAcceleration)
TESSARA_DEFINE_STORED_FORM(PointerCurve)
TESSARA_DEFINE_STORED_FORM(PointerSettings)
TESSARA_DEFINE_STORED_FORM(MacroStep)
TESSARA_DEFINE_STORED_FORM(Action)
TESSARA_DEFINE_STORED_FORM(ButtonBinding)
TESSARA_DEFINE_STORED_FORM(BundleIDPattern)
TESSARA_DEFINE_STORED_FORM(Rule)
TESSARA_DEFINE_STORED_FORM(RuleSet)
TESSARA_DEFINE_STORED_FORM(Profile)
TESSARA_DEFINE_STORED_FORM(Config)

std::expected<Config, DecodingError> decodeConfig(const JSONDocument& document) {
    return json::decodeDocument<Config>(document);
}

}  // namespace tessara
