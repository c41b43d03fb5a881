#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Platform/UserDefaults.h"

namespace tessara {

class FileSystem;
class WallClock;

/// User defaults in one JSON file, for platforms that have no store of their own. The file is read
/// once, at construction, and written whole, in one step, at each change. Keys and values that this
/// program does not know are kept.
///
/// A file that cannot be understood is renamed, with a stamp of the moment, and all keys are
/// absent. One that can be neither read nor renamed is left alone: nothing is stored in that run.
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

    void putAside(const WallClock& wallClock);
    void store();

    FileSystem& files_;
    const std::string path_;
    const std::unique_ptr<Contents> contents_;
    bool mayWrite_ = true;
    std::optional<std::string> readProblem_;
    std::optional<std::string> writeProblem_;
};

}  // namespace tessara
