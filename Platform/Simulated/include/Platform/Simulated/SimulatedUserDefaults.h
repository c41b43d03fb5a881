#pragma once

#include <map>
#include <string>

#include "Platform/UserDefaults.h"

namespace tessara {

/// User defaults in memory. A copy is what another run of the program would find.
class SimulatedUserDefaults final : public UserDefaults {
  public:
    [[nodiscard]] std::optional<DefaultsValue> object(const std::string& key) const override {
        const auto entry = values.find(key);
        return entry == values.end() ? std::nullopt : std::optional(entry->second);
    }
    void set(const std::string& key, const DefaultsValue& value) override {
        values.insert_or_assign(key, value);
    }
    void remove(const std::string& key) override { values.erase(key); }

    std::map<std::string, DefaultsValue> values;
};

}  // namespace tessara
