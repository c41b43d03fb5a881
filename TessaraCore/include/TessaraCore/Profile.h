#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "TessaraCore/ButtonBinding.h"
#include "TessaraCore/ButtonRouter.h"
#include "TessaraCore/PointerSettings.h"
#include "TessaraCore/ScrollSettings.h"
#include "TessaraCore/ScrollTransformer.h"

namespace tessara {

/// One complete set of behaviour for the mouse.
struct Profile {
    /// The resolution of factory profiles.
    static constexpr std::int64_t defaultDPI = 2000;
    /// The button of the factory shift of the resolution.
    static constexpr std::int64_t sniperButton = 5;
    /// The id of the factory default profile.
    static constexpr std::string_view defaultProfileID = "default";

    /// What rules refer to; never shown.
    std::string id = {};
    /// Shown to the user.
    std::string name = {};
    ScrollSettings scroll = {};
    PointerSettings pointer = {};
    std::vector<ButtonBinding> buttons = {};

    /// The factory profile: smooth scrolling, the desktop curve, a slower pointer while the sniper
    /// button is held.
    [[nodiscard]] static Profile default_();
    /// The factory profile with the softer easing that suits a canvas.
    [[nodiscard]] static Profile canvasApp(std::string id, std::string name);
    /// A profile that does nothing: the mouse works as the system would have it.
    [[nodiscard]] static Profile untouched();

    /// A router over the bindings of this profile, with nothing held.
    [[nodiscard]] ButtonRouter makeRouter() const;
    /// A transformer over the scroll settings of this profile, with nothing in flight.
    [[nodiscard]] ScrollTransformer makeScrollTransformer() const;

    bool operator==(const Profile&) const = default;
};

}  // namespace tessara
