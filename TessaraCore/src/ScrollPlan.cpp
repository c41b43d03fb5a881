#include "TessaraCore/ScrollPlan.h"

#include <algorithm>
#include <utility>

#include "TessaraCore/Precondition.h"

namespace tessara {

ScrollSteps::ScrollSteps(std::initializer_list<ScrollStep> steps) {
    Builder builder(steps.size());
    for (const ScrollStep& step : steps)
        builder.append(step);
    *this = std::move(builder).finish();
}

ScrollSteps::ScrollSteps(std::shared_ptr<const ScrollStep[]> steps, std::size_t size)
    : steps_(std::move(steps)), size_(size) {}

const ScrollStep& ScrollSteps::operator[](std::size_t index) const {
    TESSARA_PRECONDITION(index < size_, "a scroll step beyond the end of its plan");
    return begin()[index];
}

bool ScrollSteps::operator==(const ScrollSteps& other) const {
    return std::ranges::equal(*this, other);
}

ScrollSteps::Builder::Builder(std::size_t capacity)
    : steps_(std::make_shared<ScrollStep[]>(capacity)), capacity_(capacity) {}

void ScrollSteps::Builder::append(const ScrollStep& step) {
    TESSARA_PRECONDITION(size_ < capacity_, "more scroll steps than there is room for");
    steps_.get()[size_++] = step;
}

ScrollSteps ScrollSteps::Builder::finish() && {
    return {std::move(steps_), size_};
}

}  // namespace tessara
