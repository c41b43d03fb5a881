#include <QDBusConnection>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QPalette>

#include <gtest/gtest.h>

#include "TessaraApp/Style/Theme.h"
#include "Waiting.h"

namespace tessara {
namespace {

/// The desktop's portal, with the one setting that tells whether the user wants dark windows.
class Portal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

  public:
    explicit Portal(uint scheme) : scheme_(scheme) {
        bus_.registerObject("/org/freedesktop/portal/desktop", this,
                            QDBusConnection::ExportAllContents);
        bus_.registerService("org.freedesktop.portal.Desktop");
    }
    void change(const QString& key, uint scheme) {
        scheme_ = scheme;
        Q_EMIT SettingChanged("org.freedesktop.appearance", key, QDBusVariant(scheme));
    }

  public Q_SLOTS:
    /// Wrapped twice, as portals answer this call.
    QDBusVariant Read(const QString& /*group*/, const QString& /*key*/) {
        return QDBusVariant(QVariant::fromValue(QDBusVariant(scheme_)));
    }

  Q_SIGNALS:
    void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);

  private:
    QDBusConnection bus_ = QDBusConnection::connectToBus(QDBusConnection::SessionBus, "portal");
    uint scheme_;
};

TEST(SystemAppearance, is_what_the_portal_says_and_the_palette_where_it_has_no_opinion) {
    constexpr uint none = 0;
    constexpr uint dark = 1;
    constexpr uint light = 2;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    int argc = 0;
    const QGuiApplication application(argc, nullptr);
    QGuiApplication::setPalette(QPalette(Qt::white));
    Portal portal(dark);
    const Theme theme;
    const auto becomes = [&](const ThemeColors& colors) {
        return waitUntil([&] { return theme.colors() == colors; });
    };
    EXPECT_EQ(theme.colors(), ThemeColors::light());
    EXPECT_TRUE(becomes(ThemeColors::dark())) << "the portal has answered";
    portal.change("color-scheme", light);
    EXPECT_TRUE(becomes(ThemeColors::light()));
    QGuiApplication::setPalette(QPalette(Qt::black));
    portal.change("accent-color", dark);
    portal.change("color-scheme", none);
    EXPECT_TRUE(becomes(ThemeColors::dark())) << "the palette's turn";
    portal.change("color-scheme", light);
    EXPECT_TRUE(becomes(ThemeColors::light()));
}

}  // namespace
}  // namespace tessara

#include "SystemAppearanceTest.moc"
