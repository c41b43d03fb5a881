#include "TessaraApp/ViewModels/Setting.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tessara {
namespace {

/// The decimal number that a sum of decimal steps stands for: 0.15, not 0.15000000000000002.
double withoutRoundingNoise(double value) {
    constexpr double decimals = 1e9;
    return std::round(value * decimals) / decimals;
}

}  // namespace

Setting::Setting(QString title, QString help, std::function<bool()> readEnabled, QObject* parent)
    : QObject(parent),
      title_(std::move(title)),
      help_(std::move(help)),
      readEnabled_(std::move(readEnabled)) {
    if (readEnabled_) isEnabled_ = readEnabled_();
}

QString Setting::resetLabel() const {
    return tr("Reset %1 to default").arg(title_);
}

void Setting::refresh() {
    refreshValue();
    const bool isEnabled = !readEnabled_ || readEnabled_();
    if (std::exchange(isEnabled_, isEnabled) != isEnabled) Q_EMIT isEnabledChanged();
}

ToggleSetting::ToggleSetting(QString title, QString help, bool defaultValue,
                             SettingAccess<bool> access, QObject* parent)
    : Setting(std::move(title), std::move(help), access.isEnabled, parent),
      defaultValue_(defaultValue),
      access_(std::move(access)),
      isOn_(access_.read()) {}

void ToggleSetting::turn(bool isOn) {
    if (isOn != isOn_) access_.write(isOn);
}

void ToggleSetting::reset() {
    access_.write(defaultValue_);
}

void ToggleSetting::refreshValue() {
    const bool isOn = access_.read();
    if (std::exchange(isOn_, isOn) != isOn) Q_EMIT isOnChanged();
}

ChoiceSetting::ChoiceSetting(QString title, QString help, QStringList labels, int defaultIndex,
                             SettingAccess<int> access, QObject* parent)
    : Setting(std::move(title), std::move(help), access.isEnabled, parent),
      labels_(std::move(labels)),
      defaultIndex_(defaultIndex),
      access_(std::move(access)),
      currentIndex_(access_.read()) {}

void ChoiceSetting::choose(int index) {
    access_.write(index);
}

void ChoiceSetting::reset() {
    access_.write(defaultIndex_);
}

void ChoiceSetting::refreshValue() {
    const int index = access_.read();
    if (std::exchange(currentIndex_, index) != index) Q_EMIT currentIndexChanged();
}

SliderSetting::SliderSetting(QString title, QString help, Range range, SettingAccess<double> access,
                             QObject* parent)
    : Setting(std::move(title), std::move(help), access.isEnabled, parent),
      range_(std::move(range)),
      access_(std::move(access)),
      value_(access_.read()) {}

double SliderSetting::position() const {
    return std::clamp(value_, range_.from, range_.to);
}

void SliderSetting::slideTo(double position) {
    // What the slider says when it is set to the position that is shown is no wish of the user's.
    if (position == this->position()) return;
    write(range_.from + std::round((position - range_.from) / range_.step) * range_.step);
}

void SliderSetting::setTo(double value) {
    if (value != value_) write(value);
}

void SliderSetting::stepUp() {
    write(value_ + range_.precisionStep);
}

void SliderSetting::stepDown() {
    write(value_ - range_.precisionStep);
}

void SliderSetting::reset() {
    access_.write(range_.defaultValue);
}

void SliderSetting::write(double value) {
    access_.write(std::clamp(withoutRoundingNoise(value), range_.from, range_.to));
}

void SliderSetting::refreshValue() {
    const double value = access_.read();
    if (std::exchange(value_, value) != value) Q_EMIT valueChanged();
}

}  // namespace tessara
