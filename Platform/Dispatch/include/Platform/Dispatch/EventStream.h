#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/Mutex.h"

namespace tessara {

/// A listener's hold on its subscription, which ends when this is destroyed or `cancel()`ed. After
/// `cancel()` on the listener's own queue nothing more is delivered; from elsewhere, one delivery
/// that has begun may still be running. It may be cancelled by the listener itself, and after its
/// source has gone.
///
/// One thread at a time. It is a handle and no part of the listener: what the listener holds is let
/// go of at the cancellation, or at the end of the delivery that is running.
class EventSubscription {
  public:
    /// Holds nothing.
    EventSubscription() = default;
    /// `onCancel` is what ends the subscription. It is called once at most.
    explicit EventSubscription(std::move_only_function<void()> onCancel)
        : onCancel_(std::move(onCancel)) {}
    ~EventSubscription() { cancel(); }

    EventSubscription(EventSubscription&& other) noexcept
        : onCancel_(std::exchange(other.onCancel_, nullptr)) {}
    /// Ends the subscription that this one held.
    EventSubscription& operator=(EventSubscription&& other) noexcept {
        if (this != &other) {
            cancel();
            onCancel_ = std::exchange(other.onCancel_, nullptr);
        }
        return *this;
    }

    /// Ends the subscription; nothing if it has ended.
    void cancel() {
        if (auto onCancel = std::exchange(onCancel_, nullptr)) onCancel();
    }

  private:
    std::move_only_function<void()> onCancel_;
};

/// A source of values with any number of listeners: how a change is told to those who asked for it,
/// without waiting for any of them. It is no store: nobody can ask it for the last value.
///
/// Each listener hears, on a queue of its choice, every value that is emitted after it subscribed,
/// in the order of emission. Nothing is dropped and nothing waits: what a listener has not yet
/// taken stands in its queue, without bound. A listener that subscribes later does not hear what
/// went before.
///
/// All operations may be called from any thread, and from within a listener.
template <typename Value>
class EventStream {
  public:
    /// Called on the listener's queue, once for each value.
    using Listener = std::function<void(const Value&)>;

    EventStream() : state_(std::make_shared<State>()) {}

    EventStream(const EventStream&) = delete;
    EventStream& operator=(const EventStream&) = delete;

    /// Adds a listener that is called on `queue`, with `first` ahead of everything else if it is
    /// given, and until the subscription ends. Values already in flight to the listener when the
    /// stream is destroyed still arrive. Never calls the listener within this call.
    [[nodiscard]] EventSubscription subscribe(std::shared_ptr<DispatchQueue> queue,
                                              Listener listener,
                                              std::optional<Value> first = std::nullopt) {
        auto entry = std::make_shared<Entry>(std::move(queue), std::move(listener));
        {
            MutexLock lock(state_->mutex);
            if (first) post(entry, *std::move(first));
            state_->entries.push_back(entry);
        }
        return EventSubscription([entry, weakState = std::weak_ptr<State>(state_)] {
            entry->cancel();
            if (auto state = weakState.lock()) {
                MutexLock lock(state->mutex);
                std::erase(state->entries, entry);
            }
        });
    }

    /// Hands a copy of `value` to every present listener: to its queue, so that none of them has
    /// heard it yet when this returns. Emissions that race each other reach all listeners in one
    /// order.
    void emit(const Value& value) {
        MutexLock lock(state_->mutex);
        for (const auto& entry : state_->entries)
            post(entry, value);
    }

    /// How many subscriptions there are that have not ended.
    [[nodiscard]] std::size_t listenerCount() const {
        MutexLock lock(state_->mutex);
        return state_->entries.size();
    }

  private:
    struct Entry {
        Entry(std::shared_ptr<DispatchQueue> onQueue, Listener toListener)
            : queue(std::move(onQueue)),
              listener(std::make_shared<Listener>(std::move(toListener))) {}

        void deliver(const Value& value) {
            std::shared_ptr<Listener> current;
            {
                MutexLock lock(mutex);
                current = listener;
            }
            if (current) (*current)(value);
        }

        void cancel() {
            std::shared_ptr<Listener> released;  // destroyed once the lock is let go
            MutexLock lock(mutex);
            released.swap(listener);
        }

        const std::shared_ptr<DispatchQueue> queue;
        Mutex mutex;
        std::shared_ptr<Listener> listener TESSARA_GUARDED_BY(mutex);
    };

    static void post(const std::shared_ptr<Entry>& entry, Value value) {
        entry->queue->post([entry, value = std::move(value)] { entry->deliver(value); });
    }

    struct State {
        mutable Mutex mutex;
        std::vector<std::shared_ptr<Entry>> entries TESSARA_GUARDED_BY(mutex);
    };

    const std::shared_ptr<State> state_;
};

}  // namespace tessara
