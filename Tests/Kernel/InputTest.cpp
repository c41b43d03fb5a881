#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Kernel/EventNode.h"
#include "Kernel/UHIDMouse.h"
#include "Platform/Dispatch/Mutex.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Platform/Linux/KeyboardState.h"
#include "Platform/Linux/LinuxEventTapService.h"
#include "Platform/Linux/LinuxHIDEventSystem.h"
#include "Platform/Linux/VirtualDeviceIdentity.h"
#include "Platform/Linux/VirtualDevices.h"
#include "Platform/Simulated/SimulatedMouse.h"
#include "Support/AllocationCounter.h"
#include "Support/ProcessResources.h"
#include "TessaraEngine/CGEventReaders.h"
#include "TessaraEngine/MonotonicClock.h"
#include "TessaraEngine/PointerPipeline.h"

namespace tessara::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::AllOf;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Ge;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

constexpr std::uint16_t side = BTN_LEFT + 3;
constexpr std::uint8_t leftShiftUsage = 0xE1;

using Moves = std::vector<std::pair<std::int64_t, std::int64_t>>;

NodeEvent key(std::uint16_t code, bool isDown) {
    return {EV_KEY, code, isDown ? 1 : 0};
}

/// A desk with the mouse, not plugged in yet, and a tap that can be put on it. What the tap is
/// shown is written down, and passes unless `decide` says otherwise.
class Desk {
  public:
    Desk() {
        EXPECT_TRUE(output->open().has_value());
        shown_.reserve(5000);  // writing it down is not to allocate
    }
    ~Desk() { endTap(); }

    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    void beginTap() {
        queue_ = dispatcher.makeQueue("ai.tessara.event-tap", QualityOfService::userInteractive);
        queue_->post([this] {
            constexpr EventTapRequest request{.eventsOfInterest = ~std::uint64_t{0}};
            tap_ = taps.makeTap(request, queue_, [this](CGEventType type, CGEvent& event) {
                return take(type, event);
            });
            ASSERT_NE(tap_, nullptr);
            tap_->setEnabled(true);
        });
        queue_->drain();
    }

    /// Returns when everything has been given back.
    void endTap() {
        tap_.reset();
        if (queue_) queue_->drain();
        queue_.reset();
    }

    /// Moves the mouse until the tap is shown that, and leaves no trace of it.
    void awaitGrab() {
        takeShown();
        EXPECT_TRUE(waitFor([this] {
            mouse.pointer().move(1, 0);
            std::this_thread::sleep_for(10ms);
            return !takeShown().empty();
        }));
        static_cast<void>(virtualMouse().framesUntilQuiet());
        takeShown();
    }

    /// The virtual mouse as an application reads it, from the first call on.
    EventNode& virtualMouse() {
        if (!virtualMouse_) {
            virtualMouse_ = std::make_unique<EventNode>(
                EventNode::pathNamed(virtualMouseIdentity.name).value());
        }
        return *virtualMouse_;
    }

    /// Moves the mouse, in bursts that the kernel keeps whole for a late reader, and answers with
    /// how the virtual mouse has moved.
    Moves move(const Moves& moves, std::chrono::nanoseconds interval) {
        Moves out;
        for (std::size_t i = 0; i < moves.size();) {
            auto due = std::chrono::steady_clock::now();
            for (const std::size_t end = std::min(moves.size(), i + 20); i < end; ++i) {
                mouse.pointer().move(static_cast<std::int16_t>(moves[i].first),
                                     static_cast<std::int16_t>(moves[i].second));
                std::this_thread::sleep_until(due += interval);
            }
            for (const NodeFrame& frame : virtualMouse().framesUntilQuiet(30ms))
                out.emplace_back(frame.sumOf(EV_REL, REL_X), frame.sumOf(EV_REL, REL_Y));
        }
        return out;
    }

    std::vector<CGEvent> takeShown() {
        MutexLock lock(mutex_);
        const auto taken = shown_;
        shown_.clear();
        return taken;
    }
    std::vector<CGEventType> notices() {
        MutexLock lock(mutex_);
        return notices_;
    }
    DispatchQueue& queue() { return *queue_; }

    /// What happens meanwhile the tap hears of late.
    template <typename Work>
    void delayTap(Work work) {
        std::atomic<bool> goesOn = false;
        queue_->post([&] {
            while (!goesOn)
                std::this_thread::sleep_for(1ms);
        });
        work();
        goesOn = true;
        queue_->drain();
    }

