#pragma once

#include "tests/jni/FakeHelper.h"
#include "tests/jni/NativeMethods.h"
#include "tests/support/FakeJvmFixture.h"

namespace Vostrel::tests {

/// A viewer's objects, made through the native methods and deleted through them at the end, when
/// not a single reference may be left to them.
class NativeFixture : public FakeJvmFixture {
protected:
    NativeFixture() {
        m_jvm.defineClass("java/io/IOException");
        JNI_OnLoad(m_jvm.vm(), nullptr);
        m_logger = HELPER(createLogger)(m_jvm.env(), m_helper.get());
        m_stream = HELPER(createStreambuffer)(m_jvm.env(), m_helper.get(), m_logger);
        m_renderer = HELPER(createRCRenderer)(m_jvm.env(), nullptr, m_logger);
    }

    ~NativeFixture() override {
        HELPER(deleteRCRenderer)(m_jvm.env(), nullptr, m_renderer);
        HELPER(deleteStreambuffer)(m_jvm.env(), nullptr, m_stream);
        HELPER(deleteLogger)(m_jvm.env(), nullptr, m_logger);
        EXPECT_EQ(m_jvm.liveGlobals(), 0u);
    }

    /// Local references beyond the classes that lookups leave to the VM until a native call ends.
    long ownLocals() const {
        return static_cast<long>(m_jvm.liveLocals()) - m_jvm.calls("GetObjectClass") -
               m_jvm.calls("FindClass");
    }

    FakeHelper m_helper{m_jvm};
    jlong m_logger;
    jlong m_stream;
    jlong m_renderer;
};

} // namespace Vostrel::tests
