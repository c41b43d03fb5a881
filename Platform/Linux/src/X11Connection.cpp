#include "X11Connection.h"

#include <array>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <utility>

#include <fmt/format.h>
#include <unistd.h>

namespace tessara {
namespace {

/// No property that is read here is longer than this in sane use, counted in the 4 bytes of X11;
/// what is longer is cut.
constexpr std::uint32_t longestProperty = 16384;

std::optional<std::string> unlessEmpty(std::string text) {
    return text.empty() ? std::nullopt : std::optional(std::move(text));
}

/// Properties may hold several texts, each with a zero at its end.
std::string upToZero(const std::string& text) {
    return text.substr(0, text.find('\0'));
}

std::string hostName() {
    std::array<char, 256> name{};
    if (::gethostname(name.data(), name.size() - 1) != 0) return {};
    return name.data();
}

/// The program that a process of this machine runs; nothing when it is gone or somebody else's.
std::optional<std::string> executableOf(std::uint32_t processID) {
    std::error_code error;
    std::string path =
        std::filesystem::read_symlink(fmt::format("/proc/{}/exe", processID), error).string();
    if (error) return std::nullopt;
    // Of a program that was replaced by an update while it ran.
    constexpr std::string_view deleted = " (deleted)";
    if (path.ends_with(deleted)) path.resize(path.size() - deleted.size());
    return unlessEmpty(std::move(path));
}

}  // namespace

std::expected<X11Connection, std::string> X11Connection::open(const std::string& display) {
    int screenNumber = 0;
    X11Connection opened;
    // Also a failed connection is one to be given back.
    opened.connection_.reset(xcb_connect(display.c_str(), &screenNumber));
    if (opened.isBroken()) {
        return std::unexpected(fmt::format("the X11 display \"{}\" does not answer", display));
    }
    auto screen = xcb_setup_roots_iterator(xcb_get_setup(opened.connection_.get()));
    for (; screenNumber > 0 && screen.rem > 1; --screenNumber)
        xcb_screen_next(&screen);
    if (screen.rem == 0) {
        return std::unexpected(fmt::format("the X11 display \"{}\" has no screen", display));
    }
    opened.root_ = screen.data->root;
    opened.internAtoms();
    return opened;
}

void X11Connection::internAtoms() {
    struct Wanted {
        std::string_view name;
        xcb_atom_t* atom;
        xcb_intern_atom_cookie_t cookie{};
    };
    std::array wanted{Wanted{"_NET_ACTIVE_WINDOW", &atoms_.activeWindow},
                      Wanted{"_NET_CLIENT_LIST", &atoms_.clientList},
                      Wanted{"_GTK_APPLICATION_ID", &atoms_.gtkApplicationID},
                      Wanted{"_NET_WM_PID", &atoms_.processID},
                      Wanted{"_NET_WM_WINDOW_TYPE", &atoms_.windowType},
                      Wanted{"_NET_WM_WINDOW_TYPE_DESKTOP", &atoms_.typeDesktop},
                      Wanted{"_NET_WM_WINDOW_TYPE_DOCK", &atoms_.typeDock}};
    for (Wanted& each : wanted) {
        each.cookie =
            xcb_intern_atom(connection_.get(), /*only_if_exists=*/0,
                            static_cast<std::uint16_t>(each.name.size()), each.name.data());
    }
    for (const Wanted& each : wanted) {
        const XcbPointer<xcb_intern_atom_reply_t> reply(
            xcb_intern_atom_reply(connection_.get(), each.cookie, nullptr));
        if (reply) *each.atom = reply->atom;
    }
}

void X11Connection::watch(xcb_window_t window, bool isWatched) {
    const std::uint32_t mask = isWatched ? XCB_EVENT_MASK_PROPERTY_CHANGE : XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(connection_.get(), window, XCB_CW_EVENT_MASK, &mask);
    xcb_flush(connection_.get());
}

xcb_window_t X11Connection::activeWindow() const {
    const auto windows = numbers(ask(root_, atoms_.activeWindow));
    return windows.empty() ? XCB_NONE : windows.front();
}

std::vector<xcb_window_t> X11Connection::clientList() const {
    return numbers(ask(root_, atoms_.clientList));
}

FocusSource::Window X11Connection::describe(xcb_window_t window) const {
    // All are asked before the first is answered: one way to the server and back.
    const auto applicationID = ask(window, atoms_.gtkApplicationID);
    const auto wmClass = ask(window, XCB_ATOM_WM_CLASS);
    const auto processID = ask(window, atoms_.processID);
    const auto machine = ask(window, XCB_ATOM_WM_CLIENT_MACHINE);
    const auto type = ask(window, atoms_.windowType);

    WindowIdentity identity;
    identity.applicationID = unlessEmpty(upToZero(text(applicationID)));
    // Two strings, each with a zero at its end.
    const std::string names = text(wmClass);
    identity.instanceName = unlessEmpty(upToZero(names));
    if (const auto end = names.find('\0'); end != std::string::npos) {
        identity.className = unlessEmpty(upToZero(names.substr(end + 1)));
    }
    const auto processes = numbers(processID);
    // A number of another machine's processes means nothing here.
    if (text(machine) == hostName() && !processes.empty()) {
        identity.executable = executableOf(processes.front());
    }
    bool isRegular = true;
    for (const xcb_atom_t each : numbers(type))
        isRegular = isRegular && each != atoms_.typeDesktop && each != atoms_.typeDock;
    return {.identity = std::move(identity), .isRegular = isRegular};
}

void X11Connection::requestActivation(xcb_window_t window) {
    constexpr std::uint32_t asPanel = 2;  // where ordinary programs may be held back
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = atoms_.activeWindow;
    message.data.data32[0] = asPanel;
    message.data.data32[1] = XCB_CURRENT_TIME;
    std::array<char, 32> bytes{};
    static_assert(sizeof message == bytes.size());
    std::memcpy(bytes.data(), &message, bytes.size());
    xcb_send_event(connection_.get(), /*propagate=*/0, root_,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   bytes.data());
    xcb_flush(connection_.get());
}

XcbPointer<xcb_generic_event_t> X11Connection::nextEvent() {
    return XcbPointer<xcb_generic_event_t>(xcb_poll_for_event(connection_.get()));
}

bool X11Connection::isBroken() const {
    return xcb_connection_has_error(connection_.get()) != 0;
}

int X11Connection::descriptor() const {
    return xcb_get_file_descriptor(connection_.get());
}

xcb_get_property_cookie_t X11Connection::ask(xcb_window_t window, xcb_atom_t property) const {
    return xcb_get_property(connection_.get(), /*delete=*/0, window, property, XCB_ATOM_ANY, 0,
                            longestProperty);
}

std::string X11Connection::text(xcb_get_property_cookie_t cookie) const {
    xcb_generic_error_t* refusal = nullptr;
    const XcbPointer<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(connection_.get(), cookie, &refusal));
    const XcbPointer<xcb_generic_error_t> freed(refusal);
    if (!reply || reply->format != 8) return {};
    const int length = xcb_get_property_value_length(reply.get());
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(length)};
}

std::vector<std::uint32_t> X11Connection::numbers(xcb_get_property_cookie_t cookie) const {
    xcb_generic_error_t* refusal = nullptr;
    const XcbPointer<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(connection_.get(), cookie, &refusal));
    const XcbPointer<xcb_generic_error_t> freed(refusal);
    if (!reply || reply->format != 32) return {};
    const auto bytes = static_cast<std::size_t>(xcb_get_property_value_length(reply.get()));
    std::vector<std::uint32_t> values(bytes / sizeof(std::uint32_t));
    if (values.empty()) return values;
    std::memcpy(values.data(), xcb_get_property_value(reply.get()),
                values.size() * sizeof(std::uint32_t));
    return values;
}

}  // namespace tessara
