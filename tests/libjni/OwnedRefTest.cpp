#include "libjni/GlobalRef.h"
#include "libjni/LocalRef.h"

#include "tests/support/FakeJvmFixture.h"

namespace Vostrel::tests {
namespace {

using libjni::GlobalRef;
using libjni::JavaObject;
using libjni::LocalRef;

class OwnedRefTest : public FakeJvmFixture {
protected:
    OwnedRefTest()
        : m_instance(m_jvm.newObject(m_jvm.defineClass("Example"))),
          m_reference(m_jvm.local(m_instance)) {}

    FakeJvm::Object& m_instance;
    jobject m_reference;
};

TEST_F(OwnedRefTest, GlobalRefHoldsAGlobalReferenceUntilDestruction) {
    {
        const GlobalRef global(m_reference);
        EXPECT_NE(global.get(), m_reference);
        EXPECT_EQ(m_jvm.target(global.get()), &m_instance);
        EXPECT_EQ(m_jvm.liveGlobals(), 1u);
    }
    EXPECT_EQ(m_jvm.liveGlobals(), 0u);
    EXPECT_EQ(m_jvm.liveLocals(), 1u);
}

TEST_F(OwnedRefTest, LocalRefHoldsALocalReferenceUntilDestruction) {
    {
        const LocalRef local(m_reference);
        EXPECT_NE(local.get(), m_reference);
        EXPECT_EQ(m_jvm.target(local.get()), &m_instance);
        EXPECT_EQ(m_jvm.liveLocals(), 2u);
    }
    EXPECT_EQ(m_jvm.liveLocals(), 1u);
    EXPECT_EQ(m_jvm.liveGlobals(), 0u);
}

TEST_F(OwnedRefTest, CopiesOwnReferencesOfTheirOwn) {
    {
        const GlobalRef global(m_reference);
        const GlobalRef copy(global);
        const GlobalRef ofObject{JavaObject(m_reference)};
        const LocalRef local{static_cast<const JavaObject&>(global)};
        EXPECT_EQ(m_jvm.liveGlobals(), 3u);
        EXPECT_EQ(m_jvm.liveLocals(), 2u);
        EXPECT_TRUE(copy == ofObject);
        EXPECT_TRUE(local == global);
    }
    EXPECT_EQ(m_jvm.liveGlobals(), 0u);
    EXPECT_EQ(m_jvm.liveLocals(), 1u);
}

TEST_F(OwnedRefTest, AssignmentAcquiresTheOtherAndLeavesTheReferenceHeldBefore) {
    const jobject otherReference = m_jvm.local(m_jvm.newObject(*m_instance.javaClass));
    {
        GlobalRef global(m_reference);
        const GlobalRef other(otherReference);
        const jobject before = global.get();
        global = other;
        EXPECT_TRUE(global == other);
        EXPECT_NE(global.get(), other.get());
        EXPECT_EQ(m_jvm.target(before), &m_instance);
        global = JavaObject(m_reference);
        EXPECT_EQ(m_jvm.target(global.get()), &m_instance);
        EXPECT_EQ(m_jvm.liveGlobals(), 4u);
    }
    EXPECT_EQ(m_jvm.liveGlobals(), 2u);
}

TEST_F(OwnedRefTest, SelfAssignmentAcquiresOnceMore) {
    GlobalRef global(m_reference);
    const GlobalRef& same = global;
    global = same;
    EXPECT_EQ(m_jvm.target(global.get()), &m_instance);
    EXPECT_EQ(m_jvm.liveGlobals(), 2u);
}

TEST_F(OwnedRefTest, NullStaysNull) {
    const GlobalRef global(static_cast<jobject>(nullptr));
    EXPECT_EQ(global.get(), nullptr);
    EXPECT_EQ(m_jvm.liveGlobals(), 0u);
}

} // namespace
} // namespace Vostrel::tests
