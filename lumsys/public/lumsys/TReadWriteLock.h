#pragma once

#include <shared_mutex>

namespace lumsys {

/// A lock that many readers or one writer hold.
///
/// Threads: that is its purpose. It is not recursive, and a reader cannot become a writer: it lets
/// go, takes the write lock and looks again.
/// Ownership: the thread that locked unlocks; the two guards below do so at the end of a scope.
/// Errors: std::system_error where the operating system refuses a lock.
class TReadWriteLock {
public:
    TReadWriteLock() = default;
    TReadWriteLock(const TReadWriteLock&) = delete;
    TReadWriteLock& operator=(const TReadWriteLock&) = delete;

    void lockRead() { m_mutex.lock_shared(); }
    void unlockRead() { m_mutex.unlock_shared(); }
    void lockWrite() { m_mutex.lock(); }
    void unlockWrite() { m_mutex.unlock(); }

private:
    std::shared_mutex m_mutex;
};

/// Holds the read side of a lock for the length of a scope.
class TReadGuard {
public:
    explicit TReadGuard(TReadWriteLock& lock) : m_lock(lock) { m_lock.lockRead(); }
    ~TReadGuard() { m_lock.unlockRead(); }
    TReadGuard(const TReadGuard&) = delete;
    TReadGuard& operator=(const TReadGuard&) = delete;

private:
    TReadWriteLock& m_lock;
};

/// Holds the write side of a lock for the length of a scope.
class TWriteGuard {
public:
    explicit TWriteGuard(TReadWriteLock& lock) : m_lock(lock) { m_lock.lockWrite(); }
    ~TWriteGuard() { m_lock.unlockWrite(); }
    TWriteGuard(const TWriteGuard&) = delete;
    TWriteGuard& operator=(const TWriteGuard&) = delete;

private:
    TReadWriteLock& m_lock;
};

}  // namespace lumsys
