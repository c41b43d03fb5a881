#include "Support/AllocationCounter.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

thread_local std::uint64_t allocationsOfThisThread = 0;

void* counted(void* memory) {
    if (memory == nullptr) throw std::bad_alloc();
    ++allocationsOfThisThread;
    return memory;
}

}  // namespace

// NOLINTBEGIN(cppcoreguidelines-no-malloc): the operators are what all else stands on
// The array and nothrow forms of the standard library call these.
void* operator new(std::size_t size) {
    return counted(std::malloc(size == 0 ? 1 : size));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    const auto step = static_cast<std::size_t>(alignment);
    return counted(std::aligned_alloc(step, (size / step + 1) * step));
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    std::free(memory);
}
// NOLINTEND(cppcoreguidelines-no-malloc)

namespace tessara {

void AllocationCounter::start() noexcept {
    startedAt_ = allocationsOfThisThread;
}

void AllocationCounter::stop() noexcept {
    count_ += allocationsOfThisThread - startedAt_;
}

}  // namespace tessara