    ThreadedDispatcher dispatcher;
    SimulatedMouse firmware;
    UHIDMouse mouse{dispatcher, firmware};
    const std::shared_ptr<VirtualDevices> output = std::make_shared<VirtualDevices>();
    const std::shared_ptr<KeyboardState> keyboards = std::make_shared<KeyboardState>();
    LinuxEventTapService taps{
        {{.vendor = UHIDMouse::vendorID, .product = UHIDMouse::productID}}, output, keyboards, {}};
    /// Set while there is no tap.
    std::function<bool(CGEvent& event)> decide = [](CGEvent&) { return true; };

  private:
    bool take(CGEventType type, CGEvent& event) {
        MutexLock lock(mutex_);
        if (type == CGEventType::tapDisabledByTimeout ||
            type == CGEventType::tapDisabledByUserInput) {
            notices_.push_back(type);
            tap_->setEnabled(true);
            return true;
        }
        shown_.push_back(event);
        return decide(event);
    }

    std::shared_ptr<DispatchQueue> queue_;
    std::unique_ptr<EventTap> tap_;
    std::unique_ptr<EventNode> virtualMouse_;
    Mutex mutex_;
    std::vector<CGEvent> shown_ TESSARA_GUARDED_BY(mutex_);
    std::vector<CGEventType> notices_ TESSARA_GUARDED_BY(mutex_);
};

bool isButton(const CGEvent& event, std::int64_t number) {
    return event.integerValue(CGEventField::mouseEventButtonNumber) == number;
}

std::vector<CGEventType> typesOf(const std::vector<CGEvent>& events) {
    std::vector<CGEventType> types;
    std::ranges::transform(events, std::back_inserter(types), &CGEvent::type);
    return types;
}

TEST(Input, a_grabbed_mouse_is_heard_through_the_virtual_one_and_nowhere_else) {
    const NoLeakedResources noLeaks;
    Desk desk;
    desk.mouse.plug();
    desk.decide = [](CGEvent& event) { return !isButton(event, 3); };
    desk.beginTap();
    desk.awaitGrab();
    EventNode real(desk.mouse.pointer().eventNode());

    desk.mouse.pointer().send({.buttons = 0x1, .x = 7, .y = -3, .wheel = -1, .pan = 1});
    desk.mouse.pointer().press(3);
    desk.mouse.pointer().send({});
    const auto frames = desk.virtualMouse().framesUntil(key(BTN_LEFT, false));
    ASSERT_EQ(frames.size(), 2U) << "the side button is taken";
    EXPECT_THAT(
        frames[0].events,
        AllOf(Contains(key(BTN_LEFT, true)), Contains(NodeEvent{EV_REL, REL_X, 7}),
              Contains(NodeEvent{EV_REL, REL_Y, -3}), Contains(NodeEvent{EV_REL, REL_WHEEL, -1}),
              Contains(NodeEvent{EV_REL, REL_WHEEL_HI_RES, -120}),
              Contains(NodeEvent{EV_REL, REL_HWHEEL, 1}),
              Contains(NodeEvent{EV_REL, REL_HWHEEL_HI_RES, 120})));
    EXPECT_THAT(desk.virtualMouse().framesUntilQuiet(), IsEmpty());
    EXPECT_THAT(real.framesUntilQuiet(), IsEmpty());
}

void setMotion(CGEvent& event, std::int64_t dx, std::int64_t dy) {
    event.setIntegerValue(CGEventField::mouseEventDeltaX, dx);
    event.setIntegerValue(CGEventField::mouseEventDeltaY, dy);
}

TEST(Input, motion_comes_out_count_for_count_and_in_order_at_any_rate_and_allocates_nothing) {
    Moves moves;
    Moves expected;
    for (int i = 0; i < 2000; ++i) {
        moves.emplace_back(i % 251 - 125, i % 127 + 1);
        expected.emplace_back(3 * moves.back().first, 3 * moves.back().second);
    }
    Desk desk;
    desk.mouse.plug();
    AllocationCounter counter;
    int events = 0;
    desk.decide = [&](CGEvent& event) {  // a linear curve
        if (++events == 200) counter.start();
        if (events == 3800) counter.stop();
        setMotion(event, 3 * event.integerValue(CGEventField::mouseEventDeltaX),
                  3 * event.integerValue(CGEventField::mouseEventDeltaY));
        return true;
    };
    desk.beginTap();
    desk.awaitGrab();
    for (const auto interval : {1000us, 125us})
        EXPECT_EQ(desk.move(moves, interval), expected);
    desk.endTap();
    EXPECT_EQ(counter.count(), 0U);
}

