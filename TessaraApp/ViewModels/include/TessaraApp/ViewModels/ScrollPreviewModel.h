#pragma once

#include <QObject>
#include <QString>
#include <QVariantList>
#include <optional>

#include <QtQml/qqmlregistration.h>

#include "TessaraCore/ScrollPlan.h"

namespace tessara {

class AppModel;
class ProfileBinding;

/// One line of the list that there is to scroll.
struct ScrollPreviewRow {
    Q_GADGET
    QML_VALUE_TYPE(scrollPreviewRow)
    Q_PROPERTY(QString number MEMBER number CONSTANT)
    Q_PROPERTY(bool isEmphasised MEMBER isEmphasised CONSTANT)

  public:
    QString number;
    /// Every fifth line stands out, so that the eye can follow.
    bool isEmphasised = false;
};

/// What one click of the wheel does under the settings of the profile that is edited, as a plan to
/// draw and in words, and whether what the user feels under the hand is that.
///
/// Main thread. A property that stays equal tells nobody.
class ScrollPreviewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("belongs to the scroll page")
    Q_PROPERTY(QVariantList rows READ rows CONSTANT)
    Q_PROPERTY(QString planText READ planText NOTIFY planChanged)
    Q_PROPERTY(QString chartLabel READ chartLabel CONSTANT)
    Q_PROPERTY(QString panelLabel READ panelLabel CONSTANT)
    Q_PROPERTY(QString liveStatus READ liveStatus NOTIFY liveStatusChanged)

  public:
    /// Both outlive this.
    ScrollPreviewModel(AppModel& model, ProfileBinding& profile, QObject* parent = nullptr);

    /// Sixty `ScrollPreviewRow`s.
    [[nodiscard]] QVariantList rows() const;
    /// Absent when the wheel is not smoothed.
    [[nodiscard]] const std::optional<ScrollPlan>& plan() const { return plan_; }
    /// The plan in words: its way in points, its time in milliseconds, its steps; without a plan,
    /// that the wheel is left alone.
    [[nodiscard]] QString planText() const;
    /// Whether the panel scrolls as the plan says: what stands in the way, the weightiest first, or
    /// how much has been reshaped since the engine began.
    [[nodiscard]] const QString& liveStatus() const { return liveStatus_; }

    /// What a screen reader calls the two pictures.
    [[nodiscard]] QString chartLabel() const;
    [[nodiscard]] QString panelLabel() const;

  Q_SIGNALS:
    void planChanged();
    void liveStatusChanged();

  private:
    void refreshPlan();
    void refreshLiveStatus();
    [[nodiscard]] QString describeLiveStatus() const;

    AppModel& model_;
    ProfileBinding& profile_;
    std::optional<ScrollPlan> plan_;
    QString liveStatus_;
};

}  // namespace tessara
