// The application on real threads, where it may go while the mouse is about to answer.

#include <functional>
#include <optional>
#include <thread>

#include <gtest/gtest.h>

#include "AppWiring/SimulatedAppHost.h"
#include "Platform/Dispatch/ThreadedDispatcher.h"
#include "Support/ProcessResources.h"
#include "TessaraApp/AppModel.h"

namespace tessara {
namespace {

TEST(AppModelOnThreads, may_go_after_any_request_of_its_launch_and_leaves_nothing_behind) {
    const testing::NoLeakedResources resources;
    for (std::size_t requests = 0; requests < 16; ++requests) {
        ThreadedDispatcher dispatcher;
        SimulatedAppHost host(dispatcher);
        host.plugInMouse();
        std::optional<AppModel> model;
        const auto onMain = [&](const std::function<void()>& work) {
            host.mainQueue->post([&] { work(); });
            host.mainQueue->drain();
        };
        onMain([&] {
            model.emplace(host.appPlatform());
            model->start();
        });
        while (host.firmware.requestCount() < requests)
            std::this_thread::yield();
        onMain([&] { model.reset(); });
        host.awaitEndOfConnections();
        EXPECT_EQ(host.hidTransport.openInterfaceCount(), 0) << "after " << requests;
        EXPECT_TRUE(host.files.contents(SimulatedAppHost::configPath));
    }
}

}  // namespace
}  // namespace tessara
