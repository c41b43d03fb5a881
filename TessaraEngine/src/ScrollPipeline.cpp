#include "TessaraEngine/ScrollPipeline.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <optional>
#include <unordered_map>
#include <utility>
#include <variant>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/Mutex.h"
#include "TessaraCore/Checked.h"
#include "TessaraCore/Overloaded.h"
#include "TessaraCore/ScrollTransformer.h"
#include "TessaraEngine/EventPosting.h"

namespace tessara {

namespace {

/// What is known of a plan while steps of it are still to fire.
struct PlanRuntime {
    bool isCancelled = false;    // its further steps post nothing
    std::int64_t delivered = 0;  // signed pixels really posted
    std::int64_t pending = 0;    // steps not yet fired
};

/// Steps due as soon as the plan is made leave together, ahead of all that are delayed.
bool isImmediate(const ScrollStep& step) {
    return step.offsetMillis <= 0;
}

}  // namespace

struct ScrollPipeline::Core {
    Core(const ScrollSettings& settings, std::shared_ptr<EventPosting> sink,
         std::shared_ptr<DispatchQueue> ownQueue)
        : poster(std::move(sink)), queue(std::move(ownQueue)), transformer(settings) {}

    /// Asks the transformer and, when the outcome is a plan, makes it the running one.
    ScrollOutcome take(const ScrollInput& input) {
        MutexLock lock(mutex);
        ScrollOutcome outcome = transformer.transform(input, deliveredOfRunningPlan(input.axis));
        if (const auto* animate = std::get_if<ScrollAnimate>(&outcome)) {
            registerPlan(animate->plan);
        } else if (std::holds_alternative<ScrollPassThrough>(outcome)) {
            ++metrics.inputsPassedThrough;
        } else {
            ++metrics.inputsIgnored;
        }
        return outcome;
    }

    /// Nothing for a plan that has run down; the transformer then goes by the clock.
    std::optional<std::int64_t> deliveredOfRunningPlan(ScrollAxis axis) const
        TESSARA_REQUIRES(mutex) {
        const ScrollPlan* plan = transformer.inFlightPlan(axis);
        if (plan == nullptr) return std::nullopt;
        const auto runtime = plans.find(plan->id);
        if (runtime == plans.end()) return std::nullopt;
        return runtime->second.delivered;
    }

    void registerPlan(const ScrollPlan& plan) TESSARA_REQUIRES(mutex) {
        if (plan.supersedes) {
            if (const auto old = plans.find(*plan.supersedes); old != plans.end()) {
                metrics.stepsCancelled += old->second.pending;
                ++metrics.plansSuperseded;
                old->second.isCancelled = true;
            }
        }
        plans.insert_or_assign(
            plan.id, PlanRuntime{.pending = static_cast<std::int64_t>(plan.steps.size())});
        ++metrics.inputsTransformed;
        ++metrics.plansScheduled;
    }

    /// On the queue: counts a step and posts it, unless its plan was cancelled in the meantime.
    void fire(const ScrollPlan& plan, const ScrollStep& step) {
        const ModifierFlags modifiers = step.modifiers.value_or(plan.modifiers);
        // A plan made right after a reset may be here before the reset's own block.
        closeGestures();
        {
            MutexLock lock(mutex);
            const auto entry = plans.find(plan.id);
            if (entry == plans.end()) return;
            PlanRuntime& runtime = entry->second;
            --runtime.pending;
            const bool isCancelled = runtime.isCancelled;
            if (!isCancelled) countPosting(plan.axis, step, modifiers, runtime);
            if (runtime.pending < 1) plans.erase(entry);
            if (isCancelled) return;
        }
        poster->postScrollStep(plan.axis, step.pixelDelta, step.phase, modifiers);
    }

    void countPosting(ScrollAxis axis, const ScrollStep& step, ModifierFlags modifiers,
                      PlanRuntime& runtime) TESSARA_REQUIRES(mutex) {
        runtime.delivered = checkedAdd(runtime.delivered, step.pixelDelta);
        ++metrics.stepsPosted;
        metrics.pixelsPosted = checkedAdd(metrics.pixelsPosted, checkedAbs(step.pixelDelta));
        if (step.phase == ScrollPhase::ended) {
            openGestureModifiers.erase(axis);
        } else {
            openGestureModifiers.insert_or_assign(axis, modifiers);
        }
    }

    /// On the queue: ends the gestures that a reset left to be ended.
    void closeGestures() {
        std::map<ScrollAxis, ModifierFlags> closing;
        {
            MutexLock lock(mutex);
            closing.swap(gesturesToClose);
        }
        for (const auto& [axis, modifiers] : closing)
            poster->postScrollStep(axis, 0, ScrollPhase::ended, modifiers);
    }

