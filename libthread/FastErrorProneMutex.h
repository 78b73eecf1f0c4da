#pragma once

#include "libthread/MutexBase.h"

namespace Vostrel::libthread {

/// The plain mutex: relocking by the owner hangs, unlocking by anyone else is undefined.
class FastErrorProneMutex : public MutexBase {
public:
    FastErrorProneMutex() : MutexBase(pthread_mutex_t PTHREAD_MUTEX_INITIALIZER) {}
};

} // namespace Vostrel::libthread
