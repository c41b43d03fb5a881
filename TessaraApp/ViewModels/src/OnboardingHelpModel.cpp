#include "TessaraApp/ViewModels/OnboardingHelpModel.h"

#include <utility>

namespace tessara {

OnboardingHelpModel::OnboardingHelpModel(PermissionHelp* help, QObject* parent)
    : QObject(parent), help_(help) {
    refresh();
}

QVariantList OnboardingHelpModel::findings() const {
    QVariantList lines;
    for (const PermissionFinding& finding : findings_) {
        lines.append(QVariant::fromValue(
            OnboardingFinding{.text = QString::fromStdString(finding.description),
                              .symbol = finding.isGranted ? QStringLiteral("checkmark.circle.fill")
                                                          : QStringLiteral("circle.dotted"),
                              .isGranted = finding.isGranted}));
    }
    return lines;
}

QString OnboardingHelpModel::commandText() const {
    return tr(
        "One command grants all of it, now and for every later start. It needs an "
        "administrator's password:");
}

QString OnboardingHelpModel::command() const {
    return help_ ? QString::fromStdString(help_->command()) : QString();
}

QString OnboardingHelpModel::grantText() const {
    return tr("Run It Now…");
}

void OnboardingHelpModel::grant() {
    if (help_) help_->grant();
}

void OnboardingHelpModel::refresh() {
    if (!help_) return;
    auto findings = help_->findings();
    if (findings == findings_) return;
    findings_ = std::move(findings);
    Q_EMIT findingsChanged();
}

}  // namespace tessara
