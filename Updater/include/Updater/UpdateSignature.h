#pragma once

#include <array>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

#include "Updater/UpdateFeed.h"

namespace tessara {

// How a package is told from one that somebody else has made, or that was made as another release.
// Where packages come from and what becomes of them is not known here.

/// The public half of the key that all updates are signed with (Ed25519, RFC 8032). It is built
/// into the program; the other half is on no computer that the program ever runs on.
using UpdatePublicKey = std::array<std::uint8_t, 32>;

/// The key of its Base64 form (RFC 4648, with padding); nothing when that is no key. Any thread.
[[nodiscard]] std::optional<UpdatePublicKey> updatePublicKey(std::string_view base64);

/// What a signature is made over: the release's version, build, length and file name, and
/// `packageSHA512`, the digest of the package (FIPS 180-4) in lower-case hexadecimal. So a
/// signature holds for one package as one release, and an older package cannot be passed off as a
/// newer release, nor as a file of another kind. The form is told in docs/updates.md, and
/// `scripts/sign-update` writes the same. Any thread.
[[nodiscard]] std::string signedStatement(const UpdateRelease& release,
                                          std::string_view packageSHA512);

/// Whether the file is the package of this release: of its length, and signed with the key. The
/// error is a sentence for the user. It says that the file was deleted, which is the caller's to
/// do. Reads the whole file. Any thread.
[[nodiscard]] std::expected<void, std::string> verifyPackage(const std::string& path,
                                                             const UpdateRelease& release,
                                                             const UpdatePublicKey& key);

}  // namespace tessara
