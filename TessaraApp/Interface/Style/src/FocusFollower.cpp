#include "TessaraApp/Style/FocusFollower.h"

#include <QQuickWindow>

namespace tessara {

void FocusFollower::itemChange(ItemChange change, const ItemChangeData& value) {
    if (change == ItemSceneChange) {
        disconnect(following_);
        if (value.window) {
            following_ = connect(value.window, &QQuickWindow::activeFocusItemChanged, this,
                                 &FocusFollower::reveal);
        }
    }
    QQuickItem::itemChange(change, value);
}

void FocusFollower::reveal() {
    const QQuickItem* focused = window() ? window()->activeFocusItem() : nullptr;
    if (!flickable_ || !focused || !flickable_->isAncestorOf(focused)) return;
    const QRectF seen = focused->mapRectToItem(flickable_, focused->boundingRect())
                            .adjusted(0, -margin_, 0, margin_);
    const double top = flickable_->property("contentY").toDouble();
    const double end = flickable_->property("contentHeight").toDouble() - flickable_->height();
    double moved = top;
    if (seen.bottom() > flickable_->height()) moved += seen.bottom() - flickable_->height();
    if (seen.top() < 0) moved = top + seen.top();
    moved = std::max(0.0, std::min(moved, end));
    if (moved != top) flickable_->setProperty("contentY", moved);
}

}  // namespace tessara
