#include "tests/libthread/SystemCalls.h"

#include <cstring>
#include <new>
#include <pthread.h>

namespace Vostrel::tests {

namespace {

// The calls of other threads, workers above all, go through unseen.
thread_local SystemCalls* t_calls = nullptr;

/// Where the thread's name stands in the block that pthread_create passes on: after two pointers.
constexpr std::size_t NameOffset = 2 * sizeof(void*);

} // namespace

SystemCalls::SystemCalls() {
    t_calls = this;
}

SystemCalls::~SystemCalls() {
    t_calls = nullptr;
}

} // namespace Vostrel::tests

using Vostrel::tests::NameOffset;
using Vostrel::tests::t_calls;

extern "C" {

int __real_pthread_attr_init(pthread_attr_t*);
int __wrap_pthread_attr_init(pthread_attr_t* attributes) {
    if (t_calls && t_calls->m_attrInitCode != 0)
        return t_calls->m_attrInitCode;
    return __real_pthread_attr_init(attributes);
}

int __real_pthread_attr_setdetachstate(pthread_attr_t*, int);
int __wrap_pthread_attr_setdetachstate(pthread_attr_t* attributes, int state) {
    if (t_calls && t_calls->m_setDetachStateCode != 0)
        return t_calls->m_setDetachStateCode;
    return __real_pthread_attr_setdetachstate(attributes, state);
}

int __real_pthread_attr_setstacksize(pthread_attr_t*, std::size_t);
int __wrap_pthread_attr_setstacksize(pthread_attr_t* attributes, std::size_t size) {
    if (t_calls && t_calls->m_setStackSizeCode != 0)
        return t_calls->m_setStackSizeCode;
    return __real_pthread_attr_setstacksize(attributes, size);
}

int __real_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
int __wrap_pthread_create(pthread_t* handle, const pthread_attr_t* attributes,
                          void* (*routine)(void*), void* block) {
    if (t_calls) {
        pthread_attr_getdetachstate(attributes, &t_calls->m_lastDetachState);
        pthread_attr_getstacksize(attributes, &t_calls->m_lastStackSize);
        // No allocation here: one that is made to fail would throw through a C function.
        std::memcpy(t_calls->m_lastThreadName.data(), static_cast<const char*>(block) + NameOffset,
                    t_calls->m_lastThreadName.size());
        t_calls->m_lastBlock = block;
        t_calls->m_lastBlockFreed = false;
        if (t_calls->m_createCode != 0 && t_calls->m_createFailures > 0) {
            --t_calls->m_createFailures;
            return t_calls->m_createCode;
        }
    }
    const int code = __real_pthread_create(handle, attributes, routine, block);
    if (t_calls && code == 0)
        ++t_calls->m_creates;
    return code;
}

int __real_pthread_join(pthread_t, void**);
int __wrap_pthread_join(pthread_t handle, void** result) {
    if (t_calls) {
        ++t_calls->m_joins;
        if (t_calls->m_onJoin)
            t_calls->m_onJoin();
    }
    return __real_pthread_join(handle, result);
}

int __real_clock_gettime(clockid_t, timespec*);
int __wrap_clock_gettime(clockid_t clock, timespec* now) {
    if (t_calls && t_calls->m_now && clock == CLOCK_MONOTONIC) {
        *now = *t_calls->m_now;
        return 0;
    }
    return __real_clock_gettime(clock, now);
}

void* __real_malloc(std::size_t);
void* __wrap_malloc(std::size_t size) {
    return t_calls && t_calls->m_mallocFails ? nullptr : __real_malloc(size);
}

void __real_free(void*);
void __wrap_free(void* block) {
    if (t_calls && block != nullptr && block == t_calls->m_lastBlock)
        t_calls->m_lastBlockFreed = true;
    __real_free(block);
}

void* __real__Znwm(std::size_t);
void* __wrap__Znwm(std::size_t size) {
    if (t_calls && t_calls->m_allocationsBeforeFailure) {
        unsigned& left = *t_calls->m_allocationsBeforeFailure;
        if (left == 0)
            throw std::bad_alloc();
        --left;
    }
    return __real__Znwm(size);
}

} // extern "C"
