#include "TessaraCore/Profile.h"

#include <utility>

namespace tessara {

Profile Profile::default_() {
    return {.id = std::string(defaultProfileID),
            .name = "Default",
            .scroll = {},
            .pointer = {.isEnabled = true, .dpi = defaultDPI, .curve = PointerCurve::desktop},
            .buttons = {{.button = sniperButton, .action = DPIShiftAction{.toDPI = 400}}}};
}

Profile Profile::canvasApp(std::string id, std::string name) {
    Profile profile = default_();
    profile.id = std::move(id);
    profile.name = std::move(name);
    profile.scroll.easing = Easing::easeInOut;
    return profile;
}

Profile Profile::untouched() {
    return {.id = "passthrough",
            .name = "Pass Through",
            .scroll = ScrollSettings::passThrough,
            .pointer = {.isEnabled = false, .dpi = defaultDPI, .curve = PointerCurve::desktop},
            .buttons = {}};
}

ButtonRouter Profile::makeRouter() const {
    return {buttons, pointer.dpi};
}

ScrollTransformer Profile::makeScrollTransformer() const {
    return ScrollTransformer(scroll);
}

}  // namespace tessara
