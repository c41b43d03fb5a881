#include "TessaraCore/RuleSet.h"

namespace tessara {

ProfileResolution RuleSet::resolve(std::optional<std::string_view> bundleID) const {
    const Rule* best = nullptr;
    for (const Rule& rule : rules) {
        if (!rule.isEnabled) continue;
        if (best != nullptr && rule.priority < best->priority) continue;
        if (!matches(rule.pattern, bundleID)) continue;
        if (best == nullptr || rule.priority > best->priority ||
            specificity(rule.pattern) > specificity(best->pattern)) {
            best = &rule;
        }
    }
    if (best == nullptr) return {.profileID = defaultProfileID};
    return {.profileID = best->profileID, .matchedRule = *best};
}

}  // namespace tessara
