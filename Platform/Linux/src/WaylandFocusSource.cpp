#include <algorithm>
#include <cerrno>
#include <cstring>
#include <list>
#include <span>
#include <string_view>
#include <utility>

#include <fmt/format.h>
#include <wayland-client.h>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Linux/FocusSource.h"
#include "ReadableWatch.h"
#include "wlr-foreign-toplevel-management-client.h"

namespace tessara {
namespace {

using Manager = zwlr_foreign_toplevel_manager_v1;
using Handle = zwlr_foreign_toplevel_handle_v1;

template <auto Destroy>
struct DestroyWith {
    void operator()(auto* object) const noexcept { Destroy(object); }
};
using DisplayPointer = std::unique_ptr<wl_display, DestroyWith<wl_display_disconnect>>;
using RegistryPointer = std::unique_ptr<wl_registry, DestroyWith<wl_registry_destroy>>;
using SeatPointer = std::unique_ptr<wl_seat, DestroyWith<wl_seat_destroy>>;
using ManagerPointer =
    std::unique_ptr<Manager, DestroyWith<zwlr_foreign_toplevel_manager_v1_destroy>>;
using HandlePointer = std::unique_ptr<Handle, DestroyWith<zwlr_foreign_toplevel_handle_v1_destroy>>;

class WaylandFocusSource final : public FocusSource {
  public:
    WaylandFocusSource(DisplayPointer display, Handlers handlers)
        : handlers_(std::move(handlers)),
          display_(std::move(display)),
          registry_(wl_display_get_registry(display_.get())) {
        wl_registry_add_listener(registry_.get(), &registryListener, this);
    }

    /// Waits for the globals and then for the windows that exist. Fails with the reason in words.
    std::expected<void, std::string> begin(std::shared_ptr<DispatchQueue> queue) {
        if (wl_display_roundtrip(display_.get()) < 0) return std::unexpected(failure());
        if (!manager_) {
            return std::unexpected("the Wayland compositor does not offer its list of windows");
        }
        if (wl_display_roundtrip(display_.get()) < 0) return std::unexpected(failure());
        hasBegun_ = true;
        tellWindows();
        tellFocus();
        readable_.emplace(std::move(queue), wl_display_get_fd(display_.get()),
                          [this] { return takeEvents(); });
        if (!readable_->isWaiting())
            return std::unexpected("the system has no room to wait for it");
        return {};
    }

    bool activate(const Predicate& isWanted) override {
        if (!seat_) return false;
        const auto found =
            std::ranges::find_if(toplevels_.rbegin(), toplevels_.rend(),
                                 [&](const Toplevel& each) { return isWanted(identityOf(each)); });
        if (found == toplevels_.rend()) return false;
        zwlr_foreign_toplevel_handle_v1_activate(found->handle.get(), seat_.get());
        wl_display_flush(display_.get());
        return true;
    }

  private:
    /// One window. Changes are taken over together, when the compositor says that they are whole.
    struct Toplevel {
        struct State {
            std::string appID;
            bool isActivated = false;
        };
        WaylandFocusSource* source = nullptr;
        HandlePointer handle;
        State current;
        State next;
    };

    static const wl_registry_listener registryListener;
    static const zwlr_foreign_toplevel_manager_v1_listener managerListener;
    static const zwlr_foreign_toplevel_handle_v1_listener handleListener;

    static WindowIdentity identityOf(const Toplevel& toplevel) {
        WindowIdentity identity;
        if (!toplevel.current.appID.empty()) identity.applicationID = toplevel.current.appID;
        return identity;
    }

    static void bindGlobal(void* data, wl_registry* registry, std::uint32_t name,
                           const char* interface, std::uint32_t version) {
        auto& self = *static_cast<WaylandFocusSource*>(data);
        const auto bind = [&](const wl_interface& wanted, std::uint32_t newest) {
            return wl_registry_bind(registry, name, &wanted, std::min(version, newest));
        };
        if (std::string_view(interface) == wl_seat_interface.name && !self.seat_) {
            self.seat_.reset(static_cast<wl_seat*>(bind(wl_seat_interface, 1)));
        }
        if (std::string_view(interface) == zwlr_foreign_toplevel_manager_v1_interface.name &&
            !self.manager_) {
            constexpr std::uint32_t newestKnown = 3;
            self.manager_.reset(static_cast<Manager*>(
                bind(zwlr_foreign_toplevel_manager_v1_interface, newestKnown)));
            zwlr_foreign_toplevel_manager_v1_add_listener(self.manager_.get(), &managerListener,
                                                          &self);
        }
    }

    void add(Handle* handle) {
        Toplevel& added = toplevels_.emplace_back();
        added.source = this;
        added.handle.reset(handle);
        zwlr_foreign_toplevel_handle_v1_add_listener(handle, &handleListener, &added);
    }

    static bool holdsActivated(const wl_array& states) {
        // The wire aligns arrays to their 32-bit members.
        const std::span values(static_cast<const std::uint32_t*>(states.data),
                               states.size / sizeof(std::uint32_t));
        return std::ranges::find(values, ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED) !=
               values.end();
    }

