#pragma once

#include <QObject>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

class AppModel;

/// What the platform knows of the obstacles, a sentence for the user each.
struct Obstacles {
    /// By the names that the rights have on this platform.
    std::vector<std::string> missingRights;
    /// Why the mouse's events do not come through the tap, though it is there.
    std::optional<std::string> tap;
};

/// How things stand, in whole sentences for a terminal: the rights that are missing, what the
/// program is doing, and then what is wrong with the mouse's settings, the session, the document
/// and its saving.
[[nodiscard]] std::vector<std::string> situationOf(const AppModel& model,
                                                   const Obstacles& obstacles);

/// Tells on a terminal how the application stands, each time that it changes. Only what is new is
/// told, and only what lasts for longer than one poll of the application: a mouse that is there,
/// and not yet known to be, is not told to be missing.
///
/// Main executor; the model outlives it.
class SituationReport : public QObject {
  public:
    /// Asked at each change, on the main executor.
    using FindObstacles = std::function<Obstacles()>;
    /// Is given one sentence after the other.
    using Say = std::function<void(const std::string& sentence)>;

    SituationReport(const AppModel& model, std::shared_ptr<DispatchQueue> mainQueue,
                    FindObstacles findObstacles, Say say);
    ~SituationReport() override;

  private:
    void noteChange();
    void tell();

    const AppModel& model_;
    const std::shared_ptr<DispatchQueue> mainQueue_;
    const FindObstacles findObstacles_;
    const Say say_;
    std::vector<std::string> current_;
    std::vector<std::string> told_;
    std::unique_ptr<DispatchTimer> pending_;
};

}  // namespace tessara
