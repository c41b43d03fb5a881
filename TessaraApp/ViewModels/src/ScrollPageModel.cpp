#include "TessaraApp/ViewModels/ScrollPageModel.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "TessaraApp/ViewModels/ProfileBinding.h"
#include "TessaraCore/ScrollSettings.h"

namespace tessara {
namespace {

constexpr ScrollSettings defaults;

/// The choices of the modifier that must be held, after "always".
constexpr auto activationModifiers = std::to_array(
    {ModifierFlags::command, ModifierFlags::option, ModifierFlags::control, ModifierFlags::shift});

/// The choices of the shape of a glide.
constexpr auto shapes = std::to_array({Easing::easeOut, Easing::linear, Easing::easeInOut});

template <typename Values, typename Predicate>
int indexWhere(const Values& values, Predicate predicate) {
    const auto found = std::ranges::find_if(values, predicate);
    return found == values.end() ? -1 : static_cast<int>(std::distance(values.begin(), found));
}

/// The first choice whose modifier is among those kept; 0, "always", without one.
int indexOfActivation(const ScrollSettings& settings) {
    const ModifierFlags kept = settings.activationModifiers.value_or(ModifierFlags::none);
    return 1 + indexWhere(activationModifiers,
                          [kept](ModifierFlags flag) { return kept.contains(flag); });
}

std::optional<ModifierFlags> activationAt(int index) {
    if (index <= 0) return std::nullopt;
    return activationModifiers.at(static_cast<std::size_t>(index) - 1);
}

/// The whole part of a number, and its unit.
auto wholeWith(const QString& unit) {
    return [unit](double value) { return unit.arg(QString::number(std::trunc(value), 'f', 0)); };
}

}  // namespace

template <typename T>
SettingAccess<T> ScrollPageModel::access(std::function<T(const ScrollSettings&)> read,
                                         std::function<void(ScrollSettings&, const T&)> write,
                                         Needs needs) {
    return {.read = [this, read = std::move(read)] { return read(profile_.profile().scroll); },
            .write =
                [this, write = std::move(write)](const T& value) {
                    profile_.edit([&](Profile& profile) { write(profile.scroll, value); });
                },
            .isEnabled = isMet(needs)};
}

template <typename T>
SettingAccess<T> ScrollPageModel::field(T ScrollSettings::* member, Needs needs) {
    return access<T>(
        [member](const ScrollSettings& settings) { return settings.*member; },
        [member](ScrollSettings& settings, const T& value) { settings.*member = value; }, needs);
}

std::function<bool()> ScrollPageModel::isMet(Needs needs) const {
    return [this, needs] {
        const ScrollSettings& settings = profile_.profile().scroll;
        return needs == Needs::nothing ||
               (settings.isEnabled && (needs == Needs::smoothing || settings.accelerationEnabled));
    };
}

ToggleSetting* ScrollPageModel::makeAxis(QString title, QString help, ScrollAxes axis) {
    return new ToggleSetting(
        std::move(title), std::move(help), true,
        access<bool>(
            [axis](const ScrollSettings& settings) { return settings.enabledAxes.contains(axis); },
            [axis](ScrollSettings& settings, bool isOn) {
                settings.enabledAxes =
                    isOn ? settings.enabledAxes | axis : settings.enabledAxes - axis;
            },
            Needs::smoothing),
        this);
}

ChoiceSetting* ScrollPageModel::makeActivation() {
    return new ChoiceSetting(
        tr("Smooth scrolling applies"),
        tr("In Photoshop, Figma and Miro, ⌘ + wheel is zoom, and that is where the staircase is "
           "worst. Pick a modifier here if you want ordinary document scrolling left exactly as "
           "macOS does it and only zoom smoothed."),
        {tr("Always"), tr("Only while ⌘ Command is held"), tr("Only while ⌥ Option is held"),
         tr("Only while ⌃ Control is held"), tr("Only while ⇧ Shift is held")},
        0,
        access<int>(
            indexOfActivation,
            [](ScrollSettings& settings, int index) {
                settings.activationModifiers = activationAt(index);
            },
            Needs::smoothing),
        this);
}

ChoiceSetting* ScrollPageModel::makeShape() {
    const auto indexOf = [](Easing easing) {
        return indexWhere(shapes, [easing](Easing listed) { return listed == easing; });
    };
    return new ChoiceSetting(
        tr("Glide shape"),
        tr("How the movement is spread over the glide. Ease out responds instantly and settles; "
           "ease in and out is gentler at both ends, which reads better when the wheel is driving "
           "a zoom."),
        {tr("Ease out — fast start, gentle stop"), tr("Linear — constant speed"),
         tr("Ease in and out — smoothest for zoom")},
        indexOf(defaults.easing),
        access<int>([indexOf](const ScrollSettings& settings) { return indexOf(settings.easing); },
                    [](ScrollSettings& settings, int index) {
                        settings.easing = shapes.at(static_cast<std::size_t>(index));
                    },
                    Needs::smoothing),
        this);
}

ScrollPageModel::ScrollPageModel(AppModel& model, ProfileBinding& profile, QObject* parent)
    : QObject(parent),
      profile_(profile),
      smoothing(new ToggleSetting(
          tr("Smooth the scroll wheel"),
          tr("Your mouse reports one big jump per wheel click. With this on, Tessara swallows that "
             "jump and plays it back as a short, smooth glide — the way a trackpad scrolls. Turn "
             "it off and the wheel behaves exactly as macOS ships it."),
          defaults.isEnabled, field(&ScrollSettings::isEnabled, Needs::nothing), this)),
      vertical(makeAxis(tr("Up and down"),
                        tr("The normal wheel. Leave this on unless you only want the tilt wheel "
                           "smoothed."),
                        ScrollAxes::vertical)),
      horizontal(makeAxis(tr("Left and right"), tr("The tilt wheel, if your mouse has one."),
                          ScrollAxes::horizontal)),
      activation(makeActivation()),
      distance(new SliderSetting(
          tr("Distance per wheel click"),
          tr("How far one click of the wheel moves the page, before acceleration. 120 points is "
             "roughly what macOS does for three lines of text. Higher means each click covers "
             "more ground."),
          {.from = 10,
           .to = 400,
           .step = 5,
           .precisionStep = 1,
           .defaultValue = defaults.pixelsPerDetent,
           .format = wholeWith(tr("%1 pt"))},
          field(&ScrollSettings::pixelsPerDetent, Needs::smoothing), this)),
      length(new SliderSetting(
          tr("Glide length"),
          tr("How long the glide from one wheel click lasts. Short feels immediate and a little "
             "abrupt; long feels like a trackpad flick but takes a moment to settle."),
          {.from = 40,
           .to = 600,
           .step = 10,
           .precisionStep = 1,
           .defaultValue = defaults.durationMillis,
           .format = wholeWith(tr("%1 ms"))},
          field(&ScrollSettings::durationMillis, Needs::smoothing), this)),
      shape(makeShape()),
      inversion(new ToggleSetting(
          tr("Reverse the direction"),
          tr("Flips the wheel direction for smoothed scrolling only. This is independent of the "
             "system-wide “Natural scrolling” setting, so you can have one direction on the wheel "
             "and another on a trackpad."),
          defaults.isInverted, field(&ScrollSettings::isInverted, Needs::smoothing), this)),
      acceleration(new ToggleSetting(
          tr("Speed up when you spin the wheel quickly"),
          tr("Wheel clicks that arrive in quick succession travel further each time, so a long "
             "document takes a flick rather than a minute of clicking."),
          defaults.accelerationEnabled,
          field(&ScrollSettings::accelerationEnabled, Needs::smoothing), this)),
      gain(new SliderSetting(
          tr("How much faster"),
          tr("Extra distance added for each additional quick click. Higher gets you down the page "
             "sooner and makes precise stops harder."),
          {.from = 0,
           .to = 2,
           .step = 0.05,
           .precisionStep = 0.01,
           .defaultValue = defaults.accelerationGain,
           .format =
               [](double value) {
                   return tr("+%1% per click").arg(QString::number(value * 100, 'f', 0));
               }},
          field(&ScrollSettings::accelerationGain, Needs::acceleration), this)),
      limit(new SliderSetting(
          tr("Speed limit"),
          tr("The most a fast flick can be multiplied by, no matter how quickly you spin. This is "
             "what keeps a free-spin burst from launching you to the end of the document."),
          {.from = 1,
           .to = 10,
           .step = 0.5,
           .precisionStep = 0.1,
           .defaultValue = defaults.maxAccelerationMultiplier,
           .format = [](double value) { return tr("%1×").arg(QString::number(value, 'f', 1)); }},
          field(&ScrollSettings::maxAccelerationMultiplier, Needs::acceleration), this)),
      preview(new ScrollPreviewModel(model, profile, this)),
      interval(new SliderSetting(
          tr("Time between steps"),
          tr("How often Tessara emits a step of the glide. 8 ms is about 120 per second, which "
             "matches ProMotion displays. Raising it costs less CPU and looks choppier."),
          {.from = 4,
           .to = 32,
           .step = 1,
           .precisionStep = 1,
           .defaultValue = defaults.frameIntervalMillis,
           .format = wholeWith(tr("%1 ms"))},
          field(&ScrollSettings::frameIntervalMillis, Needs::smoothing), this)),
      ceiling(new SliderSetting(
          tr("Maximum glide in flight"),
          tr("A ceiling on how much travel can be queued up at once. Without it, a long free-spin "
             "of the wheel keeps sliding well after your hand has stopped."),
          {.from = 500,
           .to = 20000,
           .step = 500,
           .precisionStep = 1,
           .defaultValue = defaults.maxInFlightPixels,
           .format = wholeWith(tr("%1 pt"))},
          field(&ScrollSettings::maxInFlightPixels, Needs::smoothing), this)) {
    connect(smoothing, &ToggleSetting::isOnChanged, this,
            &ScrollPageModel::isAdvancedEnabledChanged);
    for (Setting* setting : findChildren<Setting*>(Qt::FindDirectChildrenOnly)) {
        connect(&profile, &ProfileBinding::profileChanged, setting, &Setting::refresh);
    }
}

QString ScrollPageModel::smoothingTitle() const {
    return tr("Smooth Scrolling");
}

QString ScrollPageModel::directionsTitle() const {
    return tr("Which Directions");
}

QString ScrollPageModel::feelTitle() const {
    return tr("Feel");
}

QString ScrollPageModel::accelerationTitle() const {
    return tr("Acceleration");
}

QString ScrollPageModel::previewTitle() const {
    return tr("Try It");
}

QString ScrollPageModel::advancedTitle() const {
    return tr("Advanced");
}

QString ScrollPageModel::resetAllText() const {
    return tr("Reset this profile's scrolling to Tessara's defaults");
}

void ScrollPageModel::resetAll() {
    profile_.edit([](Profile& profile) { profile.scroll = defaults; });
}

}  // namespace tessara
