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
/// verified.
struct UpdateRelease {
    using Signature = std::array<std::uint8_t, 64>;

    ProgramVersion version;
    std::uint64_t lengthInBytes = 0;
    /// Where the package is, as the feed has it.
    std::string url;
    /// The package's own name: the last part of the address, of letters, digits and "._+~-" alone,
    /// and beginning with a letter or digit.
    std::string fileName;
    Signature signature{};

    bool operator==(const UpdateRelease&) const = default;
};

/// No feed is larger, and no package. Of a feed's bytes some cost the reader of XML time that grows
/// with their square; this many hold a hundred releases.
inline constexpr std::size_t maximumFeedSizeInBytes = std::size_t{64} << 10;
inline constexpr std::uint64_t maximumPackageSizeInBytes = std::uint64_t{256} << 20;

/// The newest release of a feed, or a sentence for the user that says what is wrong with it. The
/// format is told in docs/updates.md. Document types and entities are refused; elements that are
/// not known are passed over. Any thread.
[[nodiscard]] std::expected<UpdateRelease, std::string> readUpdateFeed(std::string_view xml);

/// Whether `text` is a version: one to four numbers with dots between them.
[[nodiscard]] bool isVersion(std::string_view text);

/// Whether version `left` comes before `right`, number by number; both are versions.
[[nodiscard]] bool isEarlierVersion(std::string_view left, std::string_view right);

}  // namespace tessara
