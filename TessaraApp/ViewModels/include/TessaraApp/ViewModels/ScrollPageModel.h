#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <vector>

#include <QtQml/qqmlregistration.h>

#include "TessaraApp/ViewModels/ScrollPreviewModel.h"
#include "TessaraApp/ViewModels/Setting.h"

namespace tessara {

class AppModel;
class ProfileBinding;
struct ScrollSettings;

/// The page on which the wheel of a profile is set: each control writes through the binding of the
/// profile that is edited, and shows what has arrived there.
///
/// Main thread. The settings are made with the page and live as long.
class ScrollPageModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to the settings window")

    Q_PROPERTY(QString smoothingTitle READ smoothingTitle CONSTANT)
    Q_PROPERTY(tessara::ToggleSetting* smoothing MEMBER smoothing CONSTANT)

    Q_PROPERTY(QString directionsTitle READ directionsTitle CONSTANT)
    Q_PROPERTY(tessara::ToggleSetting* vertical MEMBER vertical CONSTANT)
    Q_PROPERTY(tessara::ToggleSetting* horizontal MEMBER horizontal CONSTANT)
    Q_PROPERTY(tessara::ChoiceSetting* activation MEMBER activation CONSTANT)

    Q_PROPERTY(QString feelTitle READ feelTitle CONSTANT)
    Q_PROPERTY(tessara::SliderSetting* distance MEMBER distance CONSTANT)
    Q_PROPERTY(tessara::SliderSetting* length MEMBER length CONSTANT)
    Q_PROPERTY(tessara::ChoiceSetting* shape MEMBER shape CONSTANT)
    Q_PROPERTY(tessara::ToggleSetting* inversion MEMBER inversion CONSTANT)

    Q_PROPERTY(QString accelerationTitle READ accelerationTitle CONSTANT)
    Q_PROPERTY(tessara::ToggleSetting* acceleration MEMBER acceleration CONSTANT)
    Q_PROPERTY(tessara::SliderSetting* gain MEMBER gain CONSTANT)
    Q_PROPERTY(tessara::SliderSetting* limit MEMBER limit CONSTANT)

    Q_PROPERTY(QString previewTitle READ previewTitle CONSTANT)
    Q_PROPERTY(tessara::ScrollPreviewModel* preview MEMBER preview CONSTANT)

    Q_PROPERTY(QString advancedTitle READ advancedTitle CONSTANT)
    Q_PROPERTY(bool isAdvancedEnabled READ isAdvancedEnabled NOTIFY isAdvancedEnabledChanged)
    Q_PROPERTY(tessara::SliderSetting* interval MEMBER interval CONSTANT)
    Q_PROPERTY(tessara::SliderSetting* ceiling MEMBER ceiling CONSTANT)
    Q_PROPERTY(QString resetAllText READ resetAllText CONSTANT)

    /// Above the controls, which are made with it.
    ProfileBinding& profile_;

  public:
    /// Both outlive this.
    ScrollPageModel(AppModel& model, ProfileBinding& profile, QObject* parent = nullptr);

    // The titles of the sections, in the order of the page.

    [[nodiscard]] QString smoothingTitle() const;
    [[nodiscard]] QString directionsTitle() const;
    [[nodiscard]] QString feelTitle() const;
    [[nodiscard]] QString accelerationTitle() const;
    [[nodiscard]] QString previewTitle() const;
    [[nodiscard]] QString advancedTitle() const;

    /// The folded part of the page can be opened and used.
    [[nodiscard]] bool isAdvancedEnabled() const { return smoothing->isOn(); }

    /// Sets everything about the profile's wheel to the defaults, what has no control included.
    [[nodiscard]] QString resetAllText() const;
    Q_INVOKABLE void resetAll();

    // The controls, in the order of the page. Distances are in points, times in milliseconds, the
    // gain and the limit of the acceleration are factors (`ScrollSettings`).

    ToggleSetting* const smoothing;
    ToggleSetting* const vertical;
    ToggleSetting* const horizontal;
    ChoiceSetting* const activation;
    SliderSetting* const distance;
    SliderSetting* const length;
    ChoiceSetting* const shape;
    ToggleSetting* const inversion;
    ToggleSetting* const acceleration;
    SliderSetting* const gain;
    SliderSetting* const limit;
    ScrollPreviewModel* const preview;
    SliderSetting* const interval;
    SliderSetting* const ceiling;

  Q_SIGNALS:
    void isAdvancedEnabledChanged();

  private:
    /// A field of the profile's settings; always enabled, or only while the wheel is smoothed, or
    /// only while it is accelerated as well.
    enum class Needs { nothing, smoothing, acceleration };
    template <typename T>
    SettingAccess<T> field(T ScrollSettings::* member, Needs needs);
    template <typename T>
    SettingAccess<T> access(std::function<T(const ScrollSettings&)> read,
                            std::function<void(ScrollSettings&, const T&)> write, Needs needs);
    [[nodiscard]] std::function<bool()> isMet(Needs needs) const;

    ToggleSetting* makeAxis(QString title, QString help, ScrollAxes axis);
    ChoiceSetting* makeActivation();
    ChoiceSetting* makeShape();
};

}  // namespace tessara
