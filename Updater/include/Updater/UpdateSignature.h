#pragma once

#include <array>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

#include "Updater/UpdateFeed.h"

namespace tessara {

/// The public half of the key that all updates are signed with (Ed25519).
using UpdatePublicKey = std::array<std::uint8_t, 32>;

/// The key of its Base64 form; nothing when that is no key.
[[nodiscard]] std::optional<UpdatePublicKey> updatePublicKey(std::string_view base64);

/// What a signature is made over: the release's version, build, length and file name, and the
/// SHA-512 of the package in hexadecimal. So a signature holds for one package as one release, and
/// an older package cannot be passed off as a newer release. The form is told in docs/updates.md.
[[nodiscard]] std::string signedStatement(const UpdateRelease& release,
                                          std::string_view packageSHA512);

/// Whether the file is the package of this release: of its length, and signed with the key. The
/// error is a sentence for the user. Reads the whole file. Any thread.
[[nodiscard]] std::expected<void, std::string> verifyPackage(const std::string& path,
                                                             const UpdateRelease& release,
                                                             const UpdatePublicKey& key);

}  // namespace tessara
