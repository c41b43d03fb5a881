#include "TessaraHeadless/SituationReport.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <fmt/format.h>

#include "Platform/Dispatch/Clock.h"
#include "TessaraApp/AppModel.h"
#include "TessaraApp/AppPreferences.h"
#include "TessaraApp/ConfigStore.h"

namespace tessara {
namespace {

/// Half a second more than the application's poll takes to notice.
constexpr std::chrono::milliseconds lastingFor{2500};

std::string activity(const AppModel& model, const Obstacles& obstacles) {
    const EngineStatus& status = model.status();
    const PermissionState& permissions = model.permissions();
    if (!permissions.accessibility || !permissions.inputMonitoring) {
        return "Not running: the mouse works as it does without Tessara.";
    }
    if (model.preferences().isPausedByUser()) return "Paused: the mouse is left alone.";
    if (!status.isTapEnabled) {
        return fmt::format("Not running: {}", status.lastError.value_or("the engine is stopped."));
    }
    if (!status.targetDeviceAttached) return "Waiting for the mouse: it is not plugged in.";
    if (obstacles.tap) return fmt::format("Waiting for the mouse: {}", *obstacles.tap);
    return "Active: the mouse's events go through Tessara.";
}

}  // namespace

std::vector<std::string> situationOf(const AppModel& model, const Obstacles& obstacles) {
    std::vector<std::string> sentences = obstacles.missingRights;
    sentences.push_back(activity(model, obstacles));
    if (const auto* failed = std::get_if<SettingsFailed>(&model.status().deviceSettings)) {
        sentences.push_back(fmt::format("The mouse did not take its settings: {}", failed->reason));
    }
    if (model.status().workspaceLimitation)
        sentences.push_back(*model.status().workspaceLimitation);
    const ConfigStore& store = model.store();
    if (const auto& problem = store.problem()) {
        sentences.push_back(fmt::format("{}: {} {}", problem->headline(),
                                        store.fileURL().toLocalFile().toStdString(),
                                        problem->explanation()));
    }
    if (store.lastSaveError()) {
        sentences.push_back(fmt::format("The settings are not saved: {}", *store.lastSaveError()));
    }
    return sentences;
}

SituationReport::SituationReport(const AppModel& model, std::shared_ptr<DispatchQueue> mainQueue,
                                 FindObstacles findObstacles, Say say)
    : model_(model),
      mainQueue_(std::move(mainQueue)),
      findObstacles_(std::move(findObstacles)),
      say_(std::move(say)) {
    connect(&model, &AppModel::statusChanged, this, &SituationReport::noteChange);
    connect(&model, &AppModel::permissionsChanged, this, &SituationReport::noteChange);
    connect(&model.preferences(), &AppPreferences::isPausedByUserChanged, this,
            &SituationReport::noteChange);
    connect(&model.store(), &ConfigStore::problemChanged, this, &SituationReport::noteChange);
    connect(&model.store(), &ConfigStore::lastSaveErrorChanged, this, &SituationReport::noteChange);
    noteChange();
}

SituationReport::~SituationReport() = default;

void SituationReport::noteChange() {
    auto situation = situationOf(model_, findObstacles_());
    if (situation == current_) return;
    current_ = std::move(situation);
    pending_ =
        mainQueue_->startTimer(mainQueue_->clock().now() + lastingFor, lastingFor, {}, [this] {
            pending_.reset();
            tell();
        });
}

void SituationReport::tell() {
    for (const std::string& sentence : current_) {
        if (std::ranges::find(told_, sentence) == told_.end()) say_(sentence);
    }
    told_ = current_;
}

}  // namespace tessara
