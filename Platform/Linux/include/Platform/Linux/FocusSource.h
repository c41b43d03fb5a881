#pragma once

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/WindowIdentity.h"

namespace tessara {

class DispatchQueue;

/// Follows the windows of a session through one connection to its display server. What a window's
/// application is called is not decided here.
///
/// A source is made, used and destroyed on one queue, and its handlers are called there. It waits
/// for answers of the server, so the queue is one on which nothing urgent runs. A server that goes
/// away ends the source and nothing else.
class FocusSource {
  public:
    struct Window {
        WindowIdentity identity;
        /// False for panels and desktops, as far as the display server lists them at all.
        bool isRegular = true;
        bool operator==(const Window&) const = default;
    };

    /// What is told, from the making of the source on: how things stand, and then each change. None
    /// of them may destroy the source.
    struct Handlers {
        /// Another window is in front, or none, or the one in front names itself otherwise. Between
        /// two windows there often is none for an instant.
        std::function<void(const std::optional<WindowIdentity>& window)> onFocus;
        /// All windows, each time one came or went.
        std::function<void(std::vector<Window> windows)> onWindows;
        /// Nothing more will be told, with the reason in words.
        std::function<void(const std::string& reason)> onEnd;
    };

    /// Which windows are meant. It is asked during the call alone.
    using Predicate = std::function<bool(const WindowIdentity& window)>;

    virtual ~FocusSource() = default;

    FocusSource(const FocusSource&) = delete;
    FocusSource& operator=(const FocusSource&) = delete;

    /// Asks for a window to be brought to the front, the newest of those that fit; whether that
    /// happens is up to the window manager. False when none fits.
    virtual bool activate(const Predicate& isWanted) = 0;

  protected:
    FocusSource() = default;
};

/// A source, or why there is none: the middle of a sentence for the user, as "the X11 display
/// \":0\" does not answer".
using MadeFocusSource = std::expected<std::unique_ptr<FocusSource>, std::string>;

/// Through X11: the window manager's _NET_ACTIVE_WINDOW and _NET_CLIENT_LIST, of the Extended
/// Window Manager Hints. `display` is what DISPLAY holds.
[[nodiscard]] MadeFocusSource makeX11FocusSource(const std::string& display,
                                                 std::shared_ptr<DispatchQueue> queue,
                                                 FocusSource::Handlers handlers);

/// Through Wayland's wlr-foreign-toplevel-management, which is how panels manage windows. `display`
/// is what WAYLAND_DISPLAY holds. Fails also where the compositor does not offer the protocol.
[[nodiscard]] MadeFocusSource makeWaylandFocusSource(const std::string& display,
                                                     std::shared_ptr<DispatchQueue> queue,
                                                     FocusSource::Handlers handlers);

}  // namespace tessara
