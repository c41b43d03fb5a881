#pragma once

#include <expected>
#include <string>

namespace tessara {

/// Whether the program starts when the user logs in.
enum class LoginItemStatus {
    notRegistered,     ///< it does not
    enabled,           ///< it does
    requiresApproval,  ///< it was registered, and the user must allow it in the system's settings
    notFound,          ///< the system finds no installed program to start
    unknown,           ///< the system did not say
};

/// The program's entry among the things that start at login. Main executor only; operations are
/// synchronous, and `status` is cheap enough for a poll.
class LoginItemService {
  public:
    virtual ~LoginItemService() = default;

    /// How it stands now, the user's own changes included.
    [[nodiscard]] virtual LoginItemStatus status() const = 0;

    /// Asks the system to start the program at login; the error is a sentence for the user.
    /// Success does not say that it will: an entry that the user has switched off in the system's
    /// settings stays as it is, and `status` says so.
    [[nodiscard]] virtual std::expected<void, std::string> registerItem() = 0;

    /// Takes the entry away; succeeds when there is none. The error is a sentence for the user. A
    /// program that is running goes on.
    [[nodiscard]] virtual std::expected<void, std::string> unregisterItem() = 0;
};

}  // namespace tessara
