#pragma once

#include <QColor>
#include <QImage>
#include <QQuickPaintedItem>
#include <QString>

#include <QtQml/qqmlregistration.h>

namespace tessara {

/// A symbol of the program's own set, drawn in one colour. The symbols are the files in `Icons/`,
/// by name and without the ending; their shape counts, their colour does not.
class Icon : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    /// Empty shows nothing. A name that has no file stops the process.
    Q_PROPERTY(QString symbol READ symbol WRITE setSymbol NOTIFY symbolChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)

  public:
    explicit Icon(QQuickItem* parent = nullptr);

    /// The symbol as a picture of `size` by `size` pixels on nothing, for what is not drawn by QML.
    /// A name that has no file stops the process.
    [[nodiscard]] static QImage image(const QString& symbol, const QColor& color, int size);

    [[nodiscard]] const QString& symbol() const { return symbol_; }
    void setSymbol(const QString& symbol);
    [[nodiscard]] const QColor& color() const { return color_; }
    void setColor(const QColor& color);

    void paint(QPainter* painter) override;

  Q_SIGNALS:
    void symbolChanged();
    void colorChanged();

  private:
    QString symbol_;
    QColor color_ = Qt::black;
};

}  // namespace tessara
