#include "Desk/DeskLog.h"

#include <utility>

#include "Platform/MouseEvents.h"
#include "Platform/ScrollDeltas.h"

namespace tessara {

void DeskLog::append(const QString& application, const CGEvent& event) {
    Line next = lineOf(event);
    next.application = application;
    if (lines_.empty() || !goesOn(lines_.back(), next)) {
        // The end of a glide is told with the glide, and is no news after something else.
        if (next.kind == Kind::glide && next.isOver) return;
        appendLine(std::move(next));
        return;
    }
    Line& last = lines_.back();
    last.steps += next.steps;
    last.vertical += next.vertical;
    last.horizontal += next.horizontal;
    last.isOver = next.isOver;
    const QModelIndex changed = index(rowCount() - 1);
    Q_EMIT dataChanged(changed, changed);
}

void DeskLog::appendLine(Line line) {
    if (rowCount() == capacity) {
        beginRemoveRows({}, 0, 0);
        lines_.erase(lines_.begin());
        endRemoveRows();
    }
    beginInsertRows({}, rowCount(), rowCount());
    lines_.push_back(std::move(line));
    endInsertRows();
}

void DeskLog::clear() {
    beginResetModel();
    lines_.clear();
    endResetModel();
}

int DeskLog::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(lines_.size());
}

QVariant DeskLog::data(const QModelIndex& index, int role) const {
    if (role != Qt::DisplayRole || !index.isValid()) return {};
    return textOf(lines_.at(static_cast<std::size_t>(index.row())));
}

DeskLog::Line DeskLog::lineOf(const CGEvent& event) {
    const auto value = [&event](CGEventField field) { return event.integerValue(field); };
    if (event.type == CGEventType::scrollWheel) {
        if (value(CGEventField::scrollWheelEventIsContinuous) == 0) {
            return {.kind = Kind::wheel,
                    .steps = 1,
                    .vertical = value(CGEventField::scrollWheelEventDeltaAxis1),
                    .horizontal = value(CGEventField::scrollWheelEventDeltaAxis2)};
        }
        const bool isOver = value(CGEventField::scrollWheelEventScrollPhase) == scrollPhaseEnded;
        return {.kind = Kind::glide,
                .steps = isOver ? 0 : 1,
                .vertical = value(CGEventField::scrollWheelEventPointDeltaAxis1),
                .horizontal = value(CGEventField::scrollWheelEventPointDeltaAxis2),
                .isOver = isOver};
    }
    if (const auto change = mouseButtonChange(event)) {
        return {.what = (change->isDown ? tr("button %1 pressed") : tr("button %1 released"))
                            .arg(change->button)};
    }
    if (event.type == CGEventType::keyDown || event.type == CGEventType::keyUp) {
        const bool isDown = event.type == CGEventType::keyDown;
        return {.what = (isDown ? tr("key %1 pressed") : tr("key %1 released"))
                            .arg(value(CGEventField::keyboardEventKeycode))};
    }
    if (event.type == CGEventType::flagsChanged)
        return {.what = tr("modifiers %1").arg(event.flags, 0, 16)};
    return {.kind = Kind::motion,
            .steps = 1,
            .vertical = value(CGEventField::mouseEventDeltaY),
            .horizontal = value(CGEventField::mouseEventDeltaX)};
}

bool DeskLog::goesOn(const Line& line, const Line& next) {
    return line.kind != Kind::other && line.kind == next.kind && !line.isOver &&
           line.application == next.application;
}

QString DeskLog::wayOf(const Line& line, const QString& upright, const QString& sideways) {
    if (line.horizontal == 0) return upright.arg(line.vertical);
    if (line.vertical == 0) return sideways.arg(line.horizontal);
    return tr("%1 and %2").arg(upright.arg(line.vertical), sideways.arg(line.horizontal));
}

QString DeskLog::textOf(const Line& line) {
    const auto told = [&line](const QString& what) {
        return tr("%1: %2").arg(line.application, what);
    };
    switch (line.kind) {
        case Kind::glide:
            return told(tr("a glide of %1, in %2 steps")
                            .arg(wayOf(line, tr("%1 px"), tr("%1 px sideways")))
                            .arg(line.steps));
        case Kind::wheel:
            return told(tr("the wheel as it is, %1")
                            .arg(wayOf(line, tr("%1 lines"), tr("%1 lines sideways"))));
        case Kind::motion:
            return told(tr("the pointer moved by %1, %2").arg(line.horizontal).arg(line.vertical));
        case Kind::other:
            break;
    }
    return told(line.what);
}

}  // namespace tessara
