#include "TessaraReplay/OutputFile.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include <fmt/format.h>

namespace tessara {
namespace {

namespace fs = std::filesystem;

/// Where the bytes of `path` really are: a link is followed, so that it outlives the writing.
fs::path resolved(const std::string& path) {
    std::error_code error;
    fs::path result = fs::weakly_canonical(path, error);
    return error ? fs::path(path) : result;
}

/// Whether a new file can stand in for `target`; a device or a pipe has to be written to.
bool isReplaceable(const fs::path& target) {
    std::error_code error;
    const fs::file_type type = fs::status(target, error).type();
    return type == fs::file_type::regular || type == fs::file_type::not_found;
}

std::error_code write(const fs::path& path, std::string_view content) {
    errno = 0;
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(content.data(), static_cast<std::streamsize>(content.size()));
    file.close();
    if (file) return {};
    return errno != 0 ? std::error_code(errno, std::generic_category())
                      : std::make_error_code(std::errc::io_error);
}

}  // namespace

std::expected<void, std::string> writeWhole(const std::string& path, std::string_view content) {
    const fs::path target = resolved(path);
    std::error_code error;
    if (isReplaceable(target)) {
        fs::path partial = target;
        partial += ".partial";
        error = write(partial, content);
        if (!error) fs::rename(partial, target, error);
        std::error_code ignored;
        if (error) fs::remove(partial, ignored);
    } else {
        error = write(target, content);
    }
    if (error)
        return std::unexpected(fmt::format("{}: cannot be written: {}", path, error.message()));
    return {};
}

}  // namespace tessara
