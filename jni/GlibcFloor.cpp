// Lets the shared object load on every glibc since 2.17. It is linked into the shared object alone:
// tests and sanitizers put their own thread functions in place of these.

#include <pthread.h>
#include <sys/single_threaded.h>

// When glibc 2.34 moved these into libc it gave them new versions, which the linker would take. The
// old ones are the same functions. Before 2.34 they live in libpthread, which every JVM has loaded
// and which a lookup by version finds as well.
asm(".symver pthread_create_floor, pthread_create@GLIBC_2.2.5");
asm(".symver pthread_join_floor, pthread_join@GLIBC_2.2.5");
asm(".symver pthread_attr_setstacksize_floor, pthread_attr_setstacksize@GLIBC_2.2.5");
asm(".symver pthread_condattr_setclock_floor, pthread_condattr_setclock@GLIBC_2.3.3");

extern "C" {

decltype(pthread_create) pthread_create_floor;
decltype(pthread_join) pthread_join_floor;
decltype(pthread_attr_setstacksize) pthread_attr_setstacksize_floor;
decltype(pthread_condattr_setclock) pthread_condattr_setclock_floor;

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*entry)(void*),
                   void* argument) noexcept {
    return pthread_create_floor(thread, attributes, entry, argument);
}

int pthread_join(pthread_t thread, void** result) {
    return pthread_join_floor(thread, result);
}

int pthread_attr_setstacksize(pthread_attr_t* attributes, size_t size) noexcept {
    return pthread_attr_setstacksize_floor(attributes, size);
}

int pthread_condattr_setclock(pthread_condattr_t* attributes, clockid_t clock) noexcept {
    return pthread_condattr_setclock_floor(attributes, clock);
}

/// glibc 2.32 sets its own to true while no second thread was started, so that reference counts
/// need no locked instructions. A JVM has many threads: false is always right here.
char __libc_single_threaded = 0;

} // extern "C"