TEST(Input, the_desktop_curve_comes_out_as_a_replay_of_the_same_events_computes_it) {
    const SystemClock system;
    const auto outcome = [clock = MonotonicClock(system)](PointerPipeline& pipeline,
                                                          const CGEvent& event) {
        const DeviceID device{event.hidEventReference};
        return pipeline.handle(
            pointerMotion(event, device, MotionSource::accelerated, clock).value());
    };
    PointerPipeline live({}, false);
    Desk desk;
    desk.mouse.plug();
    desk.decide = [&](CGEvent& event) {
        const auto [disposition, dx, dy] = outcome(live, event);
        setMotion(event, dx, dy);
        return true;
    };
    desk.beginTap();
    desk.awaitGrab();
    live.reset();
    Moves moves;
    for (int i = 0; i < 240; ++i)
        moves.emplace_back(i - 120, i % 20);
    const Moves out = desk.move(moves, 1ms);

    PointerPipeline replayed({}, false);
    Moves computed;
    for (const CGEvent& event : desk.takeShown()) {
        const auto [disposition, dx, dy] = outcome(replayed, event);
        if (dx != 0 || dy != 0) computed.emplace_back(dx, dy);
    }
    EXPECT_EQ(out, computed);
    EXPECT_GT(out.size(), 200U);
}

TEST(Input, a_mouse_is_grabbed_only_when_none_of_its_buttons_is_down) {
    Desk desk;
    desk.mouse.plug();
    EventNode real(desk.mouse.pointer().eventNode());
    desk.mouse.pointer().press(0);
    desk.mouse.pointer().press(3);
    desk.beginTap();
    static_cast<void>(desk.virtualMouse().framesUntilQuiet(1s));
    desk.mouse.pointer().release(0);
    desk.mouse.pointer().move(5, 0);
    desk.delayTap([&] {
        desk.mouse.pointer().release(3);
        desk.mouse.pointer().move(6, 0);
    });
    EXPECT_THAT(real.framesUntil({EV_REL, REL_X, 6}), SizeIs(6));
    EXPECT_THAT(desk.virtualMouse().framesUntilQuiet(), IsEmpty()) << "everybody has heard it";
    desk.awaitGrab();
    EXPECT_THAT(real.heldKeys(), IsEmpty());
}

TEST(Input, giving_a_mouse_back_leaves_no_button_down_and_the_mouse_as_it_was) {
    Desk desk;
    desk.mouse.plug();
    desk.decide = [](CGEvent& event) { return !isButton(event, 3); };
    desk.beginTap();
    desk.awaitGrab();
    EventNode real(desk.mouse.pointer().eventNode());

    desk.mouse.pointer().press(3);
    desk.mouse.pointer().press(0);
    static_cast<void>(desk.virtualMouse().framesUntil(key(BTN_LEFT, true)));
    desk.endTap();
    EXPECT_THAT(desk.virtualMouse().heldKeys(), IsEmpty());
    desk.mouse.pointer().move(2, 0);
    const auto frames = real.framesUntil({EV_REL, REL_X, 2});
    EXPECT_EQ(frames.size(), 1U) << "of the presses nobody else has heard";
    desk.mouse.pointer().send({});
    EXPECT_THAT(desk.virtualMouse().framesUntilQuiet().size(), 1U) << "the release";

    desk.beginTap();
    desk.awaitGrab();
}

TEST(Input, an_unplugged_mouse_lets_go_of_its_buttons_and_is_grabbed_when_it_is_back) {
    Desk desk;
    desk.mouse.plug();
    desk.decide = [](CGEvent& event) { return !isButton(event, 3); };
    desk.beginTap();
    desk.awaitGrab();
    desk.mouse.pointer().press(3);
    desk.mouse.pointer().press(1);
    static_cast<void>(desk.virtualMouse().framesUntil(key(BTN_RIGHT, true)));
    const auto sender = desk.takeShown().back().hidEventReference;

    desk.mouse.unplug();
    static_cast<void>(desk.virtualMouse().framesUntil(key(BTN_RIGHT, false)));
    EXPECT_THAT(typesOf(desk.takeShown()),
                ElementsAre(CGEventType::rightMouseUp, CGEventType::otherMouseUp));
    EXPECT_THAT(desk.notices(), IsEmpty());

    desk.mouse.plug();
    desk.awaitGrab();
    desk.mouse.pointer().press(0);
    static_cast<void>(desk.virtualMouse().framesUntil(key(BTN_LEFT, true)));
    EXPECT_NE(desk.takeShown().back().hidEventReference, sender);
}

