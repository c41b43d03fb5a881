#include <QCoreApplication>
#include <QTemporaryDir>
#include <memory>

#include <gtest/gtest.h>

#include "TessaraApp/Tray/SingleInstance.h"
#include "Waiting.h"

namespace tessara {
namespace {

TEST(SingleInstance, without_a_bus_a_second_copy_raises_the_first_and_a_third_takes_its_place) {
    const QTemporaryDir runtimeFolder;
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    qputenv("XDG_RUNTIME_DIR", runtimeFolder.path().toLocal8Bit());
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    const auto copy = [] { return std::make_unique<SingleInstance>(QStringLiteral("ai.test.X")); };

    auto first = copy();
    ASSERT_TRUE(first->claim());
    int raises = 0;
    QObject::connect(first.get(), &SingleInstance::raiseRequested, [&] { ++raises; });
    EXPECT_FALSE(copy()->claim());
    EXPECT_TRUE(waitUntil([&] { return raises == 1; }));
    first.reset();
    EXPECT_TRUE(copy()->claim()) << "the first has gone";
}

}  // namespace
}  // namespace tessara
