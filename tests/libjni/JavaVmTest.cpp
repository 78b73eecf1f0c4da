#include "libjni/JavaVm.h"

#include "tests/support/FakeJvmFixture.h"

#include <thread>

namespace Vostrel::tests {
namespace {

using libjni::JavaVm;

class JavaVmTest : public FakeJvmFixture {};

TEST_F(JavaVmTest, HoldsTheVmUntilCleanup) {
    JavaVm javaVm;
    EXPECT_EQ(javaVm.getVm(), nullptr);
    javaVm.init(m_jvm.vm());
    EXPECT_EQ(javaVm.getVm(), m_jvm.vm());
    javaVm.cleanup();
    EXPECT_EQ(javaVm.getVm(), nullptr);
}

TEST_F(JavaVmTest, IsOneSingleton) {
    EXPECT_EQ(&JavaVm::getInstance(), &qv::Singleton<JavaVm>::getInstance());
}

TEST_F(JavaVmTest, KnownThreadGetsItsEnvironmentWithoutAttaching) {
    EXPECT_EQ(JavaVm::getInstance().getEnv(), m_jvm.env());
    EXPECT_EQ(m_jvm.attachedThreads(), 1u);
}

TEST_F(JavaVmTest, UnknownThreadIsAttachedOnceAndGetsAUsableEnvironment) {
    JNIEnv* first = nullptr;
    JNIEnv* second = nullptr;
    std::thread([&] {
        first = JavaVm::getInstance().getEnv();
        second = JavaVm::getInstance().getEnv();
        first->DeleteLocalRef(first->NewStringUTF("usable"));
    }).join();
    EXPECT_NE(first, nullptr);
    EXPECT_NE(first, m_jvm.env());
    EXPECT_EQ(first, second);
    EXPECT_EQ(m_jvm.attachedThreads(), 2u);
}

TEST_F(JavaVmTest, DetachForgetsTheThread) {
    std::thread([&] {
        JavaVm::getInstance().getEnv();
        JavaVm::getInstance().detach();
    }).join();
    EXPECT_EQ(m_jvm.attachedThreads(), 1u);
}

} // namespace
} // namespace Vostrel::tests
