#include "TessaraReplay/ReplaySummary.h"

#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "TessaraCore/Overloaded.h"
#include "TessaraCore/RawValue.h"

namespace tessara {
namespace {

/// Puts `element` in or takes it out.
template <typename T>
void put(std::set<T>& set, T element, bool isIn) {
    if (isIn) {
        set.insert(element);
    } else {
        set.erase(element);
    }
}

double seconds(std::chrono::nanoseconds duration) {
    return std::chrono::duration<double>(duration).count();
}

}  // namespace

void ReplayHoldings::add(const ReplayRecord& record) {
    std::visit(
        Overloaded{
            [&](const HandledButton& button) {
                put(handButtons_, button.change.number, button.change.isDown);
                if (button.passes) put(appButtons_, button.change.number, button.change.isDown);
            },
            [&](const PostedButton& button) { put(appButtons_, button.number, button.isDown); },
            [&](const PostedKey& key) { put(appKeys_, key.code, key.isDown); },
            [&](const PostedScroll& scroll) {
                put(openGlides_, scroll.axis, scroll.phase != ScrollPhase::ended);
            },
            [&](const RequestedDPI& request) {
                shiftedDPI_.reset();
                if (request.dpi != baseDPI_) shiftedDPI_ = request.dpi;
            },
            // From here on only what the program itself holds counts.
            [&](const FinalReset&) { handButtons_.clear(); },
            [](const auto&) {},
        },
        record.what);
}

std::string ReplayHoldings::description() const {
    std::vector<std::string> parts;
    std::set<std::int64_t> buttons = handButtons_;
    buttons.insert(appButtons_.begin(), appButtons_.end());
    for (const std::int64_t button : buttons)
        parts.push_back(fmt::format("button {}", button));
    for (const std::uint16_t key : appKeys_)
        parts.push_back(fmt::format("key {}", key));
    for (const ScrollAxis axis : openGlides_)
        parts.push_back(fmt::format("{} glide", rawValue(axis)));
    if (shiftedDPI_) parts.push_back(fmt::format("{} DPI", *shiftedDPI_));
    return parts.empty() ? "nothing" : fmt::format("{}", fmt::join(parts, ", "));
}

ReplaySummary::ReplaySummary(std::string recording, std::size_t events, double pixelsPerLine,
                             std::int64_t baseDPI)
    : recording_(std::move(recording)),
      events_(events),
      pixelsPerLine_(pixelsPerLine),
      holdings_(baseDPI) {}

void ReplaySummary::add(const ReplayRecord& record) {
    std::visit(Overloaded{
                   [&](const HandledWheel& wheel) { count(wheel); },
                   [&](const HandledButton& button) { handButtons_.count(button.change.isDown); },
                   [&](const HandledMotion& motion) { count(motion); },
                   [&](const PostedScroll& scroll) { count(scroll, record.at); },
                   [&](const PostedKey& key) { postedKeys_.count(key.isDown); },
                   [&](const PostedButton& button) { postedButtons_.count(button.isDown); },
                   [&](const RequestedDPI&) { ++dpiRequests_; },
                   [&](const LaunchedApp&) { ++launches_; },
                   [&](const RanShortcut&) { ++shortcuts_; },
                   [](const ReceivedEvent&) {},
                   [&](const FinalReset&) { heldBeforeReset_ = holdings_.description(); },
               },
               record.what);
    holdings_.add(record);
    end_ = record.at;
}

void ReplaySummary::count(const HandledWheel& wheel) {
    ++clicks_;
    if (wheel.passes) {
        ++clicksPassed_;
    } else {
        lines_ += std::abs(wheel.turn.lines);
    }
}

void ReplaySummary::count(const HandledMotion& motion) {
    ++motions_;
    countsIn_ += std::abs(motion.motion.dx) + std::abs(motion.motion.dy);
    countsOut_ += std::abs(motion.out.dx) + std::abs(motion.out.dy);
}

void ReplaySummary::count(const PostedScroll& scroll, TimePoint at) {
    ++steps_;
    pixelsPosted_ += std::abs(scroll.pixels);
    const auto [open, isNew] = openGlides_.try_emplace(scroll.axis, Glide{.start = at});
    if (isNew) ++glides_;
    Glide& glide = open->second;
    glide.pixels += std::abs(scroll.pixels);
    glide.duration = at - glide.start;
    if (scroll.phase != ScrollPhase::ended) return;
    if (!longest_ || glide.duration > longest_->duration) longest_ = glide;
    openGlides_.erase(open);
}

std::string ReplaySummary::text() const {
    std::string text = recording_ + '\n';
    const auto row = [&](std::string_view label, const std::string& figures) {
        text += fmt::format("  {:<14}{}\n", label, figures);
    };
    row("events", fmt::format("{} in {:.3f} s: {} wheel, {} button and {} motion inputs", events_,
                              seconds(end_ - replayStart), clicks_,
                              handButtons_.downs + handButtons_.ups, motions_));
    row("wheel", fmt::format("{} lines in, {:.0f} pixels unaccelerated; {} inputs passed on",
                             lines_, pixelsPerLine_ * static_cast<double>(lines_), clicksPassed_));
    row("glides", fmt::format("{} in {} steps, {} pixels out", glides_, steps_, pixelsPosted_));
    row("longest glide",
        longest_ ? fmt::format("{:.3f} s and {} pixels, from {:.3f} s", seconds(longest_->duration),
                               longest_->pixels, seconds(longest_->start - replayStart))
                 : "none");
    row("motion", fmt::format("{} counts in, {} pixels out", countsIn_, countsOut_));
    row("keys", fmt::format("{} pressed and {} released by the program", postedKeys_.downs,
                            postedKeys_.ups));
    row("buttons", fmt::format("{} pressed and {} released by hand, {} and {} by the program",
                               handButtons_.downs, handButtons_.ups, postedButtons_.downs,
                               postedButtons_.ups));
    row("side effects", fmt::format("{} changes of resolution, {} applications, {} shortcuts",
                                    dpiRequests_, launches_, shortcuts_));
    row("left held", fmt::format("{} at the end, {} after the reset", heldBeforeReset_,
                                 holdings_.description()));
    return text;
}

}  // namespace tessara
