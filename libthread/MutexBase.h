#pragma once

#include <pthread.h>

namespace Vostrel::libthread {

/// What the three kinds of mutex share; the kind is chosen by the derived class. Both operations
/// return the POSIX code unchanged. std::lock_guard works with every kind.
///
/// The mutex is not passed to pthread_mutex_destroy: on Linux it holds nothing to release.
class MutexBase {
public:
    MutexBase(const MutexBase&) = delete;
    MutexBase& operator=(const MutexBase&) = delete;

    int lock();
    int unlock();

protected:
    explicit MutexBase(const pthread_mutex_t& initialiser) : m_mutex(initialiser) {}
    ~MutexBase() = default;

    pthread_mutex_t m_mutex;

private:
    friend class Condition;
};

} // namespace Vostrel::libthread
