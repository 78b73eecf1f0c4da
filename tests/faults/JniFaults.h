#pragma once

#include "tests/support/FakeJvm.h"

#include <string>
#include <vector>

namespace Vostrel::tests {

/// Stands, while it lives, between the code under test and a fake VM's function tables, and makes
/// one call fail as a VM without memory would: it does nothing, returns null, 0 or an error code,
/// and leaves a Java exception pending. What the fake VM allocates itself never fails.
///
/// For the thread that makes it; one object lives at a time.
class JniFaults {
public:
    explicit JniFaults(FakeJvm& jvm);
    JniFaults(const JniFaults&) = delete;
    JniFaults& operator=(const JniFaults&) = delete;
    ~JniFaults();

    /// Every function that can fail.
    static std::vector<std::string> functions();

    /// The n-th coming call of a function fails, counted from 1.
    void failCall(const std::string& function, int n);

    /// Whether it has failed already.
    bool hasStruck() const;

private:
    FakeJvm& m_jvm;
};

} // namespace Vostrel::tests
