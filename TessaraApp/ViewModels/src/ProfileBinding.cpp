#include "TessaraApp/ViewModels/ProfileBinding.h"

#include <utility>

#include "TessaraApp/AppModel.h"

namespace tessara {
namespace {

Profile profileToEdit(const Config& config, const std::string& id) {
    if (const Profile* profile = config.profile(id)) return *profile;
    return config.profiles.empty() ? Profile::default_() : config.profiles.front();
}

}  // namespace

ProfileBinding::ProfileBinding(AppModel& model, QObject* parent)
    : QObject(parent), model_(model), profile_(profileToEdit(model.config(), selectedProfileID_)) {
    connect(&model, &AppModel::configChanged, this, &ProfileBinding::refresh);
}

void ProfileBinding::setSelectedProfileID(std::string id) {
    if (id == selectedProfileID_) return;
    selectedProfileID_ = std::move(id);
    Q_EMIT selectedProfileIDChanged();
    refresh();
}

void ProfileBinding::edit(const std::function<void(Profile& profile)>& change) {
    Profile changed = profile_;
    change(changed);
    model_.replaceProfile(changed);
}

void ProfileBinding::refresh() {
    Profile profile = profileToEdit(model_.config(), selectedProfileID_);
    if (profile == profile_) return;
    profile_ = std::move(profile);
    Q_EMIT profileChanged();
}

}  // namespace tessara
