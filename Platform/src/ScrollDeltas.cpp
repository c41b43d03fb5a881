#include "Platform/ScrollDeltas.h"

namespace tessara {
namespace {

constexpr std::int64_t pixelsPerLine = 10;

struct AxisFields {
    CGEventField lines;
    CGEventField fixedPoint;
    CGEventField pixels;
};

constexpr AxisFields vertical{.lines = CGEventField::scrollWheelEventDeltaAxis1,
                              .fixedPoint = CGEventField::scrollWheelEventFixedPtDeltaAxis1,
                              .pixels = CGEventField::scrollWheelEventPointDeltaAxis1};
constexpr AxisFields horizontal{.lines = CGEventField::scrollWheelEventDeltaAxis2,
                                .fixedPoint = CGEventField::scrollWheelEventFixedPtDeltaAxis2,
                                .pixels = CGEventField::scrollWheelEventPointDeltaAxis2};

void set(CGEvent& event, const AxisFields& axis, std::int64_t lines, double fixedPoint,
         std::int64_t pixels) {
    event.setIntegerValue(axis.lines, lines);
    event.setDoubleValue(axis.fixedPoint, fixedPoint);
    event.setIntegerValue(axis.pixels, pixels);
}

void setLines(CGEvent& event, const AxisFields& axis, std::int64_t lines) {
    set(event, axis, lines, static_cast<double>(lines), lines * pixelsPerLine);
}

void setPixels(CGEvent& event, const AxisFields& axis, std::int64_t pixels) {
    set(event, axis, pixels / pixelsPerLine, static_cast<double>(pixels) / pixelsPerLine, pixels);
}

}  // namespace

void setLineDeltas(CGEvent& event, std::int64_t verticalLines, std::int64_t horizontalLines) {
    event.setIntegerValue(CGEventField::scrollWheelEventIsContinuous, 0);
    setLines(event, vertical, verticalLines);
    setLines(event, horizontal, horizontalLines);
}

void setPixelDeltas(CGEvent& event, std::int64_t verticalPixels, std::int64_t horizontalPixels) {
    event.setIntegerValue(CGEventField::scrollWheelEventIsContinuous, 1);
    setPixels(event, vertical, verticalPixels);
    setPixels(event, horizontal, horizontalPixels);
}

}  // namespace tessara
