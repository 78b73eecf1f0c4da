#include "tests/faults/WorkerFaults.h"

#include <cerrno>
#include <pthread.h>

namespace {

thread_local uint32_t t_failing = 0; ///< bit 0 is for the coming call

} // namespace

namespace Vostrel::tests {

WorkerFaults::WorkerFaults(uint32_t calls) {
    t_failing = calls;
}

WorkerFaults::~WorkerFaults() {
    t_failing = 0;
}

} // namespace Vostrel::tests

extern "C" {

int __real_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                          void* (*routine)(void*), void* argument) {
    const bool fails = (t_failing & 1) != 0;
    t_failing >>= 1;
    return fails ? EAGAIN : __real_pthread_create(thread, attributes, routine, argument);
}

} // extern "C"
