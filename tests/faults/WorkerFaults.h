#pragma once

#include <cstdint>

namespace Vostrel::tests {

/// Makes chosen calls of pthread_create by this thread fail while it lives.
class WorkerFaults {
public:
    /// @param calls bit n is set when call n fails, counted from 0; calls from 32 on succeed
    explicit WorkerFaults(uint32_t calls);
    WorkerFaults(const WorkerFaults&) = delete;
    WorkerFaults& operator=(const WorkerFaults&) = delete;
    ~WorkerFaults();
};

} // namespace Vostrel::tests
