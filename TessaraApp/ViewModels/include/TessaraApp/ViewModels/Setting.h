#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <functional>

#include <QtQml/qqmlregistration.h>

namespace tessara {

/// Where a setting is kept, and when it can be changed. `read` and `write` reach the same place.
template <typename T>
struct SettingAccess {
    /// What is kept now.
    std::function<T()> read;
    /// Keeps another value; where that cannot be, nothing happens.
    std::function<void(const T& value)> write;
    /// Absent where the setting can always be changed.
    std::function<bool()> isEnabled = {};
};

/// One thing that a page lets the user set: its words, what it shows, and its way back to the
/// default. A page makes one for each control and calls `refresh` when anything has changed; the
/// control binds to it and decides nothing.
///
/// Main thread. A property that stays equal tells nobody. A write is shown when it has arrived
/// where the setting is kept, not before.
class Setting : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("settings are made by their page")
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QString help READ help CONSTANT)
    Q_PROPERTY(QString resetLabel READ resetLabel CONSTANT)
    Q_PROPERTY(bool isEnabled READ isEnabled NOTIFY isEnabledChanged)

  public:
    /// What the control is called, on the page and by a screen reader.
    [[nodiscard]] const QString& title() const { return title_; }
    /// What it does, and at what price.
    [[nodiscard]] const QString& help() const { return help_; }
    /// What the way back to the default is called.
    [[nodiscard]] QString resetLabel() const;
    [[nodiscard]] bool isEnabled() const { return isEnabled_; }

    /// Writes the default, also when it is shown already.
    Q_INVOKABLE virtual void reset() = 0;

    /// Takes over what is kept, the value and whether it can be changed, and tells what differs.
    void refresh();

  Q_SIGNALS:
    void isEnabledChanged();

  protected:
    Setting(QString title, QString help, std::function<bool()> readEnabled, QObject* parent);

    /// Takes over the value that is kept, and tells when it differs.
    virtual void refreshValue() = 0;

  private:
    const QString title_;
    const QString help_;
    const std::function<bool()> readEnabled_;
    bool isEnabled_ = true;
};

// Qt's tool that registers the types finds a base class only by its full name.

/// Something that is on or off.
class ToggleSetting : public tessara::Setting {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("settings are made by their page")
    Q_PROPERTY(bool isOn READ isOn NOTIFY isOnChanged)

  public:
    /// Reads what is kept. The access lasts as long as this.
    ToggleSetting(QString title, QString help, bool defaultValue, SettingAccess<bool> access,
                  QObject* parent);

    [[nodiscard]] bool isOn() const { return isOn_; }
    /// Writes when `isOn` differs from what is shown.
    Q_INVOKABLE void turn(bool isOn);
    void reset() override;

  Q_SIGNALS:
    void isOnChanged();

  protected:
    void refreshValue() override;

  private:
    const bool defaultValue_;
    const SettingAccess<bool> access_;
    bool isOn_ = false;
};

/// One of a few, shown as texts in a fixed order.
class ChoiceSetting : public tessara::Setting {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("settings are made by their page")
    Q_PROPERTY(QStringList labels READ labels CONSTANT)
    Q_PROPERTY(int currentIndex READ currentIndex NOTIFY currentIndexChanged)

  public:
    /// The access is by index into `labels`; `read` may give -1 for none of them.
    ChoiceSetting(QString title, QString help, QStringList labels, int defaultIndex,
                  SettingAccess<int> access, QObject* parent);

    [[nodiscard]] const QStringList& labels() const { return labels_; }
    /// The index of what is kept; -1 for none of the labels.
    [[nodiscard]] int currentIndex() const { return currentIndex_; }
    /// Writes the choice of the user, also when it is shown already: what is kept may be something
    /// that only reads as this choice.
    Q_INVOKABLE void choose(int index);
    void reset() override;

  Q_SIGNALS:
    void currentIndexChanged();

  protected:
    void refreshValue() override;

  private:
    const QStringList labels_;
    const int defaultIndex_;
    const SettingAccess<int> access_;
    int currentIndex_ = -1;
};

/// A number within a range, set coarsely by a slider and finely by a stepper. A number out of range
/// is shown as it is, with the slider at the end, until the user touches it.
class SliderSetting : public tessara::Setting {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("settings are made by their page")
    Q_PROPERTY(double from READ from CONSTANT)
    Q_PROPERTY(double to READ to CONSTANT)
    Q_PROPERTY(double step READ step CONSTANT)
    Q_PROPERTY(double value READ value NOTIFY valueChanged)
    Q_PROPERTY(double position READ position NOTIFY valueChanged)
    Q_PROPERTY(QString text READ text NOTIFY valueChanged)
    Q_PROPERTY(bool canStepUp READ canStepUp NOTIFY valueChanged)
    Q_PROPERTY(bool canStepDown READ canStepDown NOTIFY valueChanged)

  public:
    /// All in the unit of the setting, which only `format` shows.
    struct Range {
        /// The ends, which belong to it.
        double from = 0;
        double to = 1;
        /// The units of the slider and of the stepper.
        double step = 0.1;
        double precisionStep = 0.01;
        /// What the way back sets.
        double defaultValue = 0;
        /// The value as text, with its unit.
        std::function<QString(double value)> format;
    };

    SliderSetting(QString title, QString help, Range range, SettingAccess<double> access,
                  QObject* parent);

    [[nodiscard]] double from() const { return range_.from; }
    [[nodiscard]] double to() const { return range_.to; }
    [[nodiscard]] double step() const { return range_.step; }
    /// What is kept, which may lie out of the range.
    [[nodiscard]] double value() const { return value_; }
    /// Where the slider stands: the value, limited to the range.
    [[nodiscard]] double position() const;
    /// The value with its unit.
    [[nodiscard]] QString text() const { return range_.format(value_); }
    /// Whether there is room within the range.
    [[nodiscard]] bool canStepUp() const { return value_ < range_.to; }
    [[nodiscard]] bool canStepDown() const { return value_ > range_.from; }

    /// The slider was moved: writes the nearest of its steps. Nothing when it stands there already.
    Q_INVOKABLE void slideTo(double position);
    /// The value itself was set: writes it, limited to the range. Nothing when it is that already.
    Q_INVOKABLE void setTo(double value);
    /// One `precisionStep` on from the value, within the range.
    Q_INVOKABLE void stepUp();
    Q_INVOKABLE void stepDown();
    void reset() override;

  Q_SIGNALS:
    void valueChanged();

  protected:
    void refreshValue() override;

  private:
    void write(double value);

    const Range range_;
    const SettingAccess<double> access_;
    double value_ = 0;
};

}  // namespace tessara
