#include "libthread/Thread.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sys/prctl.h>

namespace Vostrel::libthread {

namespace {

/// Carries everything that a new thread needs before it touches its Thread. Allocated with malloc
/// by the starting thread, freed by the new one.
struct StartBlock {
    void* (*entry)(void*);
    void* argument;
    char name[64];
};

struct FreeDeleter {
    void operator()(void* block) const { std::free(block); }
};

using StartBlockPointer = std::unique_ptr<StartBlock, FreeDeleter>;

StartBlockPointer makeStartBlock(void* (*entry)(void*), void* argument, const std::string& name) {
    StartBlockPointer block(static_cast<StartBlock*>(std::malloc(sizeof(StartBlock))));
    if (block) {
        block->entry = entry;
        block->argument = argument;
        std::snprintf(block->name, sizeof block->name, "%s", name.c_str());
    }
    return block;
}

void* runStartBlock(void* startBlock) {
    StartBlockPointer block(static_cast<StartBlock*>(startBlock));
    const auto entry = block->entry;
    void* const argument = block->argument;
    prctl(PR_SET_NAME, block->name);
    block.reset();
    return entry(argument);
}

} // namespace

Thread::Thread(const std::function<void()>& body, const std::string& name, bool joinable)
    : m_body(body), m_name(name), m_joinable(joinable) {}

int Thread::start() {
    const int code = createThread();
    if (code == 0)
        m_started = true;
    else
        errno = code;
    return code;
}

int Thread::join() {
    if (!m_started)
        return 0;
    m_started = false;
    return pthread_join(m_handle, nullptr);
}

void* Thread::thread_start(void* thread) {
    static_cast<Thread*>(thread)->m_body();
    return nullptr;
}

int Thread::initialiseAttributes(pthread_attr_t& attributes) const {
    int code = pthread_attr_init(&attributes);
    if (code == 0 && !m_joinable)
        code = pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    if (code == 0)
        code = pthread_attr_setstacksize(&attributes, m_stackSizeKiB << 10);
    return code;
}

int Thread::createThread() {
    // Never destroyed: with a stack size and a detach state alone it holds nothing to release.
    pthread_attr_t attributes;
    if (const int code = initialiseAttributes(attributes); code != 0)
        return code;
    StartBlockPointer block = makeStartBlock(thread_start, this, m_name);
    if (!block)
        return ENOMEM;
    const int code = pthread_create(&m_handle, &attributes, runStartBlock, block.get());
    if (code == 0)
        static_cast<void>(block.release());
    return code;
}

} // namespace Vostrel::libthread
