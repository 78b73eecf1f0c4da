#include "libthread/MutexBase.h"

namespace Vostrel::libthread {

int MutexBase::lock() {
    return pthread_mutex_lock(&m_mutex);
}

int MutexBase::unlock() {
    return pthread_mutex_unlock(&m_mutex);
}

} // namespace Vostrel::libthread
