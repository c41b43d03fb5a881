#include "Support/TestDispatcher.h"

#include <string>

namespace tessara::testing {

ManualDispatcher::LeftoverHandler failOnLeftovers() {
    return [](const std::string& leftovers) { ADD_FAILURE() << leftovers; };
}

}  // namespace tessara::testing