TEST(Input, other_devices_are_neither_grabbed_nor_changed_and_keyboards_are_read_along) {
    Desk desk;
    UHIDPointer foreignMouse(desk.dispatcher, UHIDPointer::foreignMouse());
    auto keyboard =
        std::make_unique<UHIDKeyboard>(desk.dispatcher, UHIDKeyboard::foreignKeyboard());
    desk.mouse.plug();
    keyboard->press(leftShiftUsage);
    desk.beginTap();
    desk.awaitGrab();

    EventNode foreign(foreignMouse.eventNode());
    foreignMouse.press(0);
    foreignMouse.send({.x = 4, .wheel = 1});
    EXPECT_EQ(foreign.framesUntil(key(BTN_LEFT, false)).size(), 2U);
    for (const std::string& node :
         {foreignMouse.eventNode(), keyboard->eventNode(), desk.mouse.keyboard().eventNode()}) {
        const EventNode probe(node);
        EXPECT_TRUE(probe.grab(true)) << node;
    }
    EXPECT_THAT(desk.virtualMouse().framesUntilQuiet(), IsEmpty());

    desk.mouse.pointer().move(1, 0);
    ASSERT_TRUE(desk.virtualMouse().next());
    const CGEvent moved = desk.takeShown().back();
    EXPECT_EQ(moved.flags & CGEventFlagMask::shift, CGEventFlagMask::shift);
    LinuxHIDEventSystem system;
    std::vector<HIDValue> mice;
    const auto services = system.services().value();
    for (const auto& service : services) {
        EXPECT_NE(service->copyProperty("Product"), HIDValue(virtualMouseIdentity.name));
        if (service->copyProperty("PrimaryUsage") != HIDValue(std::int64_t{2})) continue;
        mice.push_back(service->copyProperty("ProductID"));
        const HIDValue sender = static_cast<std::int64_t>(system.senderID(moved).value());
        EXPECT_EQ(service->registryID() == sender,
                  mice.back() == HIDValue(std::int64_t{UHIDMouse::productID}));
    }
    EXPECT_THAT(mice, SizeIs(Ge(2U)));

    keyboard.reset();  // unplugged with the key down
    EXPECT_TRUE(waitFor([&] { return desk.keyboards->flags() == 0; }));
    desk.mouse.keyboard().press(leftShiftUsage);
    EXPECT_TRUE(waitFor([&] { return (desk.keyboards->flags() & CGEventFlagMask::shift) != 0; }));
    desk.endTap();
    EXPECT_EQ(desk.keyboards->flags(), 0U);
}

TEST(Input, a_mouse_that_another_program_holds_is_named_and_taken_when_it_is_free) {
    Desk desk;
    desk.mouse.plug();
    const std::string node = desk.mouse.pointer().eventNode();
    std::array<int, 2> ready{};
    ASSERT_EQ(::pipe(ready.data()), 0);
    for (const std::string name : {"mouse-holder", "another"}) {
        const pid_t other = ::fork();
        if (other == 0) {
            ::prctl(PR_SET_NAME, name.c_str());
            const int fd = ::open(node.c_str(), O_RDONLY);
            if (fd >= 0 && ::ioctl(fd, EVIOCGRAB, 1) == 0 && ::write(ready[1], "!", 1) == 1)
                ::pause();
            ::_exit(1);
        }
        char mark = 0;
        ASSERT_EQ(::read(ready[0], &mark, 1), 1);

        desk.beginTap();
        EXPECT_TRUE(waitFor([&] { return desk.taps.lastRefusal().has_value(); }));
        EXPECT_THAT(desk.taps.lastRefusal().value_or(""),
                    AllOf(HasSubstr(node), HasSubstr(fmt::format("{} ({})", name, other))));
        ::kill(other, SIGKILL);
        ::waitpid(other, nullptr, 0);
        desk.awaitGrab();
        EXPECT_EQ(desk.taps.lastRefusal(), std::nullopt);
        desk.endTap();
    }
    ::close(ready[0]);
    ::close(ready[1]);
}

