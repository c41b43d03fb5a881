#pragma once

#include <QObject>
#include <functional>
#include <string>

#include "TessaraCore/Profile.h"

namespace tessara {

class AppModel;

/// The profile that the pages edit: the one that the user has picked for editing, which need not be
/// the one in use. Not remembered beyond the window.
///
/// Main thread. The model outlives this.
class ProfileBinding : public QObject {
    Q_OBJECT

  public:
    /// Picks the default profile.
    explicit ProfileBinding(AppModel& model, QObject* parent = nullptr);

    /// What was picked last, whether or not the document still has it.
    [[nodiscard]] const std::string& selectedProfileID() const { return selectedProfileID_; }
    void setSelectedProfileID(std::string id);

    /// The picked profile; the document's first when it is gone, and the factory's when there is
    /// none at all.
    [[nodiscard]] const Profile& profile() const { return profile_; }

    /// Changes that profile in the document: `change` is called once, at once, on a copy. Dropped
    /// when the document does not have the profile. The save and the engine follow in their time.
    void edit(const std::function<void(Profile& profile)>& change);

  Q_SIGNALS:
    void selectedProfileIDChanged();
    /// `profile` differs from what it was.
    void profileChanged();

  private:
    void refresh();

    AppModel& model_;
    std::string selectedProfileID_{Profile::defaultProfileID};
    Profile profile_;
};

}  // namespace tessara
