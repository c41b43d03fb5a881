#pragma once

#include <QPointer>
#include <QQuickItem>

#include <QtQml/qqmlregistration.h>

namespace tessara {

/// Scrolls a list or a page so that whatever has the keyboard's focus inside of it can be seen.
/// Stands anywhere within the window whose focus it follows; itself it shows nothing.
class FocusFollower : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    /// The `Flickable` to scroll.
    Q_PROPERTY(QQuickItem* flickable MEMBER flickable_ REQUIRED)
    /// The room to leave above and below what has the focus, in pixels.
    Q_PROPERTY(double margin MEMBER margin_)

  public:
    explicit FocusFollower(QQuickItem* parent = nullptr) : QQuickItem(parent) {}

  protected:
    void itemChange(ItemChange change, const ItemChangeData& value) override;

  private:
    void reveal();

    QPointer<QQuickItem> flickable_;
    QMetaObject::Connection following_;
    double margin_ = 24;
};

}  // namespace tessara
