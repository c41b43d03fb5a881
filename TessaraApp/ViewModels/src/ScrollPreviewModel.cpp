#include "TessaraApp/ViewModels/ScrollPreviewModel.h"

#include <cstdlib>
#include <utility>

#include "TessaraApp/AppModel.h"
#include "TessaraApp/AppPreferences.h"
#include "TessaraApp/ViewModels/ProfileBinding.h"
#include "TessaraCore/ScrollTransformer.h"

namespace tessara {
namespace {

constexpr int rowCount = 60;
constexpr int rowsPerEmphasis = 5;

/// What becomes of the first click of a wheel that nobody has touched for a while.
std::optional<ScrollPlan> planOfOneClick(const ScrollSettings& settings) {
    ScrollTransformer transformer(settings);
    const ScrollOutcome outcome = transformer.transform({.lineDelta = 1});
    const auto* animated = std::get_if<ScrollAnimate>(&outcome);
    return animated ? std::optional(animated->plan) : std::nullopt;
}

}  // namespace

ScrollPreviewModel::ScrollPreviewModel(AppModel& model, ProfileBinding& profile, QObject* parent)
    : QObject(parent),
      model_(model),
      profile_(profile),
      plan_(planOfOneClick(profile.profile().scroll)),
      liveStatus_(describeLiveStatus()) {
    connect(&profile, &ProfileBinding::profileChanged, this, &ScrollPreviewModel::refreshPlan);
    connect(&model, &AppModel::permissionsChanged, this, &ScrollPreviewModel::refreshLiveStatus);
    connect(&model, &AppModel::statusChanged, this, &ScrollPreviewModel::refreshLiveStatus);
    connect(&model.preferences(), &AppPreferences::isPausedByUserChanged, this,
            &ScrollPreviewModel::refreshLiveStatus);
}

QVariantList ScrollPreviewModel::rows() const {
    QVariantList rows;
    for (int number = 0; number < rowCount; ++number) {
        rows.append(QVariant::fromValue(
            ScrollPreviewRow{.number = QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0')),
                             .isEmphasised = number % rowsPerEmphasis == 0}));
    }
    return rows;
}

QString ScrollPreviewModel::planText() const {
    if (!plan_) {
        return tr(
            "Smooth scrolling is off for this profile, so a wheel click is passed to macOS "
            "exactly as your mouse sent it.");
    }
    return tr("One wheel click travels %1 points over %2 ms, in %3 steps. The line above is that "
              "movement — flat means still, steep means fast.")
        .arg(std::abs(plan_->totalPixelDelta))
        .arg(static_cast<std::int64_t>(plan_->durationMillis))
        .arg(plan_->steps.size());
}

QString ScrollPreviewModel::chartLabel() const {
    return tr("Chart of how far one wheel click travels over time");
}

QString ScrollPreviewModel::panelLabel() const {
    return tr("A list of numbered lines to scroll");
}

void ScrollPreviewModel::refreshPlan() {
    auto plan = planOfOneClick(profile_.profile().scroll);
    if (plan == plan_) return;
    plan_ = std::move(plan);
    Q_EMIT planChanged();
}

void ScrollPreviewModel::refreshLiveStatus() {
    QString status = describeLiveStatus();
    if (status == liveStatus_) return;
    liveStatus_ = std::move(status);
    Q_EMIT liveStatusChanged();
}

QString ScrollPreviewModel::describeLiveStatus() const {
    const PermissionState& permissions = model_.permissions();
    if (!permissions.accessibility || !permissions.inputMonitoring) {
        return tr(
            "Tessara is not allowed to touch your input yet, so the panel above scrolls the "
            "way macOS does. Finish the permission setup and it will change under your "
            "hand.");
    }
    if (model_.preferences().isPausedByUser()) {
        return tr("Tessara is paused, so this scrolls the way macOS does.");
    }
    const EngineStatus& status = model_.status();
    if (!status.targetDeviceAttached) {
        return tr(
            "Your Logitech mouse is not plugged in. Tessara only reshapes scrolling from a "
            "mouse it recognises, so this panel is untouched.");
    }
    return tr("Live — Tessara has reshaped %1 wheel clicks into %2 smooth steps.")
        .arg(status.scroll.inputsTransformed)
        .arg(status.scroll.stepsPosted);
}

}  // namespace tessara
