#include <algorithm>
#include <utility>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Linux/FocusSource.h"
#include "ReadableWatch.h"
#include "X11Connection.h"

namespace tessara {
namespace {

class X11FocusSource final : public FocusSource {
  public:
    X11FocusSource(X11Connection connection, std::shared_ptr<DispatchQueue> queue,
                   Handlers handlers)
        : handlers_(std::move(handlers)),
          connection_(std::move(connection)),
          readable_(std::move(queue), connection_.descriptor(), [this] { return takeEvents(); }) {
        connection_.watch(connection_.root(), true);
        // What changed ahead of the watch is in these answers, and what changes later is told.
        readClientList();
        readActiveWindow();
        if (takeEvents() && !readable_.isWaiting())
            handlers_.onEnd("the system has no room to wait for the X11 display");
    }

    bool activate(const Predicate& isWanted) override {
        const auto found = std::ranges::find_if(
            windows_.rbegin(), windows_.rend(),
            [&](const ListedWindow& each) { return isWanted(each.described.identity); });
        if (found == windows_.rend()) return false;
        connection_.requestActivation(found->window);
        return true;
    }

  private:
    struct ListedWindow {
        xcb_window_t window = XCB_NONE;
        Window described;
    };

    /// False when the connection is gone. Goes on until nothing is left that arrived while an
    /// answer was read: the descriptor does not show that any more. Many events are one reason to
    /// look.
    bool takeEvents() {
        for (;;) {
            bool isOtherActive = false;
            bool isOtherList = false;
            while (const auto event = connection_.nextEvent()) {
                const xcb_property_notify_event_t* const change = propertyChange(*event);
                if (!change) continue;
                const bool isList = change->window == connection_.root() &&
                                    change->atom == connection_.clientListAtom();
                isOtherList = isOtherList || isList;
                isOtherActive = isOtherActive || change->window == watched_ ||
                                change->atom == connection_.activeWindowAtom();
            }
            if (isOtherList) readClientList();
            if (isOtherActive) readActiveWindow();
            if (!isOtherList && !isOtherActive) break;
        }
        if (!connection_.isBroken()) return true;
        handlers_.onEnd("the X11 display has gone");
        return false;
    }

    /// Null for other events. Errors come as such too, of windows that vanished meanwhile; they are
    /// no news.
    static const xcb_property_notify_event_t* propertyChange(const xcb_generic_event_t& event) {
        constexpr std::uint8_t sentByOthers = 0x80;
        if ((event.response_type & ~sentByOthers) != XCB_PROPERTY_NOTIFY) return nullptr;
        return reinterpret_cast<const xcb_property_notify_event_t*>(&event);
    }

    void readActiveWindow() {
        const xcb_window_t active = connection_.activeWindow();
        auto identity = identityOf(active);
        // Some programs name their windows late, or name them just ahead of the watch.
        const xcb_window_t nameless =
            identity && !identity->applicationID && !identity->className ? active : XCB_NONE;
        if (nameless != watched_) {
            if (watched_ != XCB_NONE) connection_.watch(watched_, false);
            if (nameless != XCB_NONE) {
                connection_.watch(nameless, true);
                identity = identityOf(active);
            }
            watched_ = nameless;
        }
        const auto listed = std::ranges::find(windows_, active, &ListedWindow::window);
        if (identity && listed != windows_.end() && listed->described.identity != *identity) {
            listed->described.identity = *identity;
            tellWindows();
        }
        handlers_.onFocus(identity);
    }

    [[nodiscard]] std::optional<WindowIdentity> identityOf(xcb_window_t window) const {
        if (window == XCB_NONE) return std::nullopt;
        return connection_.describe(window).identity;
    }

    void readClientList() {
        std::vector<ListedWindow> windows;
        for (const xcb_window_t window : connection_.clientList()) {
            const auto known = std::ranges::find(windows_, window, &ListedWindow::window);
            windows.push_back(known != windows_.end()
                                  ? *known
                                  : ListedWindow{window, connection_.describe(window)});
        }
        windows_ = std::move(windows);
        tellWindows();
    }

    void tellWindows() const {
        std::vector<Window> told;
        for (const ListedWindow& each : windows_)
            told.push_back(each.described);
        handlers_.onWindows(std::move(told));
    }

    const Handlers handlers_;
    X11Connection connection_;
    /// Of the client list, oldest first.
    std::vector<ListedWindow> windows_;
    /// The window in front while it has no name.
    xcb_window_t watched_ = XCB_NONE;
    /// Destroyed ahead of the connection, whose descriptor it is.
    const ReadableWatch readable_;
};

}  // namespace

MadeFocusSource makeX11FocusSource(const std::string& display, std::shared_ptr<DispatchQueue> queue,
                                   FocusSource::Handlers handlers) {
    auto connection = X11Connection::open(display);
    if (!connection) return std::unexpected(connection.error());
    return std::make_unique<X11FocusSource>(*std::move(connection), std::move(queue),
                                            std::move(handlers));
}

}  // namespace tessara
