#include "TessaraCore/DeviceID.h"

#include <fmt/core.h>

namespace tessara {

std::string DeviceID::description() const {
    return fmt::format("DeviceID({})", rawValue);
}

}  // namespace tessara
