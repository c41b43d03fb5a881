#pragma once

#include <QDBusVariant>
#include <QObject>
#include <optional>

namespace tessara {

/// Whether the user has asked the system for dark windows. The desktop portal is asked, and
/// listened to, where there is one; where it has no opinion the application's palette decides.
class SystemAppearance : public QObject {
    Q_OBJECT

  public:
    explicit SystemAppearance(QObject* parent = nullptr);

    [[nodiscard]] bool isDark() const { return isDark_; }

    bool eventFilter(QObject* watched, QEvent* event) override;

  Q_SIGNALS:
    void isDarkChanged();

  private:
    Q_SLOT void portalSettingChanged(const QString& group, const QString& key,
                                     const QDBusVariant& value);
    void askPortal();
    void take(const QVariant& colorScheme);
    void update();

    /// What the portal said; absent without a portal and when it leaves the choice to us.
    std::optional<bool> portalIsDark_;
    bool isDark_ = false;
};

}  // namespace tessara
