#pragma once

#include <string>

#include "Platform/UpdaterService.h"

namespace tessara {

/// What was decided when this copy of the program was built; see docs/updates.md.
struct UpdaterBuildSettings {
    /// The version of this copy. Its build number is the number of commits that it was made of, or
    /// 0 where that could not be told.
    ProgramVersion current;
    /// The feed's address, and the key that releases are signed with, in Base64. Both empty in a
    /// copy that knows no updates; an address without a key is refused when the program is built.
    std::string feedURL;
    std::string publicKey;

    /// Any thread.
    [[nodiscard]] static UpdaterBuildSettings ofThisCopy();
};

}  // namespace tessara
