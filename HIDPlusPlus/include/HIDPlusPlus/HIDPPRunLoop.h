#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "Platform/Dispatch/DispatchQueue.h"

namespace tessara {

class HIDPPSendQueue;
class HIDTransport;

/// The one context on which every link and every device of a process does its work, and the
/// platform it works with. Made once, in `main` or in a test, and shared by all devices.
///
/// Devices have no thread of their own beside it: a request and its reply would then change threads
/// six times instead of four, and each change costs more than all of the client's work.
///
/// Nothing blocks here: a write, which may take as long as the device pleases, goes to the send
/// queue of its link, so that a stuck write never delays the report that answers it, nor the end of
/// its link. Only the end of the run loop waits for it.
class HIDPPRunLoop {
  public:
    /// `dispatcher` and `transport` outlive the run loop and everything that was made with it.
    HIDPPRunLoop(Dispatcher& dispatcher, HIDTransport& transport);
    ~HIDPPRunLoop();

    HIDPPRunLoop(const HIDPPRunLoop&) = delete;
    HIDPPRunLoop& operator=(const HIDPPRunLoop&) = delete;

    /// Runs `block` on the link queue, behind what was given to it before. Any thread.
    void perform(DispatchQueue::Block block) const { queue_->post(std::move(block)); }

    /// The link queue itself. Any thread.
    const std::shared_ptr<DispatchQueue>& queue() const { return queue_; }

    /// A queue of its own for the writes of one link. On the link queue, as is the next.
    std::unique_ptr<HIDPPSendQueue> makeSendQueue() const;

    /// Takes over the send queue of a link that has ended, until its last write has returned.
    void retire(std::unique_ptr<HIDPPSendQueue> sendQueue) const;

    /// The platform's devices. Its operations say themselves on which thread they are called.
    HIDTransport& transport() const { return transport_; }

  private:
    // Constant after construction.
    Dispatcher& dispatcher_;
    HIDTransport& transport_;
    const std::shared_ptr<DispatchQueue> queue_;

    /// Owned by the link queue. Declared below it: a write reports its failure there to the last.
    mutable std::vector<std::unique_ptr<HIDPPSendQueue>> retired_;
};

}  // namespace tessara
