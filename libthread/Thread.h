#pragma once

#include <cstdint>
#include <functional>
#include <pthread.h>
#include <string>

namespace Vostrel::libthread {

/// A named thread that is started on demand.
///
/// One owner thread starts, joins and destroys the object, and keeps it alive while the body runs:
/// the destructor neither joins nor detaches.
class Thread {
public:
    /// Keeps copies of `body` and `name`; does not start the thread. The kernel shows the first 15
    /// characters of the name. A thread that is not `joinable` is created detached.
    Thread(const std::function<void()>& body, const std::string& name, bool joinable);
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// Creates the thread. Returns 0, or the POSIX code of the call that failed, which is then also
    /// in errno.
    int start();

    /// Waits for the thread's end and returns the code of pthread_join; returns 0 at once when the
    /// thread was not started or is joined already.
    int join();

    /// Runs the body of the Thread that `thread` points to. Throws std::bad_function_call when the
    /// body is empty. Returns null.
    static void* thread_start(void* thread);

private:
    int initialiseAttributes(pthread_attr_t& attributes) const;
    int createThread();

    pthread_t m_handle{};
    std::function<void()> m_body;
    std::string m_name;
    bool m_started = false;
    bool m_joinable;
    std::uint64_t m_stackSizeKiB = 1024;
};

} // namespace Vostrel::libthread