TEST(Input, a_mouse_is_taken_once_it_may_be_read_and_given_back_when_it_may_not_any_more) {
    constexpr uid_t nobody = 65534;
    Desk desk;
    desk.mouse.plug();
    const std::string node = desk.mouse.pointer().eventNode();
    static_cast<void>(desk.virtualMouse());
    const auto handTo = [&node](uid_t user) {  // for a process that is nobody's
        EXPECT_EQ(::seteuid(0), 0);
        EXPECT_EQ(::chown(node.c_str(), user, static_cast<gid_t>(-1)), 0);
        EXPECT_EQ(::seteuid(nobody), 0);
    };
    handTo(0);
    desk.beginTap();
    EXPECT_TRUE(waitFor([&] { return desk.taps.lastRefusal().has_value(); }));
    handTo(nobody);
    desk.awaitGrab();
    desk.mouse.pointer().press(0);
    static_cast<void>(desk.virtualMouse().framesUntil(key(BTN_LEFT, true)));

    handTo(0);
    static_cast<void>(desk.virtualMouse().framesUntil(key(BTN_LEFT, false)));
    EXPECT_TRUE(waitFor([&] { return desk.taps.lastRefusal().has_value(); }));
    EXPECT_EQ(::seteuid(0), 0);
    EXPECT_TRUE(EventNode(node).grab(true));
}

/// Another mouse of the kind that taps are for.
UHIDDescription wantedMouse(const char* place) {
    UHIDDescription description = UHIDPointer::foreignMouse();
    description.place = place;
    description.vendorID = UHIDMouse::vendorID;
    description.productID = UHIDMouse::productID;
    return description;
}

TEST(Input, a_mouse_with_more_on_its_node_than_the_virtual_one_can_say_is_left_as_it_is) {
    const std::initializer_list<std::vector<std::uint8_t>> additions{
        {0x05, 0x0C, 0x09, 0xE0, 0x15, 0, 0x25, 0x7F, 0x75, 8, 0x95, 1, 0x81, 2},    // a slider
        {0x05, 0x07, 0x09, 0x04, 0x15, 0, 0x25, 1, 0x75, 8, 0x95, 1, 0x81, 2},       // a key
        {0x05, 0x01, 0x09, 0x37, 0x15, 0x81, 0x25, 0x7F, 0x75, 8, 0x95, 1, 0x81, 6}  // a dial
    };
    Desk desk;
    desk.beginTap();
    for (const auto& addition : additions) {
        auto description = wantedMouse("usb-0000:00:14.0-4/input0");
        auto& descriptor = description.reportDescriptor;
        descriptor.insert(descriptor.end() - 1, addition.begin(), addition.end());
        const UHIDPointer more(desk.dispatcher, description);
        EXPECT_TRUE(waitFor([&] { return desk.taps.lastRefusal().has_value(); }));
        EXPECT_THAT(desk.taps.lastRefusal().value_or(""), HasSubstr("more than buttons"));
        EXPECT_TRUE(EventNode(more.eventNode()).grab(true));
    }
}

TEST(Input,
     after_a_delay_that_cost_reports_the_tap_is_told_and_the_buttons_are_brought_up_to_date) {
    Desk desk;
    desk.mouse.plug();
    desk.beginTap();
    desk.awaitGrab();
    desk.mouse.pointer().press(0);
    static_cast<void>(desk.virtualMouse().framesUntil(key(BTN_LEFT, true)));

    desk.delayTap([&] {
        desk.mouse.pointer().release(0);
        desk.mouse.pointer().press(3);
        for (int i = 0; i < 500; ++i)
            desk.mouse.pointer().move(1, 1);
    });
    const auto frames = desk.virtualMouse().framesUntil(key(side, true));
    EXPECT_THAT(frames.back().events, Contains(key(BTN_LEFT, false)));
    EXPECT_THAT(desk.virtualMouse().heldKeys(), ElementsAre(side));
    // Once for each time that the kernel ran out of room, which can be again before it is read.
    EXPECT_THAT(desk.notices(), AllOf(Not(IsEmpty()), Each(CGEventType::tapDisabledByTimeout)));
    desk.mouse.pointer().release(3);
    static_cast<void>(desk.virtualMouse().framesUntil(key(side, false)));
}

