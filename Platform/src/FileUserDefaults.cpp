#include "Platform/FileUserDefaults.h"

#include <limits>
#include <set>
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

/// What the file holds: an empty object where there is no file, and null where what is there cannot
/// be understood.
std::expected<nlohmann::json, FileError> valuesIn(const FileSystem& files,
                                                  const std::string& path) {
    const auto exists = files.exists(path);
    if (!exists) return std::unexpected(exists.error());
    if (!*exists) return nlohmann::json::object();
    const auto text = files.read(path, maximumFileSizeInBytes);
    if (text) return parsed(*text).value_or(nullptr);
    if (text.error().kind == FileError::Kind::tooLarge) return nullptr;
    return std::unexpected(text.error());
}

}  // namespace

struct FileUserDefaults::Contents {
    nlohmann::json values = nlohmann::json::object();
    /// The keys that were changed and are not yet stored.
    std::set<std::string> unstored;
};

FileUserDefaults::FileUserDefaults(FileSystem& files, const WallClock& wallClock, std::string path)
    : files_(files),
      wallClock_(wallClock),
      path_(std::move(path)),
      contents_(std::make_unique<Contents>()) {
    auto found = valuesIn(files_, path_);
    if (!found) {
        mayWrite_ = false;
        readProblem_ = fmt::format(
            "Tessara's preferences could not be read. They are left as they are, and what you "
            "change lasts until Tessara quits. {}",
            found.error().description);
        return;
    }
    if (found->is_object()) {
        contents_->values = *std::move(found);
        return;
    }
    const auto aside = putAside();
    if (!aside) {
        mayWrite_ = false;
        readProblem_ = fmt::format(
            "Tessara's preferences file is damaged and could not be moved aside. It is left as it "
            "is, and what you change lasts until Tessara quits. {}",
            aside.error().description);
        return;
    }
    readProblem_ = fmt::format(
        "Tessara's preferences file was damaged. It has been kept as “{}”, and the preferences are "
        "back at their factory values.",
        *aside);
}

FileUserDefaults::~FileUserDefaults() = default;

std::expected<std::string, FileError> FileUserDefaults::putAside() {
    std::string aside = fmt::format("{}/preferences-{}.unreadable.json", folderOf(path_),
                                    wallClock_.localStamp(wallClock_.now()));
    if (const auto moved = files_.rename(path_, aside); !moved) {
        return std::unexpected(moved.error());
    }
    return aside;
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
    store(key);
}

void FileUserDefaults::remove(const std::string& key) {
    contents_->values.erase(key);
    store(key);
}

void FileUserDefaults::store(const std::string& key) {
    contents_->unstored.insert(key);
    if (!mayWrite_) return;
    const auto stored = storeUnstored();
    if (stored) contents_->unstored.clear();
    writeProblem_ = stored ? std::nullopt
                           : std::optional(fmt::format(
                                 "Tessara's preferences could not be stored, and are tried again "
                                 "at the next change. {}",
                                 stored.error().description));
}

std::expected<void, FileError> FileUserDefaults::storeUnstored() {
    auto found = valuesIn(files_, path_);
    if (!found) return std::unexpected(found.error());
    if (found->is_null()) {
        const auto aside = putAside();
        if (!aside) return std::unexpected(aside.error());
        readProblem_ = fmt::format(
            "Something damaged Tessara's preferences file. It has been kept as “{}”, and the "
            "preferences are stored anew.",
            *aside);
    }
    // What somebody else has written meanwhile stays; a file that has gone is made anew.
    const bool isThere = found->is_object() && !found->empty();
    nlohmann::json values = isThere ? *std::move(found) : contents_->values;
    for (const std::string& key : contents_->unstored) {
        if (const auto changed = contents_->values.find(key); changed != contents_->values.end()) {
            values[key] = *changed;
        } else {
            values.erase(key);
        }
    }
    // A text that is not UTF-8 must not keep everything else from being stored.
    const std::string text =
        values.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
    if (auto made = files_.createFolders(folderOf(path_)); !made) return made;
    return files_.replaceAtomically(path_, text);
}

std::optional<std::string> FileUserDefaults::problem() const {
    return writeProblem_ ? writeProblem_ : readProblem_;
}

}  // namespace tessara
