#pragma once

#include <QObject>
#include <memory>

#include <QtQml/qqmlregistration.h>

#include "TessaraApp/Style/ThemeColors.h"

namespace tessara {

class SystemAppearance;

/// How the interface looks: one of two sets of colours, and the sizes of its text. By itself it
/// follows the system; a test or a picture says which appearance it wants.
///
/// There is one for each QML engine, which owns it. Main thread.
class Theme : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

    Q_PROPERTY(tessara::ThemeColors colors READ colors NOTIFY colorsChanged)
    Q_PROPERTY(int bodySize READ bodySize CONSTANT)
    Q_PROPERTY(int smallSize READ smallSize CONSTANT)
    Q_PROPERTY(int titleSize READ titleSize CONSTANT)
    Q_PROPERTY(int headlineSize READ headlineSize CONSTANT)
    Q_PROPERTY(QString fixedFamily READ fixedFamily CONSTANT)
    Q_PROPERTY(int motionMillis READ motionMillis NOTIFY motionMillisChanged)

  public:
    enum class Appearance { system, light, dark };
    Q_ENUM(Appearance)

    explicit Theme(QObject* parent = nullptr);
    ~Theme() override;

    /// From now on `light` or `dark` whatever the system says, or again what it says; `system` at
    /// first.
    void setAppearance(Appearance appearance);
    /// The colours in force. The reference holds; `colorsChanged` says that another one is meant.
    [[nodiscard]] const ThemeColors& colors() const { return *colors_; }

    /// Sizes of text in pixels, from the font of the application: of what is read, of the help
    /// beneath it, of the titles of sections, and of the one title of a window.
    [[nodiscard]] int bodySize() const { return bodySize_; }
    [[nodiscard]] int smallSize() const { return smallSize_; }
    [[nodiscard]] int titleSize() const { return titleSize_; }
    [[nodiscard]] int headlineSize() const { return headlineSize_; }
    /// The system's font whose characters are all of one width.
    [[nodiscard]] QString fixedFamily() const { return fixedFamily_; }

    /// How long a control takes to show a change, in milliseconds. Zero keeps everything still, for
    /// pictures.
    [[nodiscard]] int motionMillis() const { return motionMillis_; }
    void setMotionMillis(int millis);

  Q_SIGNALS:
    void colorsChanged();
    void motionMillisChanged();

  private:
    void update();

    const std::unique_ptr<SystemAppearance> system_;
    const int bodySize_;
    const int smallSize_;
    const int titleSize_;
    const int headlineSize_;
    const QString fixedFamily_;
    Appearance appearance_ = Appearance::system;
    const ThemeColors* colors_;
    int motionMillis_ = 120;
};

}  // namespace tessara
