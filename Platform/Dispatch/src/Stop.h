#pragma once

#include <string_view>

namespace tessara {

/// Ends the process over a broken precondition of this library, with the reason on standard error.
[[noreturn]] void stop(std::string_view reason) noexcept;

}  // namespace tessara
