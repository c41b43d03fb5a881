#include "ScriptFault.h"

#include <cstdio>
#include <cstdlib>

namespace tessara {

void stopForScriptFault(std::string_view words) noexcept {
    std::fprintf(stderr, "Simulated desktop: %.*s\n", static_cast<int>(words.size()), words.data());
    std::abort();
}

}  // namespace tessara
