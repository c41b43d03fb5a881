#include "PlotPanel.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "PlotScale.h"

namespace tessara {
namespace {

using Panel = ReplayPlot::Panel;
using Track = ReplayPlot::Track;

// All lengths are in the picture's own pixels.
constexpr double width = 960;
constexpr double panelHeight = 470;
constexpr double left = 84;
constexpr double right = width - 28;
constexpr double glideTop = 84;
constexpr double glideBottom = 300;
constexpr double clickTop = 324;
constexpr double clickBottom = 404;
constexpr int timeTicks = 10;
constexpr int pixelTicks = 6;
constexpr int lineTicks = 3;
constexpr double middle = (left + right) / 2;
/// Points nearer than this to the one drawn last cannot be told from it.
constexpr double resolution = 0.25;
/// The greatest span in seconds at which each step gets a dot.
constexpr double dottedSpan = 1;

constexpr std::string_view styleSheet = R"(
  text { font: 13px system-ui, "Segoe UI", "Helvetica Neue", Arial, sans-serif }
  .label { fill: #59636e }
  .title { font-size: 17px; font-weight: 600; fill: #1f2328 }
  .paper { fill: #ffffff }
  .grid { stroke: #e4e8ed; stroke-width: 1 }
  .zero { stroke: #818b98; stroke-width: 1 }
  .glide { fill: #818b98; fill-opacity: 0.13 }
  .line { fill: none; stroke-width: 2; stroke-linejoin: round }
  .click { fill: none; stroke-width: 2 }
  .vertical { stroke: #0969da }
  .horizontal { stroke: #bc4c00 }
  .dot.vertical { fill: #0969da; stroke: none }
  .dot.horizontal { fill: #bc4c00; stroke: none }
  @media (prefers-color-scheme: dark) {
    .label { fill: #9198a1 }
    .title { fill: #f0f6fc }
    .paper { fill: #0d1117 }
    .grid { stroke: #262c36 }
    .zero { stroke: #656c76 }
    .glide { fill: #9198a1; fill-opacity: 0.16 }
    .vertical { stroke: #4493f8 }
    .horizontal { stroke: #f0883e }
    .dot.vertical { fill: #4493f8 }
    .dot.horizontal { fill: #f0883e }
  }
)";

constexpr std::array<std::string_view, 2> axisNames{"vertical", "horizontal"};

/// How the time axis is marked. The times of a panel are seconds since its first event.
struct TimeUnit {
    double longest;  ///< the greatest span in seconds that is marked in this unit
    double seconds;
    std::string_view name;
};
constexpr auto timeUnits = std::to_array<TimeUnit>({
    {.longest = 2, .seconds = 0.001, .name = "milliseconds"},
    {.longest = 300, .seconds = 1, .name = "seconds"},
    {.longest = 18'000, .seconds = 60, .name = "minutes"},
    {.longest = std::numeric_limits<double>::infinity(), .seconds = 3600, .name = "hours"},
});

struct Range {
    double from;
    double to;
};

double secondsOf(TimePoint moment) {
    return std::chrono::duration<double>(moment - replayStart).count();
}

std::string escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            default:
                // XML has no place for control characters, not even escaped ones.
                result += static_cast<unsigned char>(c) < ' ' ? '?' : c;
        }
    }
    return result;
}

/// A mark's number: no needless decimals, a real minus sign.
std::string number(double value) {
    const std::string text = fmt::format("{:.10g}", value == 0 ? 0.0 : value);
    return text.starts_with('-') ? "\u2212" + text.substr(1) : text;
}

bool hasWheel(const Panel& panel) {
    return std::ranges::any_of(panel.tracks, [](const Track& track) {
        return !track.clicks.empty() || !track.pixels.empty();
    });
}

/// The times between which the wheel does something, or all of a recording without a wheel.
Range timeRange(const Panel& panel) {
    double from = std::numeric_limits<double>::infinity();
    double to = -from;
    for (const Track& track : panel.tracks) {
        for (const auto* points : {&track.clicks, &track.pixels}) {
            if (points->empty()) continue;
            from = std::min(from, secondsOf(points->front().at));
            to = std::max(to, secondsOf(points->back().at));
        }
    }
    if (!hasWheel(panel)) {
        from = 0;
        to = secondsOf(panel.end);
    }
    const double margin = std::max((to - from) * 0.03, 0.01);
    return {.from = from - margin, .to = to + margin};
}

/// From the least to the greatest value, 0 included, out to whole marks.
Range valueRange(const Panel& panel, std::vector<ReplayPlot::Point> Track::* points, int ticks) {
    double from = 0;
    double to = 0;
    for (const Track& track : panel.tracks) {
        for (const auto& point : track.*points) {
            from = std::min(from, static_cast<double>(point.value));
            to = std::max(to, static_cast<double>(point.value));
        }
    }
    if (from == to) to = 1;
    const double distance = std::max(1.0, tickDistance(to - from, ticks));
    return {.from = std::floor(from / distance) * distance,
            .to = std::ceil(to / distance) * distance};
}

/// Writes one panel into the document.
class PanelWriter {
  public:
    PanelWriter(std::string& out, const Panel& panel) : out_(out), panel_(panel) {
        const Range times = timeRange(panel);
        time_ = {.from = times.from, .to = times.to, .fromPixel = left, .toPixel = right};
        const Range pixels = valueRange(panel, &Track::pixels, pixelTicks);
        pixels_ = {
            .from = pixels.from, .to = pixels.to, .fromPixel = glideBottom, .toPixel = glideTop};
        const Range lines = valueRange(panel, &Track::clicks, lineTicks);
        lines_ = {
            .from = lines.from, .to = lines.to, .fromPixel = clickBottom, .toPixel = clickTop};
    }

    void write() {
        text("title", middle, 34, "middle", escaped(panel_.title));
        for (const Track& track : panel_.tracks)
            writeGlides(track);
        writeTimeAxis();
        writeValueAxis(pixels_, pixelTicks, "pixels scrolled");
        writeValueAxis(lines_, lineTicks, "lines");
        if (!hasWheel(panel_))
            text("label", middle, (glideTop + glideBottom) / 2, "middle",
                 "The wheel was not turned in this recording.");
        for (std::size_t i = 0; i < axisNames.size(); ++i) {
            writePixels(panel_.tracks[i], axisNames[i]);
            writeClicks(panel_.tracks[i], axisNames[i]);
        }
        writeLegend();
    }

  private:
    template <typename... Args>
    void put(fmt::format_string<Args...> format, Args&&... args) {
        fmt::format_to(std::back_inserter(out_), format, std::forward<Args>(args)...);
    }

    void text(std::string_view style, double x, double y, std::string_view anchor,
              std::string_view words) {
        put("<text class=\"{}\" x=\"{:.1f}\" y=\"{:.1f}\" text-anchor=\"{}\">{}</text>\n", style, x,
            y, anchor, words);
    }

    void line(std::string_view style, double x1, double y1, double x2, double y2) {
        put("<line class=\"{}\" x1=\"{:.2f}\" y1=\"{:.2f}\" x2=\"{:.2f}\" y2=\"{:.2f}\"/>\n", style,
            x1, y1, x2, y2);
    }

    /// Glides that lie too close together to be told apart make one field.
    void writeGlides(const Track& track) {
        for (auto next = track.glides.begin(); next != track.glides.end();) {
            const double from = time_(secondsOf(next->start));
            double to = from + resolution;
            for (; next != track.glides.end() && time_(secondsOf(next->start)) <= to + resolution;
                 ++next)
                to = std::max(to, time_(secondsOf(next->end)));
            put("<rect class=\"glide\" x=\"{:.2f}\" y=\"{}\" width=\"{:.2f}\" height=\"{}\"/>\n",
                from, glideTop, to - from, glideBottom - glideTop);
        }
    }

    void writeTimeAxis() {
        const double span = time_.to - time_.from;
        const TimeUnit& unit =
            *std::ranges::find_if(timeUnits, [&](const TimeUnit& u) { return span <= u.longest; });
        const double distance = tickDistance(span / unit.seconds, timeTicks);
        for (const double tick :
             ticksWithin(time_.from / unit.seconds, time_.to / unit.seconds, distance)) {
            const double x = time_(tick * unit.seconds);
            line("grid", x, glideTop, x, glideBottom);
            line("grid", x, clickTop, x, clickBottom);
            text("label", x, clickBottom + 20, "middle", number(tick));
        }
        text("label", middle, clickBottom + 44, "middle",
             fmt::format("time since the first event, in {}", unit.name));
    }

    void writeValueAxis(const PlotScale& scale, int count, std::string_view name) {
        const double distance = std::max(1.0, tickDistance(scale.to - scale.from, count));
        for (const double tick : ticksWithin(scale.from, scale.to, distance)) {
            const double y = scale(tick);
            line(tick == 0 ? "zero" : "grid", left, y, right, y);
            text("label", left - 10, y + 4.5, "end", number(tick));
        }
        const double y = (scale.fromPixel + scale.toPixel) / 2;
        put("<text class=\"label\" transform=\"translate(22 {:.1f}) rotate(-90)\" "
            "text-anchor=\"middle\">{}</text>\n",
            y, name);
    }

    /// Pixels stand still until the next step: the line has corners and no slopes.
    void writePixels(const Track& track, std::string_view axis) {
        if (track.pixels.empty()) return;
        const auto& first = track.clicks.empty() ? track.pixels.front() : track.clicks.front();
        double x = time_(secondsOf(first.at));
        double y = pixels_(0);
        put(R"(<path class="line {}" d="M{:.2f} {:.2f})", axis, x, y);
        for (const auto& point : track.pixels) {
            const double nextX = time_(secondsOf(point.at));
            const double nextY = pixels_(static_cast<double>(point.value));
            if (std::abs(nextX - x) < resolution && std::abs(nextY - y) < resolution) continue;
            put("H{:.2f}V{:.2f}", nextX, nextY);
            x = nextX;
            y = nextY;
        }
        put("H{:.2f}\"/>\n", time_.toPixel);
        if (time_.to - time_.from > dottedSpan) return;
        for (const auto& point : track.pixels)
            put("<circle class=\"dot {}\" cx=\"{:.2f}\" cy=\"{:.2f}\" r=\"2.5\"/>\n", axis,
                time_(secondsOf(point.at)), pixels_(static_cast<double>(point.value)));
    }

    /// Each click is a pin; of clicks that would fall on one spot, the tallest each way are drawn.
    void writeClicks(const Track& track, std::string_view axis) {
        const auto column = [&](const ReplayPlot::Point& click) {
            return std::floor(time_(secondsOf(click.at)) / resolution);
        };
        for (auto first = track.clicks.begin(); first != track.clicks.end();) {
            const auto end = std::find_if(first, track.clicks.end(), [&](const auto& click) {
                return column(click) != column(*first);
            });
            const auto [least, greatest] = std::ranges::minmax(std::ranges::subrange(first, end),
                                                               {}, &ReplayPlot::Point::value);
            if (greatest.value > 0) writePin(greatest, axis);
            if (least.value < 0) writePin(least, axis);
            first = end;
        }
    }

    void writePin(const ReplayPlot::Point& click, std::string_view axis) {
        const double x = time_(secondsOf(click.at));
        const double y = lines_(static_cast<double>(click.value));
        put("<path class=\"click {}\" d=\"M{:.2f} {:.2f}V{:.2f}\"/>\n", axis, x, lines_(0), y);
        put("<circle class=\"dot {}\" cx=\"{:.2f}\" cy=\"{:.2f}\" r=\"3.5\"/>\n", axis, x, y);
    }

    void writeLegend() {
        double x = left;
        constexpr double y = 62;
        const auto entry = [&](std::string_view words, double length) {
            text("label", x + 30, y + 4.5, "start", words);
            x += 30 + length;
        };
        for (std::size_t i = 0; i < axisNames.size(); ++i) {
            const Track& track = panel_.tracks[i];
            if (track.clicks.empty() && track.pixels.empty()) continue;
            line(fmt::format("line {}", axisNames[i]), x, y, x + 22, y);
            put("<circle class=\"dot {}\" cx=\"{:.2f}\" cy=\"{:.2f}\" r=\"3.5\"/>\n", axisNames[i],
                x + 11, y);
            entry(fmt::format("{}: pixels, and clicks below", axisNames[i]), 236);
        }
        if (!hasWheel(panel_)) return;
        put("<rect class=\"glide\" x=\"{:.2f}\" y=\"{:.2f}\" width=\"22\" height=\"14\"/>\n", x,
            y - 7);
        entry("a glide, from its first step to its last", 250);
    }

    std::string& out_;
    const Panel& panel_;
    PlotScale time_;
    PlotScale pixels_;
    PlotScale lines_;
};

}  // namespace

std::string plotDocument(std::span<const Panel> panels) {
    const double height = panelHeight * static_cast<double>(panels.size());
    std::string out = fmt::format(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 {0} {1}\" width=\"{0}\" "
        "height=\"{1}\" role=\"img\">\n<title>Wheel clicks and the glides they become</title>\n"
        "<style>{2}</style>\n<rect class=\"paper\" width=\"{0}\" height=\"{1}\"/>\n",
        width, height, styleSheet);
    double top = 0;
    for (const Panel& panel : panels) {
        out += fmt::format("<g transform=\"translate(0 {})\">\n", top);
        PanelWriter(out, panel).write();
        out += "</g>\n";
        top += panelHeight;
    }
    return out + "</svg>\n";
}

}  // namespace tessara
