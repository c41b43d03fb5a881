#include "Desk/DeskLog.h"

#include <utility>

namespace tessara {
namespace {

constexpr std::int64_t phaseEnded = 4;

bool isButton(CGEventType type) {
    switch (type) {
        case CGEventType::leftMouseDown:
        case CGEventType::leftMouseUp:
        case CGEventType::rightMouseDown:
        case CGEventType::rightMouseUp:
        case CGEventType::otherMouseDown:
        case CGEventType::otherMouseUp:
            return true;
        default:
            return false;
    }
}

bool isDown(CGEventType type) {
    return type == CGEventType::leftMouseDown || type == CGEventType::rightMouseDown ||
           type == CGEventType::otherMouseDown || type == CGEventType::keyDown;
}

}  // namespace

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
        const bool isOver = value(CGEventField::scrollWheelEventScrollPhase) == phaseEnded;
        return {.kind = Kind::glide,
                .steps = isOver ? 0 : 1,
                .vertical = value(CGEventField::scrollWheelEventPointDeltaAxis1),
                .horizontal = value(CGEventField::scrollWheelEventPointDeltaAxis2),
                .isOver = isOver};
    }
    if (isButton(event.type)) {
        const auto button = value(CGEventField::mouseEventButtonNumber);
        return {.what = isDown(event.type) ? tr("button %1 pressed").arg(button)
                                           : tr("button %1 released").arg(button)};
    }
    if (event.type == CGEventType::keyDown || event.type == CGEventType::keyUp) {
        const auto code = value(CGEventField::keyboardEventKeycode);
        return {.what = isDown(event.type) ? tr("key %1 pressed").arg(code)
                                           : tr("key %1 released").arg(code)};
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

QString DeskLog::textOf(const Line& line) {
    const auto told = [&line](const QString& what) {
        return tr("%1: %2").arg(line.application, what);
    };
    switch (line.kind) {
        case Kind::glide: {
            const QString way = line.horizontal == 0 ? tr("%1 px").arg(line.vertical)
                                                     : tr("%1 px sideways").arg(line.horizontal);
            return told(tr("a glide of %1, in %2 steps").arg(way).arg(line.steps));
        }
        case Kind::wheel:
            return told(line.horizontal == 0
                            ? tr("the wheel as it is, %1 lines").arg(line.vertical)
                            : tr("the wheel as it is, %1 lines sideways").arg(line.horizontal));
        case Kind::motion:
            return told(tr("the pointer moved by %1, %2").arg(line.horizontal).arg(line.vertical));
        case Kind::other:
            break;
    }
    return told(line.what);
}

}  // namespace tessara
