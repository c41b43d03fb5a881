#include "TessaraEngine/ButtonPipeline.h"

#include <cstddef>
#include <utility>
#include <variant>

#include "TessaraEngine/MacroExecutor.h"

namespace tessara {

namespace {

/// Whether the system's own event, passed on, is all that the intents ask for.
bool isTheEventItself(const std::vector<ButtonIntent>& intents, const ButtonEvent& event) {
    return intents.size() == 1 &&
           intents.front() == ButtonIntent(PassThroughButtonIntent{.number = event.button,
                                                                   .isDown = event.isDown});
}

std::int64_t count(const std::vector<ButtonIntent>& intents) {
    return static_cast<std::int64_t>(intents.size());
}

}  // namespace

ButtonPipeline::ButtonPipeline(ButtonRouter router, std::shared_ptr<MacroExecutor> executor)
    : executor_(std::move(executor)), router_(std::move(router)) {}

ButtonDisposition ButtonPipeline::handle(const ButtonEvent& event) {
    // Taken first: were the router reset between its decision and the playing of it, the press
    // would be down in the new epoch with nobody to release it.
    const std::uint64_t epoch = executor_->epoch();
    std::vector<ButtonIntent> intents;
    {
        MutexLock lock(mutex_);
        ++metrics_.eventsSeen;
        intents = router_.handle(event);
        metrics_.intentsProduced += count(intents);
        if (isTheEventItself(intents, event)) {
            ++metrics_.passedThrough;
            return ButtonDisposition::passThrough;
        }
        ++metrics_.suppressed;
    }
    executor_->execute(std::move(intents), epoch);
    return ButtonDisposition::suppress;
}

void ButtonPipeline::reset() {
    std::vector<ButtonIntent> intents;
    {
        MutexLock lock(mutex_);
        ++metrics_.resets;
        intents = router_.reset();
        metrics_.intentsProduced += count(intents);
    }
    executor_->reset(std::move(intents));
}

std::vector<ButtonBinding> ButtonPipeline::bindings() const {
    MutexLock lock(mutex_);
    return router_.bindings();
}

void ButtonPipeline::setBindings(std::vector<ButtonBinding> bindings) {
    MutexLock lock(mutex_);
    router_.setBindings(std::move(bindings));
}

std::int64_t ButtonPipeline::baseDPI() const {
    MutexLock lock(mutex_);
    return router_.baseDPI();
}

void ButtonPipeline::setBaseDPI(std::int64_t baseDPI) {
    MutexLock lock(mutex_);
    router_.setBaseDPI(baseDPI);
}

std::set<std::int64_t> ButtonPipeline::heldButtons() const {
    MutexLock lock(mutex_);
    return router_.heldButtons();
}

std::int64_t ButtonPipeline::currentDPI() const {
    MutexLock lock(mutex_);
    return router_.currentDPI();
}

Action ButtonPipeline::action(std::int64_t button, ModifierFlags modifiers) const {
    MutexLock lock(mutex_);
    return router_.action(button, modifiers);
}

ButtonPipeline::Metrics ButtonPipeline::snapshotMetrics() const {
    MutexLock lock(mutex_);
    return metrics_;
}

void ButtonPipeline::resetMetrics() {
    MutexLock lock(mutex_);
    metrics_ = {};
}

}  // namespace tessara
