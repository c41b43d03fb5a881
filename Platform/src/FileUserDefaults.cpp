#include "Platform/FileUserDefaults.h"

#include <limits>
#include <utility>

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include "Platform/FileSystem.h"
#include "Platform/WallClock.h"

namespace tessara {
namespace {

/// No file of preferences is anywhere near as large.
constexpr std::size_t maximumFileSizeInBytes = std::size_t{1} << 20;
/// Nor as deep; writing goes down a call for each level.
constexpr int maximumDepth = 32;

/// The object that the text holds; nothing when it is no such thing.
std::optional<nlohmann::json> parsed(const std::string& text) {
    bool isTooDeep = false;
    const auto watchDepth = [&](int depth, nlohmann::json::parse_event_t, nlohmann::json&) {
        isTooDeep = isTooDeep || depth > maximumDepth;
        return !isTooDeep;
    };
    auto value = nlohmann::json::parse(text, watchDepth, /*allow_exceptions=*/false);
    if (isTooDeep || !value.is_object()) return std::nullopt;
    return value;
}

}  // namespace

struct FileUserDefaults::Contents {
    nlohmann::json values = nlohmann::json::object();
};

FileUserDefaults::FileUserDefaults(FileSystem& files, const WallClock& wallClock, std::string path)
    : files_(files), path_(std::move(path)), contents_(std::make_unique<Contents>()) {
    const auto exists = files_.exists(path_);
    if (exists && !*exists) return;
    const auto text =
        exists ? files_.read(path_, maximumFileSizeInBytes) : std::unexpected(exists.error());
    if (!text && text.error().kind != FileError::Kind::tooLarge) {
        mayWrite_ = false;
        readProblem_ = fmt::format(
            "Tessara's preferences could not be read. They are left as they are, and what you "
            "change lasts until Tessara quits. {}",
            text.error().description);
        return;
    }
    if (auto values = text ? parsed(*text) : std::nullopt) {
        contents_->values = *std::move(values);
    } else {
        putAside(wallClock);
    }
}

FileUserDefaults::~FileUserDefaults() = default;

void FileUserDefaults::putAside(const WallClock& wallClock) {
    const std::string aside = fmt::format("{}/preferences-{}.unreadable.json", folderOf(path_),
                                          wallClock.localStamp(wallClock.now()));
    if (const auto moved = files_.rename(path_, aside); !moved) {
        mayWrite_ = false;
        readProblem_ = fmt::format(
            "Tessara's preferences file is damaged and could not be moved aside. It is left as it "
            "is, and what you change lasts until Tessara quits. {}",
            moved.error().description);
        return;
    }
    readProblem_ = fmt::format(
        "Tessara's preferences file was damaged. It has been kept as “{}”, and the preferences are "
        "back at their factory values.",
        aside);
}

std::optional<DefaultsValue> FileUserDefaults::object(const std::string& key) const {
    const auto found = contents_->values.find(key);
    if (found == contents_->values.end()) return std::nullopt;
    const nlohmann::json& value = *found;
    if (value.is_boolean()) return value.get<bool>();
    if (value.is_string()) return value.get<std::string>();
    if (value.is_number_float()) return value.get<double>();
    constexpr auto largest = std::numeric_limits<std::int64_t>::max();
    if (value.is_number_integer() &&
        !(value.is_number_unsigned() && value.get<std::uint64_t>() > std::uint64_t{largest})) {
        return value.get<std::int64_t>();
    }
    return std::nullopt;
}

void FileUserDefaults::set(const std::string& key, const DefaultsValue& value) {
    std::visit([&](const auto& stored) { contents_->values[key] = stored; }, value);
    store();
}

void FileUserDefaults::remove(const std::string& key) {
    contents_->values.erase(key);
    store();
}

void FileUserDefaults::store() {
    if (!mayWrite_) return;
    // A text that is not UTF-8 must not keep everything else from being stored.
    const std::string text =
        contents_->values.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
    auto written = files_.createFolders(folderOf(path_));
    if (written) written = files_.replaceAtomically(path_, text);
    writeProblem_ = written
                        ? std::nullopt
                        : std::optional(fmt::format(
                              "Tessara's preferences could not be stored, and are tried again at "
                              "the next change. {}",
                              written.error().description));
}

std::optional<std::string> FileUserDefaults::problem() const {
    return writeProblem_ ? writeProblem_ : readProblem_;
}

}  // namespace tessara
