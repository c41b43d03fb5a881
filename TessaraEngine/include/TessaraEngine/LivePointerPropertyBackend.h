#pragma once

#include <memory>

#include "TessaraEngine/PointerPropertyBackend.h"

namespace tessara {

class HIDEventSystem;
class HIDService;

/// The pointer properties of the system: through the services of its HID event system, and where
/// those do not answer through its registry.
class LivePointerPropertyBackend final : public PointerPropertyBackend {
  public:
    /// `system` must outlive the backend.
    explicit LivePointerPropertyBackend(HIDEventSystem& system);

    [[nodiscard]] bool canWrite() const override;
    [[nodiscard]] std::vector<PointerServiceIdentity> services() override;
    [[nodiscard]] std::optional<std::int64_t> readNumber(const std::string& key,
                                                         std::uint64_t registryID) override;
    [[nodiscard]] std::optional<std::string> readString(const std::string& key,
                                                        std::uint64_t registryID) override;
    [[nodiscard]] PointerPropertyWrite writeNumber(const std::string& key, std::int64_t value,
                                                   std::uint64_t registryID) override;

  private:
    /// The service of that id; of a fresh session when the kept one does not have it.
    [[nodiscard]] std::shared_ptr<HIDService> service(std::uint64_t registryID);
    [[nodiscard]] std::shared_ptr<HIDService> findInSession(std::uint64_t registryID) const;
    void renewSession();

    HIDEventSystem& system_;
    /// The services as they were when last asked for. Main executor.
    std::vector<std::shared_ptr<HIDService>> session_;
};

}  // namespace tessara
