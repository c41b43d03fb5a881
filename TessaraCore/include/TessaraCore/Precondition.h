#pragma once

#include <source_location>

namespace tessara {

/// Prints `words` and the place of the broken promise to the standard error stream and ends the
/// process. Reached through TESSARA_PRECONDITION; call it directly only where no condition is left
/// to test.
[[noreturn]] void preconditionFailed(
    const char* words, std::source_location where = std::source_location::current()) noexcept;

}  // namespace tessara

/// States what must hold for the code below it to be right. It is checked in every build, because
/// going on with a broken promise could leave a key held or a button stuck.
///
/// This is for faults of the program alone. Whatever a user, a file, a device or the system can
/// bring about is an expected failure and is reported as a value. `words` is a string literal that
/// says what was broken; it goes to the standard error stream, and needs no heap on the way.
///
///     TESSARA_PRECONDITION(index < size_, "a scroll step beyond the end of its plan");
#define TESSARA_PRECONDITION(condition, words)    \
    do {                                          \
        if (!(condition)) [[unlikely]]            \
            ::tessara::preconditionFailed(words); \
    } while (false)