    const std::shared_ptr<EventPosting> poster;
    const std::shared_ptr<DispatchQueue> queue;

    mutable Mutex mutex;
    ScrollTransformer transformer TESSARA_GUARDED_BY(mutex);
    /// By plan id; cancelled plans stay until their last step has fired.
    std::unordered_map<std::uint64_t, PlanRuntime> plans TESSARA_GUARDED_BY(mutex);
    /// The axes whose gesture was posted and not ended, with the modifiers of its last step.
    std::map<ScrollAxis, ModifierFlags> openGestureModifiers TESSARA_GUARDED_BY(mutex);
    /// Those of them that a reset took out, until their end is posted.
    std::map<ScrollAxis, ModifierFlags> gesturesToClose TESSARA_GUARDED_BY(mutex);
    Metrics metrics TESSARA_GUARDED_BY(mutex);
};

namespace {

/// What all scheduled steps of a plan share, so that the block of each is a pointer and a number
/// and needs no memory of its own.
template <typename Core>
struct Playback {
    std::weak_ptr<Core> core;
    ScrollPlan plan;

    void fire(const ScrollStep& step) const {
        if (const auto alive = core.lock()) alive->fire(plan, step);
    }
};

}  // namespace

ScrollPipeline::ScrollPipeline(const ScrollSettings& settings, std::shared_ptr<EventPosting> poster,
                               Dispatcher& dispatcher)
    : core_(std::make_shared<Core>(
          settings, std::move(poster),
          dispatcher.makeQueue("ai.tessara.scroll", QualityOfService::userInteractive))) {}

ScrollPipeline::~ScrollPipeline() = default;

ScrollSettings ScrollPipeline::settings() const {
    MutexLock lock(core_->mutex);
    return core_->transformer.settings();
}

void ScrollPipeline::setSettings(const ScrollSettings& settings) {
    MutexLock lock(core_->mutex);
    core_->transformer.setSettings(settings);
}

ScrollDisposition ScrollPipeline::handle(const ScrollInput& input) {
    return std::visit(Overloaded{
                          [](const ScrollPassThrough&) { return ScrollDisposition::passThrough; },
                          [](const ScrollIgnore&) { return ScrollDisposition::suppress; },
                          [this](const ScrollAnimate& animate) {
                              schedule(animate.plan);
                              return ScrollDisposition::suppress;
                          },
                      },
                      core_->take(input));
}

void ScrollPipeline::schedule(const ScrollPlan& plan) {
    const auto playback = std::make_shared<const Playback<Core>>(core_, plan);
    const ScrollSteps& steps = playback->plan.steps;
    DispatchQueue& queue = *core_->queue;

    if (std::ranges::any_of(steps, isImmediate)) {
        queue.post([playback] {
            for (const ScrollStep& step : playback->plan.steps) {
                if (isImmediate(step)) playback->fire(step);
            }
        });
    }

    const TimePoint start = queue.clock().now();
    for (const ScrollStep& step : steps) {
        if (isImmediate(step)) continue;
        queue.postAt(start + nanosecondsFromMillis(step.offsetMillis),
                     [playback, due = &step] { playback->fire(*due); });
    }
}

void ScrollPipeline::reset() {
    {
        MutexLock lock(core_->mutex);
        core_->transformer.reset();
        for (auto& [id, runtime] : core_->plans) {
            runtime.isCancelled = true;
            core_->metrics.stepsCancelled += std::max<std::int64_t>(runtime.pending, 0);
        }
        auto& open = core_->openGestureModifiers;
        if (open.empty()) return;
        core_->metrics.gesturesForceClosed += static_cast<std::int64_t>(open.size());
        core_->gesturesToClose.merge(open);
        open.clear();
    }
    // Holds the core: the gestures are ended also when the pipeline is gone by then.
    core_->queue->post([core = core_] { core->closeGestures(); });
}

ScrollPipeline::Metrics ScrollPipeline::snapshotMetrics() const {
    MutexLock lock(core_->mutex);
    return core_->metrics;
}

void ScrollPipeline::resetMetrics() {
    MutexLock lock(core_->mutex);
    core_->metrics = {};
}

std::int64_t ScrollPipeline::inFlightPlanCount() const {
    MutexLock lock(core_->mutex);
    return static_cast<std::int64_t>(core_->plans.size());
}

void ScrollPipeline::drain() {
    core_->queue->drain();
}

}  // namespace tessara
