#pragma once

#include "FakeHIDTransport.h"
#include "HIDPPDeviceFixture.h"
#include "ScriptedMouse.h"

namespace tessara {

/// A device and a mouse of a few bytes, nothing of which may be left behind.
class ScriptedMouseFixture : public HIDPPDeviceFixture<FakeHIDTransport> {
  protected:
    void TearDown() override {
        HIDPPDeviceFixture::TearDown();
        EXPECT_EQ(transport.watchCount(), 0U) << "the hot-plug watch outlives the device";
        EXPECT_FALSE(mouse.interface && mouse.interface->isOpen) << "the link was not closed";
    }

    ScriptedMouse mouse{transport, runLoop->queue()};
};

}  // namespace tessara
