#include "TessaraApp/Interface/GlideChart.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

#include "TessaraCore/ScrollPlan.h"

namespace tessara {
namespace {

constexpr double margin = 8;

}  // namespace

GlideChart::GlideChart(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    connect(this, &GlideChart::colorsChanged, this, [this] { update(); });
}

void GlideChart::setPreview(ScrollPreviewModel* preview) {
    if (preview == preview_) return;
    if (preview_) preview_->disconnect(this);
    preview_ = preview;
    if (preview_) {
        connect(preview_, &ScrollPreviewModel::planChanged, this, [this] { update(); });
    }
    update();
    Q_EMIT previewChanged();
}

QPolygonF GlideChart::lineOf(const std::optional<ScrollPlan>& plan, QSizeF canvas) {
    if (!plan || plan->durationMillis <= 0 || plan->totalPixelDelta == 0) return {};
    const double width = std::max(canvas.width() - 2 * margin, 1.0);
    const double height = std::max(canvas.height() - 2 * margin, 1.0);
    const double baseline = canvas.height() - margin;
    const double total = std::abs(static_cast<double>(plan->totalPixelDelta));

    QPolygonF line{{margin, baseline}};
    double travelled = 0;
    for (const ScrollStep& step : plan->steps) {
        travelled += std::abs(static_cast<double>(step.pixelDelta));
        line.append({margin + width * std::min(step.offsetMillis / plan->durationMillis, 1.0),
                     baseline - height * std::min(travelled / total, 1.0)});
    }
    return line;
}

void GlideChart::paint(QPainter* painter) {
    painter->setRenderHint(QPainter::Antialiasing);
    const double baseline = height() - margin;
    QColor faint = baselineColor_;
    faint.setAlphaF(0.35F);
    painter->setPen(QPen(faint, 1));
    painter->drawLine(QPointF(margin, baseline), QPointF(width() - margin, baseline));
    if (!preview_) return;
    painter->setPen(QPen(lineColor_, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter->drawPolyline(lineOf(preview_->plan(), size()));
}

}  // namespace tessara
