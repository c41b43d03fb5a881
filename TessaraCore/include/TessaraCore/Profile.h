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

/// One complete set of behaviour for the mouse: scroll, pointer and buttons. Which profile applies
/// when is the business of the rules (RuleSet.h). It is plain data; the router and the transformer
/// that it makes do not look back at it.
///
/// The stored form is an object with the names of the fields as its keys, all required.
struct Profile {
    /// The resolution of factory profiles, in counts per inch.
    static constexpr std::int64_t defaultDPI = 2000;
    /// The button of the factory shift of the resolution.
    static constexpr std::int64_t sniperButton = 5;
    /// The id of the factory default profile.
    static constexpr std::string_view defaultProfileID = "default";

    /// What rules refer to, letter by letter; never shown. A document may hold two profiles of one
    /// id: the first is found.
    std::string id = {};
    /// Shown to the user.
    std::string name = {};
    ScrollSettings scroll = {};
    PointerSettings pointer = {};
    /// Any number, for any buttons. Their order decides only between bindings that are equal in
    /// what they ask for.
    std::vector<ButtonBinding> buttons = {};

    /// The factory profile, "Default": smooth scrolling, the desktop curve, and a resolution of 400
    /// while the sniper button is held.
    [[nodiscard]] static Profile default_();
    /// The factory profile with the softer easing that suits a canvas.
    [[nodiscard]] static Profile canvasApp(std::string id, std::string name);
    /// A profile that does nothing, "Pass Through": the mouse works as the system would have it,
    /// but for its resolution.
    [[nodiscard]] static Profile untouched();

    /// A router over the bindings of this profile, on its resolution, with nothing held.
    [[nodiscard]] ButtonRouter makeRouter() const;
    /// A transformer over the scroll settings of this profile, with nothing in flight.
    [[nodiscard]] ScrollTransformer makeScrollTransformer() const;

    bool operator==(const Profile&) const = default;
};

}  // namespace tessara
