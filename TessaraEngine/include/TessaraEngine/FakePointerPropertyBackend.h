#pragma once

#include <map>
#include <set>

#include "TessaraEngine/PointerPropertyBackend.h"

namespace tessara {

/// Pointer properties in memory, for systems that have none and for tests.
class FakePointerPropertyBackend final : public PointerPropertyBackend {
  public:
    struct Write {
        std::uint64_t registryID = 0;
        std::string key;
        std::int64_t value = 0;
        bool operator==(const Write&) const = default;
    };

    /// The properties, by registry id and key.
    std::map<std::uint64_t, std::map<std::string, std::int64_t>> values;
    std::map<std::uint64_t, std::map<std::string, std::string>> strings;
    /// All writes that were taken, in order.
    std::vector<Write> writeLog;
    /// Keys that only the registry entry takes, and keys that nobody takes.
    std::set<std::string> keysRefusedByEventSystem;
    std::set<std::string> keysRefusedEverywhere;
    bool isWritable = true;
    /// What `services()` gives.
    std::vector<PointerServiceIdentity> identities;

    [[nodiscard]] bool canWrite() const override { return isWritable; }
    [[nodiscard]] std::vector<PointerServiceIdentity> services() override { return identities; }
    [[nodiscard]] std::optional<std::int64_t> readNumber(const std::string& key,
                                                         std::uint64_t registryID) override;
    [[nodiscard]] std::optional<std::string> readString(const std::string& key,
                                                        std::uint64_t registryID) override;
    [[nodiscard]] PointerPropertyWrite writeNumber(const std::string& key, std::int64_t value,
                                                   std::uint64_t registryID) override;
};

}  // namespace tessara
