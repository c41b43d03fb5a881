#include "Agenda.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "LaterBy.h"
#include "RepeatingTimer.h"

namespace tessara {

void Agenda::add(Due due, DispatchQueue::Block block) {
    push({due, std::move(block), nullptr});
}

void Agenda::add(Due due, std::shared_ptr<RepeatingTimer> timer) {
    push({due, nullptr, std::move(timer)});
    ++timerCount_;
}

void Agenda::push(Item item) {
    items_.push_back(std::move(item));
    std::ranges::push_heap(items_, ComesLater{});
}

TimePoint Agenda::wakeUpTime() const noexcept {
    const auto latest = [](const Item& item) {
        if (!item.timer) return item.due.deadline;
        return laterBy(item.due.deadline, item.timer->leeway()).value_or(TimePoint::max());
    };
    auto earliest = latest(items_.front());
    if (earliest == next().deadline) return earliest;
    for (const auto& item : items_)
        earliest = std::min(earliest, latest(item));
    return earliest;
}

DispatchQueue::Block Agenda::takeNext(TimePoint now, std::uint64_t sequence) {
    std::ranges::pop_heap(items_, ComesLater{});
    Item item = std::move(items_.back());
    items_.pop_back();
    if (!item.timer) return std::move(item.block);

    const Due next{item.timer->deadlineAfter(item.due.deadline, now), sequence};
    push({next, nullptr, item.timer});
    return [timer = std::move(item.timer)] { timer->fire(); };
}

void Agenda::withdraw(const RepeatingTimer& timer) {
    const auto erased =
        std::erase_if(items_, [&](const Item& item) { return item.timer.get() == &timer; });
    if (erased == 0) return;
    timerCount_ -= erased;
    std::ranges::make_heap(items_, ComesLater{});
}

std::vector<DispatchQueue::Block> Agenda::takeBlocks() {
    std::vector<DispatchQueue::Block> blocks;
    blocks.reserve(blockCount());
    for (auto& item : items_) {
        if (!item.timer) blocks.push_back(std::move(item.block));
    }
    std::erase_if(items_, [](const Item& item) { return !item.timer; });
    std::ranges::make_heap(items_, ComesLater{});
    return blocks;
}

void Agenda::releaseTimers() noexcept {
    for (const auto& item : items_) {
        if (item.timer) item.timer->release();
    }
}

}  // namespace tessara
