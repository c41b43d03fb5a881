#pragma once

#include <cstdint>
#include <cstdlib>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <xcb/xcb.h>

#include "Platform/Linux/FocusSource.h"

namespace tessara {

struct FreeMemory {
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): libxcb gives out what malloc gave it.
    void operator()(void* memory) const noexcept { std::free(memory); }
};

/// What libxcb hands out to be freed.
template <typename Value>
using XcbPointer = std::unique_ptr<Value, FreeMemory>;

/// A connection to an X server with the few questions that are asked of its window manager and its
/// windows. A window that has vanished answers nothing. One thread.
class X11Connection {
  public:
    /// Connects to the display, and fails with the reason in words.
    [[nodiscard]] static std::expected<X11Connection, std::string> open(const std::string& display);

    /// Has a window's changes of properties told as events, or no more.
    void watch(xcb_window_t window, bool isWatched);

    [[nodiscard]] xcb_window_t root() const { return root_; }
    [[nodiscard]] xcb_atom_t activeWindowAtom() const { return atoms_.activeWindow; }
    [[nodiscard]] xcb_atom_t clientListAtom() const { return atoms_.clientList; }

    /// The window in front; XCB_NONE when there is none or no window manager.
    [[nodiscard]] xcb_window_t activeWindow() const;
    /// The managed windows, oldest first.
    [[nodiscard]] std::vector<xcb_window_t> clientList() const;
    [[nodiscard]] FocusSource::Window describe(xcb_window_t window) const;

    /// Asks the window manager to bring a window to the front, as a panel would.
    void requestActivation(xcb_window_t window);

    /// The next event that has arrived; null when there is none.
    [[nodiscard]] XcbPointer<xcb_generic_event_t> nextEvent();
    [[nodiscard]] bool isBroken() const;
    [[nodiscard]] int descriptor() const;

  private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const noexcept { xcb_disconnect(connection); }
    };

    struct Atoms {
        xcb_atom_t activeWindow = XCB_NONE;
        xcb_atom_t clientList = XCB_NONE;
        xcb_atom_t gtkApplicationID = XCB_NONE;
        xcb_atom_t processID = XCB_NONE;
        xcb_atom_t windowType = XCB_NONE;
        xcb_atom_t typeDesktop = XCB_NONE;
        xcb_atom_t typeDock = XCB_NONE;
    };

    X11Connection() = default;

    void internAtoms();
    [[nodiscard]] xcb_get_property_cookie_t ask(xcb_window_t window, xcb_atom_t property) const;
    [[nodiscard]] std::string text(xcb_get_property_cookie_t cookie) const;
    [[nodiscard]] std::vector<std::uint32_t> numbers(xcb_get_property_cookie_t cookie) const;

    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    xcb_window_t root_ = XCB_NONE;
    Atoms atoms_;
};

}  // namespace tessara
