#pragma once

#include "libjni/JavaVm.h"
#include "tests/support/FakeJvm.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace Vostrel::tests {

/// A test over a fresh fake VM, which must not have been misused at the end.
class FakeJvmFixture : public testing::Test {
protected:
    FakeJvmFixture() { libjni::JavaVm::getInstance().init(m_jvm.vm()); }

    ~FakeJvmFixture() override {
        EXPECT_THAT(m_jvm.m_misuses, testing::IsEmpty());
        EXPECT_EQ(m_jvm.m_lentBuffers, 0);
        libjni::JavaVm::getInstance().cleanup();
    }

    FakeJvm m_jvm;
};

/// What `action` writes to standard output.
template <class Action>
std::string outputOf(Action action) {
    testing::internal::CaptureStdout();
    action();
    return testing::internal::GetCapturedStdout();
}

} // namespace Vostrel::tests
