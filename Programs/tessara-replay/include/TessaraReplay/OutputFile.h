#pragma once

#include <expected>
#include <string>
#include <string_view>

namespace tessara {

/// Writes `content` to the file at `path`, in place of what is there. A regular file is replaced
/// as a whole or left as it was; what is no regular file, such as a pipe, is written to. A link is
/// followed and stays. While it is written a file of that name and ".partial" stands beside it. The
/// error says what failed, with the path.
[[nodiscard]] std::expected<void, std::string> writeWhole(const std::string& path,
                                                          std::string_view content);

}  // namespace tessara