    void settle(Toplevel& toplevel) {
        const bool isRenamed = toplevel.next.appID != toplevel.current.appID;
        const bool wasActivated = toplevel.current.isActivated;
        toplevel.current = toplevel.next;
        // With several seats several are active; the last one to become so is taken as in front.
        const bool comesForward = toplevel.current.isActivated && !wasActivated;
        const bool stepsBack = !toplevel.current.isActivated && front_ == &toplevel;
        if (comesForward) front_ = &toplevel;
        if (stepsBack) front_ = anyActivated();
        if (isRenamed) tellWindows();
        if (comesForward || stepsBack || (isRenamed && front_ == &toplevel)) tellFocus();
    }

    void remove(Toplevel& toplevel) {
        const bool wasInFront = front_ == &toplevel;
        toplevels_.remove_if([&](const Toplevel& each) { return &each == &toplevel; });
        if (wasInFront) front_ = anyActivated();
        tellWindows();
        if (wasInFront) tellFocus();
    }

    Toplevel* anyActivated() {
        const auto found = std::ranges::find_if(
            toplevels_, [](const Toplevel& each) { return each.current.isActivated; });
        return found == toplevels_.end() ? nullptr : &*found;
    }

    void tellFocus() const {
        if (!hasBegun_) return;
        handlers_.onFocus(front_ ? std::optional(identityOf(*front_)) : std::nullopt);
    }

    void tellWindows() const {
        if (!hasBegun_) return;
        std::vector<Window> windows;
        for (const Toplevel& each : toplevels_)
            windows.push_back({.identity = identityOf(each)});
        handlers_.onWindows(std::move(windows));
    }

    /// False when the connection is gone or the compositor has said its last word.
    bool takeEvents() {
        wl_display* const display = display_.get();
        bool isGood = true;
        while (isGood && wl_display_prepare_read(display) != 0)
            isGood = wl_display_dispatch_pending(display) >= 0;
        isGood = isGood && wl_display_read_events(display) >= 0 &&
                 wl_display_dispatch_pending(display) >= 0;
        wl_display_flush(display);
        if (isGood && !isFinished_) return true;
        handlers_.onEnd(isGood ? "the Wayland compositor has ended its list of windows"
                               : failure());
        return false;
    }

    [[nodiscard]] std::string failure() const {
        return fmt::format("the Wayland compositor has gone ({})",
                           std::strerror(wl_display_get_error(display_.get())));
    }

    const Handlers handlers_;
    // Each is destroyed ahead of what it was made from.
    const DisplayPointer display_;
    const RegistryPointer registry_;
    SeatPointer seat_;
    ManagerPointer manager_;
    /// Oldest first; the compositor's events hold their addresses.
    std::list<Toplevel> toplevels_;
    Toplevel* front_ = nullptr;
    bool hasBegun_ = false;
    bool isFinished_ = false;
    std::optional<ReadableWatch> readable_;
};

const wl_registry_listener WaylandFocusSource::registryListener{.global = bindGlobal,
                                                                .global_remove = [](auto...) {}};

const zwlr_foreign_toplevel_manager_v1_listener WaylandFocusSource::managerListener{
    .toplevel = [](void* data, Manager*,
                   Handle* handle) { static_cast<WaylandFocusSource*>(data)->add(handle); },
    .finished = [](void* data,
                   Manager*) { static_cast<WaylandFocusSource*>(data)->isFinished_ = true; }};

const zwlr_foreign_toplevel_handle_v1_listener WaylandFocusSource::handleListener{
    .title = [](auto...) {},
    .app_id = [](void* data, Handle*,
                 const char* appID) { static_cast<Toplevel*>(data)->next.appID = appID; },
    .output_enter = [](auto...) {},
    .output_leave = [](auto...) {},
    .state =
        [](void* data, Handle*, wl_array* states) {
            static_cast<Toplevel*>(data)->next.isActivated = holdsActivated(*states);
        },
    .done =
        [](void* data, Handle*) {
            auto& toplevel = *static_cast<Toplevel*>(data);
            toplevel.source->settle(toplevel);
        },
    .closed =
        [](void* data, Handle*) {
            auto& toplevel = *static_cast<Toplevel*>(data);
            toplevel.source->remove(toplevel);
        },
    .parent = [](auto...) {}};

}  // namespace

MadeFocusSource makeWaylandFocusSource(const std::string& display,
                                       std::shared_ptr<DispatchQueue> queue,
                                       FocusSource::Handlers handlers) {
    DisplayPointer connection(wl_display_connect(display.c_str()));
    if (!connection) {
        return std::unexpected(fmt::format("the Wayland display \"{}\" does not answer ({})",
                                           display, std::strerror(errno)));
    }
    auto source = std::make_unique<WaylandFocusSource>(std::move(connection), std::move(handlers));
    if (auto begun = source->begin(std::move(queue)); !begun) return std::unexpected(begun.error());
    return source;
}

}  // namespace tessara
