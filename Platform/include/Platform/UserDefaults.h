#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace tessara {

/// What a user default can hold: numbers as they were stored, whole or not; texts in UTF-8.
using DefaultsValue = std::variant<bool, std::int64_t, double, std::string>;

/// The user's machine-local settings: a typed key-value store that knows an absent key from a false
/// one. A write is stored before the call returns, as far as the system allows; one that cannot be
/// stored still holds for the rest of the run. No operation fails otherwise. Main executor only.
///
/// For switches and small facts of this machine. What the user has made, and would carry to another
/// machine, is the document's.
class UserDefaults {
  public:
    virtual ~UserDefaults() = default;

    /// The value under the key, of whatever type was stored; nothing when the key is absent.
    [[nodiscard]] virtual std::optional<DefaultsValue> object(const std::string& key) const = 0;

    /// Stores the value under the key, in place of one of whatever type.
    virtual void set(const std::string& key, const DefaultsValue& value) = 0;

    /// Makes the key absent; nothing if it is.
    virtual void remove(const std::string& key) = 0;

    /// The value if it is a boolean; nothing for an absent key or another type.
    [[nodiscard]] std::optional<bool> boolean(const std::string& key) const {
        return valueOf<bool>(key);
    }

    /// The value if it is an integer; nothing for an absent key or another type.
    [[nodiscard]] std::optional<std::int64_t> integer(const std::string& key) const {
        return valueOf<std::int64_t>(key);
    }

  private:
    template <typename Stored>
    [[nodiscard]] std::optional<Stored> valueOf(const std::string& key) const {
        const auto value = object(key);
        const Stored* const stored = value ? std::get_if<Stored>(&*value) : nullptr;
        return stored ? std::optional(*stored) : std::nullopt;
    }
};

}  // namespace tessara
