#include "TessaraEngine/RecordingEventPoster.h"

#include <cstdint>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "TessaraCore/Overloaded.h"

namespace tessara {

namespace {

std::string_view direction(bool isDown) {
    return isDown ? "down" : "up";
}

/// Hashes of several fields in one: each is mixed into what the ones before it gave.
template <typename... Fields>
std::size_t hashOf(const Fields&... fields) {
    std::size_t seed = 0;
    const auto mix = [&seed](std::size_t hash) {
        seed ^= hash + 0x9E3779B97F4A7C15U + (seed << 6U) + (seed >> 2U);
    };
    (mix(std::hash<Fields>{}(fields)), ...);
    return seed;
}

}  // namespace

std::string description(const Emission& emission) {
    return std::visit(
        Overloaded{
            [](const ScrollEmission& scroll) {
                return fmt::format("scroll({} {}px {} mods={})", rawValue(scroll.axis),
                                   scroll.pixelDelta, rawValue(scroll.phase),
                                   scroll.modifiers.rawValue());
            },
            [](const KeyEmission& key) {
                return fmt::format("key({} {} mods={})", key.code, direction(key.isDown),
                                   key.modifiers.rawValue());
            },
            [](const MouseButtonEmission& button) {
                return fmt::format("mouseButton({} {})", button.number, direction(button.isDown));
            },
        },
        emission);
}

RecordingEventPoster::RecordingEventPoster(std::shared_ptr<EventPosting> forwardingTo)
    : forwarding_(std::move(forwardingTo)) {}

void RecordingEventPoster::postScrollStep(ScrollAxis axis, std::int64_t pixelDelta,
                                          ScrollPhase phase, ModifierFlags modifiers) {
    record(ScrollEmission{
        .axis = axis, .pixelDelta = pixelDelta, .phase = phase, .modifiers = modifiers});
    if (forwarding_) forwarding_->postScrollStep(axis, pixelDelta, phase, modifiers);
}

void RecordingEventPoster::postKey(std::uint16_t code, bool isDown, ModifierFlags modifiers) {
    record(KeyEmission{.code = code, .isDown = isDown, .modifiers = modifiers});
}

void RecordingEventPoster::postMouseButton(std::int64_t number, bool isDown) {
    record(MouseButtonEmission{.number = number, .isDown = isDown});
}

std::vector<Emission> RecordingEventPoster::emissions() const {
    MutexLock lock(mutex_);
    return emissions_;
}

void RecordingEventPoster::reset() {
    MutexLock lock(mutex_);
    emissions_.clear();
}

void RecordingEventPoster::record(const Emission& emission) {
    MutexLock lock(mutex_);
    emissions_.push_back(emission);
}

}  // namespace tessara

std::size_t std::hash<tessara::ScrollEmission>::operator()(
    const tessara::ScrollEmission& emission) const noexcept {
    return tessara::hashOf(emission.axis, emission.pixelDelta, emission.phase, emission.modifiers);
}

std::size_t std::hash<tessara::KeyEmission>::operator()(
    const tessara::KeyEmission& emission) const noexcept {
    return tessara::hashOf(emission.code, emission.isDown, emission.modifiers);
}

std::size_t std::hash<tessara::MouseButtonEmission>::operator()(
    const tessara::MouseButtonEmission& emission) const noexcept {
    return tessara::hashOf(emission.number, emission.isDown);
}
