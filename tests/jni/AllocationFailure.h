#pragma once

namespace Vostrel::tests {

/// Makes one coming allocation of this thread through operator new fail, while the object lives.
class AllocationFailure {
public:
    /// @param n which one, counted from 1
    explicit AllocationFailure(int n);
    AllocationFailure(const AllocationFailure&) = delete;
    AllocationFailure& operator=(const AllocationFailure&) = delete;
    ~AllocationFailure();

    /// Whether the allocation has failed already.
    bool hasStruck() const;
};

} // namespace Vostrel::tests
