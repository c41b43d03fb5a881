#include "TessaraEngine/ScopeDecision.h"

#include "TessaraCore/Precondition.h"

namespace tessara {

std::string_view rawValue(UnidentifiedReason reason) {
    switch (reason) {
        case UnidentifiedReason::spiUnavailable:
            return "spiUnavailable";
        case UnidentifiedReason::noHIDEvent:
            return "noHIDEvent";
        case UnidentifiedReason::unknownSender:
            return "unknownSender";
    }
    preconditionFailed("a reason that is none of the cases");
}

}  // namespace tessara
