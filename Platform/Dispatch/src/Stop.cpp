#include "Stop.h"

#include <cstdio>
#include <cstdlib>

namespace tessara {

void stop(std::string_view reason) noexcept {
    std::fprintf(stderr, "Dispatch: %.*s\n", static_cast<int>(reason.size()), reason.data());
    std::abort();
}

}  // namespace tessara
