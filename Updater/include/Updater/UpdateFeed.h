#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <string>
#include <string_view>

#include "Platform/UpdaterService.h"

namespace tessara {

/// A release as the feed offers it. Nothing in it is to be believed before the package has been
/// verified: the feed itself bears no signature.
struct UpdateRelease {
    /// An Ed25519 signature (RFC 8032), as it is in its 64 bytes.
    using Signature = std::array<std::uint8_t, 64>;

    /// The build is above zero, and alone says which of two releases is newer; for people there is
    /// the version, in the form of `isVersion`.
    ProgramVersion version;
    /// The size of the package: 1 to `maximumPackageSizeInBytes`.
    std::uint64_t lengthInBytes = 0;
    /// Where the package is, as the feed has it: a whole address, of whatever scheme.
    std::string url;
    /// The package's own name: the last part of the address, of letters, digits and "._+~-" alone,
    /// beginning with a letter or digit, and of 128 characters at most. It leads out of no folder.
    std::string fileName;
    /// What was signed is `signedStatement`.
    Signature signature{};

    bool operator==(const UpdateRelease&) const = default;
};

/// No feed is larger. Of its bytes some cost the reader of XML time that grows with their square;
/// this many hold a hundred releases.
inline constexpr std::size_t maximumFeedSizeInBytes = std::size_t{64} << 10;

/// No package is larger.
inline constexpr std::uint64_t maximumPackageSizeInBytes = std::uint64_t{256} << 20;

/// The newest release of a feed, or a sentence for the user that says what is wrong with it, and
/// where. The format is told in docs/updates.md. One release that is not in order makes the whole
/// feed unusable, however new the others are. Document types, and entities with them, are refused;
/// elements that are not known are passed over. Any thread.
[[nodiscard]] std::expected<UpdateRelease, std::string> readUpdateFeed(std::string_view xml);

/// Whether `text` is a version: one to four numbers with dots between them, none with a zero before
/// it, and so in the one form that there is for each. Any thread.
[[nodiscard]] bool isVersion(std::string_view text);

/// Whether version `left` comes before `right`, number by number; both are versions. Zeros at the
/// end say nothing: "1" is "1.0". Any thread.
[[nodiscard]] bool isEarlierVersion(std::string_view left, std::string_view right);

}  // namespace tessara
