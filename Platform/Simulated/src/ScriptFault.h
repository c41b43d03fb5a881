#pragma once

#include <string_view>

namespace tessara {

/// Ends the process over an action that no real desktop could have performed, such as moving a
/// mouse that is not plugged in; `words` go to standard error.
[[noreturn]] void stopForScriptFault(std::string_view words) noexcept;

}  // namespace tessara
