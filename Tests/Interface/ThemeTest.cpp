#include <QGuiApplication>
#include <QPalette>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include "TessaraApp/Style/Theme.h"

namespace tessara {
namespace {

TEST(Theme, follows_the_palette_without_a_portal_and_what_it_is_told_above_all) {
    const QPalette before = QGuiApplication::palette();
    const auto setWindow = [](const QColor& color) {
        QGuiApplication::setPalette(QPalette(color));
        QCoreApplication::processEvents();
    };
    setWindow(Qt::white);
    Theme theme;
    QSignalSpy changes(&theme, &Theme::colorsChanged);
    EXPECT_EQ(theme.colors(), ThemeColors::light());
    setWindow(Qt::black);
    EXPECT_EQ(theme.colors(), ThemeColors::dark());
    EXPECT_EQ(changes.count(), 1);
    theme.setAppearance(Theme::Appearance::dark);
    EXPECT_EQ(changes.count(), 1) << "it is dark already";
    theme.setAppearance(Theme::Appearance::light);
    setWindow(Qt::darkGray);
    EXPECT_EQ(theme.colors(), ThemeColors::light());
    EXPECT_EQ(changes.count(), 2);
    QGuiApplication::setPalette(before);
}

}  // namespace
}  // namespace tessara
