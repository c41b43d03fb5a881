#include "TessaraApp/Style/Theme.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QGuiApplication>

#include "SystemAppearance.h"

namespace tessara {
namespace {

int textSize(double ratio) {
    return qRound(QFontInfo(QGuiApplication::font()).pixelSize() * ratio);
}

}  // namespace

Theme::Theme(QObject* parent)
    : QObject(parent),
      system_(std::make_unique<SystemAppearance>()),
      bodySize_(textSize(1)),
      smallSize_(textSize(0.9)),
      titleSize_(textSize(1.15)),
      headlineSize_(textSize(1.7)),
      fixedFamily_(QFontDatabase::systemFont(QFontDatabase::FixedFont).family()),
      colors_(&ThemeColors::light()) {
    connect(system_.get(), &SystemAppearance::isDarkChanged, this, &Theme::update);
    update();
}

Theme::~Theme() = default;

void Theme::setAppearance(Appearance appearance) {
    appearance_ = appearance;
    update();
}

void Theme::update() {
    const bool isDark =
        appearance_ == Appearance::system ? system_->isDark() : appearance_ == Appearance::dark;
    const ThemeColors* colors = isDark ? &ThemeColors::dark() : &ThemeColors::light();
    if (colors == colors_) return;
    colors_ = colors;
    Q_EMIT colorsChanged();
}

void Theme::setMotionMillis(int millis) {
    if (millis == motionMillis_) return;
    motionMillis_ = millis;
    Q_EMIT motionMillisChanged();
}

}  // namespace tessara
