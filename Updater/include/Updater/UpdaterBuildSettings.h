#pragma once

#include <string>

#include "Platform/UpdaterService.h"

namespace tessara {

/// What was decided when this copy of the program was built; see docs/updates.md.
struct UpdaterBuildSettings {
    /// The version of this copy. Its build number is the number of commits that it was made of, or
    /// 0 where that could not be told.
    ProgramVersion current;
    /// Both empty in a copy that knows no updates.
    std::string feedURL;
    std::string publicKey;

    [[nodiscard]] static UpdaterBuildSettings ofThisCopy();
};

}  // namespace tessara
