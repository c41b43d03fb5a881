#pragma once

#include <QColor>
#include <QPointer>
#include <QPolygonF>
#include <QQuickPaintedItem>
#include <optional>

#include <QtQml/qqmlregistration.h>

#include "TessaraApp/ViewModels/ScrollPreviewModel.h"

namespace tessara {

struct ScrollPlan;

/// Draws how far one click of the wheel travels over time: the plan that the transformer itself has
/// made, step by step.
class GlideChart : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(tessara::ScrollPreviewModel* preview READ preview WRITE setPreview NOTIFY
                   previewChanged REQUIRED)
    Q_PROPERTY(QColor lineColor MEMBER lineColor_ NOTIFY colorsChanged)
    Q_PROPERTY(QColor baselineColor MEMBER baselineColor_ NOTIFY colorsChanged)

  public:
    explicit GlideChart(QQuickItem* parent = nullptr);

    [[nodiscard]] ScrollPreviewModel* preview() const { return preview_; }
    void setPreview(ScrollPreviewModel* preview);

    /// The line from the start of the glide through each of its steps, on a canvas of this size in
    /// pixels, with a margin of 8 on each side. Time goes from left to right, from 0 to the plan's
    /// duration; the way goes up, from 0 to the plan's total. Empty where there is nothing to draw
    /// but the baseline: without a plan, or for one without time or way.
    [[nodiscard]] static QPolygonF lineOf(const std::optional<ScrollPlan>& plan, QSizeF canvas);

    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void previewChanged();
    void colorsChanged();

  private:
    QPointer<ScrollPreviewModel> preview_;
    QColor lineColor_;
    QColor baselineColor_;
};

}  // namespace tessara
