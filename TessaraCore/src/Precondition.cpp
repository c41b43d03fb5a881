#include "TessaraCore/Precondition.h"

#include <cstdio>
#include <cstdlib>

namespace tessara {

void preconditionFailed(const char* words, std::source_location where) noexcept {
    std::fprintf(stderr, "%s:%u: %s: precondition failed: %s\n", where.file_name(),
                 static_cast<unsigned>(where.line()), where.function_name(), words);
    std::abort();
}

}  // namespace tessara
