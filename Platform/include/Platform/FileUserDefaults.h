#pragma once

#include <expected>
#include <memory>
#include <optional>
#include <string>

#include "Platform/FileSystem.h"
#include "Platform/UserDefaults.h"

namespace tessara {

class WallClock;

/// User defaults in one JSON file, an object of keys and plain values, for platforms that have no
/// store of their own. No place for documents: each change writes the whole file, in one step.
///
/// The file is read at construction, and what it says then holds for the run, but for the keys that
/// are changed through this. A change writes those keys alone: what somebody else has written under
/// other keys meanwhile stays, as do keys and values that this program does not know.
///
/// A file that cannot be understood is renamed, with a stamp of the moment. At construction all
/// keys are absent then; later, all that is known is stored in its place. One that can be neither
/// read nor renamed is left alone: if that shows at construction nothing is stored in that run, and
/// otherwise the next change tries again.
class FileUserDefaults final : public UserDefaults {
  public:
    /// `path` is absolute; neither the file nor its folder need be there. Both services outlive
    /// this.
    FileUserDefaults(FileSystem& files, const WallClock& wallClock, std::string path);
    ~FileUserDefaults() override;

    [[nodiscard]] std::optional<DefaultsValue> object(const std::string& key) const override;
    void set(const std::string& key, const DefaultsValue& value) override;
    void remove(const std::string& key) override;

    /// What the user should know, in whole sentences: that the last write failed, or that the file
    /// was put aside or is left alone. Nothing when all is well.
    [[nodiscard]] std::optional<std::string> problem() const;

  private:
    struct Contents;

    /// Renames the file that cannot be understood; the result is where it is now.
    [[nodiscard]] std::expected<std::string, FileError> putAside();
    void store(const std::string& key);
    [[nodiscard]] std::expected<void, FileError> storeUnstored();

    FileSystem& files_;
    const WallClock& wallClock_;
    const std::string path_;
    const std::unique_ptr<Contents> contents_;
    bool mayWrite_ = true;
    std::optional<std::string> readProblem_;
    std::optional<std::string> writeProblem_;
};

}  // namespace tessara
