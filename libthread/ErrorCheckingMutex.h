#pragma once

#include "libthread/MutexBase.h"

namespace Vostrel::libthread {

/// A mutex that reports misuse: relocking by the owner returns EDEADLK, unlocking by anyone else
/// EPERM.
class ErrorCheckingMutex : public MutexBase {
public:
    ErrorCheckingMutex() : MutexBase(pthread_mutex_t PTHREAD_ERRORCHECK_MUTEX_INITIALIZER_NP) {}
};

} // namespace Vostrel::libthread