/// The descriptor on which this process has the node open; -1 when it has none.
int descriptorOf(const std::string& node) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        if (std::filesystem::read_symlink(entry.path(), error) == node)
            return std::stoi(entry.path().filename());
    }
    return -1;
}

TEST(Input, a_revoked_mouse_is_let_go_of_told_and_taken_again) {
    Desk desk;
    desk.mouse.plug();
    desk.beginTap();
    desk.awaitGrab();
    desk.mouse.pointer().press(0);
    static_cast<void>(desk.virtualMouse().framesUntil(key(BTN_LEFT, true)));
    ASSERT_EQ(::ioctl(descriptorOf(desk.mouse.pointer().eventNode()), EVIOCREVOKE, nullptr), 0);
    static_cast<void>(desk.virtualMouse().framesUntil(key(BTN_LEFT, false)));
    EXPECT_TRUE(waitFor([&] { return !desk.notices().empty(); }));
    EXPECT_THAT(desk.notices(), ElementsAre(CGEventType::tapDisabledByUserInput));
    desk.mouse.pointer().release(0);
    desk.awaitGrab();
}

TEST(Input, a_virtual_mouse_that_fails_gives_the_mouse_back_until_it_works_again) {
    Desk desk;
    desk.mouse.plug();
    desk.beginTap();
    desk.awaitGrab();
    EventNode real(desk.mouse.pointer().eventNode());
    desk.output->mouse.close();
    desk.mouse.pointer().move(1, 0);  // lost: nobody could know
    EXPECT_TRUE(waitFor([&] { return desk.taps.lastRefusal().has_value(); }));
    desk.mouse.pointer().move(9, 0);
    static_cast<void>(real.framesUntil({EV_REL, REL_X, 9}));
    EXPECT_TRUE(waitFor([&] { return !desk.taps.lastRefusal(); })) << "it has been made anew";
}

TEST(Input, a_mouse_of_another_seat_is_left_as_it_is) {
    const char* const place = "usb-0000:00:14.0-6/input0";
    std::filesystem::create_directories("/run/udev/rules.d");
    std::ofstream("/run/udev/rules.d/72-other-seat.rules") << fmt::format(
        "SUBSYSTEM==\"input\", ATTRS{{phys}}==\"{}\", ENV{{ID_SEAT}}=\"seat-other\"\n", place);
    ASSERT_EQ(std::system("udevadm control --reload"), 0);
    Desk desk;
    desk.beginTap();
    const UHIDPointer other(desk.dispatcher, wantedMouse(place));
    EXPECT_TRUE(waitFor([&] { return desk.taps.lastRefusal().has_value(); }));
    EXPECT_THAT(desk.taps.lastRefusal().value_or(""), HasSubstr("another seat"));
    EXPECT_TRUE(EventNode(other.eventNode()).grab(true));
}

TEST(Input, two_hundred_plugs_and_unplugs_leak_nothing) {
    const NoLeakedResources noLeaks;
    Desk desk;
    const auto plug = [&desk](const char* place) {
        return std::make_unique<UHIDPointer>(desk.dispatcher, wantedMouse(place));
    };
    desk.beginTap();
    std::size_t descriptors = 0;
    for (int pair = 0; pair < 100; ++pair) {
        auto other = std::async(std::launch::async, plug, "usb-0000:00:14.0-5/input0");
        std::array mice{plug("usb-0000:00:14.0-4/input0"), other.get()};
        EXPECT_TRUE(waitFor([&] {  // both are grabbed
            mice[0]->move(1, 0);
            mice[1]->move(0, 1);
            std::this_thread::sleep_for(10ms);
            const auto shown = desk.takeShown();
            const auto senderOfLast = shown.empty() ? 0 : shown.back().hidEventReference;
            return std::ranges::any_of(shown, [&](const CGEvent& event) {
                return event.hidEventReference != senderOfLast;
            });
        })) << pair;
        for (auto& mouse : mice)
            mouse.reset();
        EXPECT_TRUE(waitFor([&] {
            desk.queue().drain();
            if (descriptors == 0) descriptors = openFileDescriptorCount();
            return openFileDescriptorCount() <= descriptors;
        })) << pair;
    }
}

}  // namespace
}  // namespace tessara::testing
