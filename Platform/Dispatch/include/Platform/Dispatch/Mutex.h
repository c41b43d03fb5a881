#pragma once

#include <mutex>

/// Mutual exclusion with clang's thread-safety annotations. The standard library's locks carry
/// none, so the analysis would see nothing; these wrappers cost nothing and add the attributes.
/// A clang build stops where guarded state is touched without its lock; g++ sees plain locks.
///
/// Locks here guard the fields of one object, for a few instructions. They are not for waiting:
/// nothing of another class is called with one held. What must happen in order goes to a queue.
/// https://clang.llvm.org/docs/ThreadSafetyAnalysis.html
#if defined(__clang__)
#define TESSARA_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define TESSARA_THREAD_ATTRIBUTE(x)
#endif

/// On a data member: read and written only with the named mutex held.
#define TESSARA_GUARDED_BY(x) TESSARA_THREAD_ATTRIBUTE(guarded_by(x))
/// On a function: the caller holds the named mutex.
#define TESSARA_REQUIRES(...) TESSARA_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
/// On a function: the caller does not hold the named mutex.
#define TESSARA_EXCLUDES(...) TESSARA_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))

namespace tessara {

/// A `std::mutex` that the analysis knows. Not recursive. A member that is locked by const
/// operations is `mutable`.
class TESSARA_THREAD_ATTRIBUTE(capability("mutex")) Mutex {
  public:
    /// For a condition variable, which unlocks and locks again; all others use a `MutexLock`.
    void lock() TESSARA_THREAD_ATTRIBUTE(acquire_capability()) { mutex_.lock(); }
    void unlock() TESSARA_THREAD_ATTRIBUTE(release_capability()) { mutex_.unlock(); }

    /// For a wait of `std::condition_variable`; the analysis does not follow it.
    std::mutex& native() { return mutex_; }

  private:
    std::mutex mutex_;
};

/// Holds a `Mutex` for a scope.
class TESSARA_THREAD_ATTRIBUTE(scoped_lockable) MutexLock {
  public:
    explicit MutexLock(Mutex& mutex) TESSARA_THREAD_ATTRIBUTE(acquire_capability(mutex))
        : mutex_(mutex) {
        mutex_.lock();
    }
    ~MutexLock() TESSARA_THREAD_ATTRIBUTE(release_capability()) { mutex_.unlock(); }

    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

  private:
    Mutex& mutex_;
};

}  // namespace tessara
