#include "TessaraApp/Style/Icon.h"

#include <QPainter>
#include <QSvgRenderer>

#include "TessaraCore/Precondition.h"

namespace tessara {

Icon::Icon(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setImplicitSize(16, 16);
}

QImage Icon::image(const QString& symbol, const QColor& color, int size) {
    QSvgRenderer shape(QStringLiteral(":/tessara/icons/%1.svg").arg(symbol));
    TESSARA_PRECONDITION(shape.isValid(), "there is no icon of this name");
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    shape.render(&painter);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    return image;
}

void Icon::setSymbol(const QString& symbol) {
    if (symbol == symbol_) return;
    symbol_ = symbol;
    update();
    Q_EMIT symbolChanged();
}

void Icon::setColor(const QColor& color) {
    if (color == color_) return;
    color_ = color;
    update();
    Q_EMIT colorChanged();
}

void Icon::paint(QPainter* painter) {
    if (symbol_.isEmpty()) return;
    const double pixels = std::min(width(), height()) * painter->device()->devicePixelRatioF();
    painter->drawImage(boundingRect(), image(symbol_, color_, qCeil(pixels)));
}

}  // namespace tessara
