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
        lines.append(QVariant::fromValue(OnboardingFinding{
            .text = QString::fromStdString(finding.description), .isGranted = finding.isGranted}));
    }
    return lines;
}

QString OnboardingHelpModel::commandTitle() const {
    return tr("The one command");
}

QString OnboardingHelpModel::command() const {
    return help_ ? QString::fromStdString(help_->command()) : QString();
}

QString OnboardingHelpModel::commandHelp() const {
    return tr(
        "It grants all that concerns the mouse, now and for every later start, and leaves "
        "keyboards "
        "alone. It needs an administrator's password.");
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
