#include "TessaraReplay/ReplayPlot.h"

#include <utility>

#include "PlotPanel.h"
#include "TessaraCore/Overloaded.h"

namespace tessara {

void ReplayPlot::begin(std::string title) {
    panels_.push_back({.title = std::move(title), .tracks = {}});
}

void ReplayPlot::add(const ReplayRecord& record) {
    Panel& panel = panels_.back();
    const auto track = [&](ScrollAxis axis) -> Track& {
        return panel.tracks[static_cast<std::size_t>(axis)];
    };
    panel.end = record.at;
    std::visit(Overloaded{
                   [&](const HandledWheel& wheel) {
                       if (wheel.turn.lines == 0) return;
                       track(wheel.turn.axis).clicks.push_back({record.at, wheel.turn.lines});
                   },
                   [&](const PostedScroll& scroll) {
                       Track& of = track(scroll.axis);
                       const std::int64_t before = of.pixels.empty() ? 0 : of.pixels.back().value;
                       of.pixels.push_back({record.at, before + scroll.pixels});
                       if (!of.openGlide) of.openGlide = record.at;
                       if (scroll.phase != ScrollPhase::ended) return;
                       of.glides.push_back({*of.openGlide, record.at});
                       of.openGlide.reset();
                   },
                   [](const auto&) {},
               },
               record.what);
}

std::string ReplayPlot::svg() const {
    return plotDocument(panels_);
}

}  // namespace tessara
