#pragma once

#include <optional>
#include <string>

#include "Platform/LoginItemService.h"

namespace tessara {

/// The program's login item on the simulated desktop, where nobody ever logs in: it only remembers
/// what was asked. A script says how the system takes to it, at any time. One thread.
class SimulatedLoginItem final : public LoginItemService {
  public:
    [[nodiscard]] LoginItemStatus status() const override {
        if (!isInstalled) return LoginItemStatus::notFound;
        if (!isRegistered) return LoginItemStatus::notRegistered;
        return isApproved ? LoginItemStatus::enabled : LoginItemStatus::requiresApproval;
    }
    [[nodiscard]] std::expected<void, std::string> registerItem() override { return become(true); }
    [[nodiscard]] std::expected<void, std::string> unregisterItem() override {
        return become(false);
    }

    /// Whether the system finds the program.
    bool isInstalled = true;
    bool isRegistered = false;
    /// Whether the user has allowed the item in the system's settings.
    bool isApproved = true;
    /// The words with which the system refuses every request; nothing for none.
    std::optional<std::string> refusal;

  private:
    std::expected<void, std::string> become(bool registered) {
        if (refusal) return std::unexpected(*refusal);
        isRegistered = registered;
        return {};
    }
};

}  // namespace tessara
