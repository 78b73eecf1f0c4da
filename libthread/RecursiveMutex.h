#pragma once

#include "libthread/MutexBase.h"

namespace Vostrel::libthread {

/// A mutex that its owner may lock again; it is free after as many unlocks as locks.
class RecursiveMutex : public MutexBase {
public:
    RecursiveMutex() : MutexBase(pthread_mutex_t PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP) {}
};

} // namespace Vostrel::libthread
