#pragma once

#include <cstdint>
#include <functional>
#include <utility>

#include "Platform/Dispatch/Mutex.h"

namespace tessara {

/// Takes the requests for a resolution from the macro executor to whoever sets it at the time; with
/// nobody there they are dropped. Any thread.
class DPISink {
  public:
    using Handler = std::function<void(std::int64_t dpi)>;

    void setHandler(Handler handler) {
        MutexLock lock(mutex_);
        std::swap(handler_, handler);
    }

    void operator()(std::int64_t dpi) const {
        Handler handler;
        {
            MutexLock lock(mutex_);
            handler = handler_;
        }
        if (handler) handler(dpi);
    }

  private:
    mutable Mutex mutex_;
    Handler handler_ TESSARA_GUARDED_BY(mutex_);
};

}  // namespace tessara
