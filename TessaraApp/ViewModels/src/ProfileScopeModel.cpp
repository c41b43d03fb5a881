#include "TessaraApp/ViewModels/ProfileScopeModel.h"

#include <algorithm>
#include <utility>

#include "TessaraApp/AppModel.h"
#include "TessaraApp/ViewModels/ProfileBinding.h"

namespace tessara {

ProfileScopeModel::ProfileScopeModel(AppModel& model, ProfileBinding& binding, QObject* parent)
    : QObject(parent), model_(model), binding_(binding) {
    connect(&model, &AppModel::configChanged, this, &ProfileScopeModel::refreshProfiles);
    connect(&binding, &ProfileBinding::profileChanged, this, &ProfileScopeModel::refreshProfiles);
    connect(&model, &AppModel::statusChanged, this, &ProfileScopeModel::refreshUse);
    connect(&model, &AppModel::frontmostAppNameChanged, this, &ProfileScopeModel::refreshUse);
    connect(&binding, &ProfileBinding::selectedProfileIDChanged, this,
            &ProfileScopeModel::refreshUse);
    refreshProfiles();
    refreshUse();
}

QString ProfileScopeModel::title() const {
    return tr("Editing profile");
}

void ProfileScopeModel::choose(int index) {
    const auto& profiles = model_.config().profiles;
    if (index < 0 || std::cmp_greater_equal(index, profiles.size())) return;
    binding_.setSelectedProfileID(profiles[static_cast<std::size_t>(index)].id);
}

void ProfileScopeModel::refreshProfiles() {
    const auto& profiles = model_.config().profiles;
    QStringList names;
    for (const Profile& profile : profiles)
        names.append(QString::fromStdString(profile.name));
    const auto shown = std::ranges::find(profiles, binding_.profile().id, &Profile::id);
    const int index =
        shown == profiles.end() ? -1 : static_cast<int>(std::distance(profiles.begin(), shown));

    if (std::exchange(names_, names) != names) Q_EMIT namesChanged();
    if (std::exchange(currentIndex_, index) != index) Q_EMIT currentIndexChanged();
}

void ProfileScopeModel::refreshUse() {
    const EngineStatus& status = model_.status();
    const bool isInUse = binding_.selectedProfileID() == status.activeProfileID;
    QString text;
    if (isInUse) {
        text = tr("In use right now");
    } else if (const QString app = model_.frontmostAppName(); !app.isEmpty()) {
        text = tr("%1 is currently using “%2”")
                   .arg(app, QString::fromStdString(status.activeProfileName));
    }
    const bool changes = isInUse != isInUse_ || text != useText_;
    isInUse_ = isInUse;
    useText_ = text;
    if (changes) Q_EMIT useChanged();
}

}  // namespace tessara
