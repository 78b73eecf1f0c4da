#include "libjni/JavaObject.h"
#include "libjni/Status.h"

#include "tests/support/FakeJvmFixture.h"

#include <limits>

namespace Vostrel::tests {
namespace {

using libjni::JavaObject;
using libjni::JniArray;

class JavaObjectCallTest : public FakeJvmFixture {
protected:
    JavaObjectCallTest() : m_class(m_jvm.defineClass("Example")) {}

    jobject newInstance() { return m_jvm.local(m_jvm.newObject(m_class)); }

    FakeJvm::Object& m_class;
};

TEST_F(JavaObjectCallTest, VoidMethodGetsItsArgumentsInOrder) {
    FakeJvm::Arguments seen;
    m_jvm.defineMethod(m_class, "take", "([BIJLExample;)V", [&](const FakeJvm::Arguments& given) {
        seen = given;
        return noValue();
    });
    JavaObject object(newInstance());
    const jobject array = m_jvm.local(m_jvm.newByteArray({1}));
    constexpr jlong Long = std::numeric_limits<jlong>::min();
    EXPECT_EQ(object.callVoidMethod("take", "([BIJLExample;)V", array, -2, Long, object.get()), 0);
    ASSERT_EQ(seen.size(), 4u);
    EXPECT_EQ(seen[0].l, array);
    EXPECT_EQ(seen[1].i, -2);
    EXPECT_EQ(seen[2].j, Long);
    EXPECT_EQ(seen[3].l, object.get());
}

TEST_F(JavaObjectCallTest, IntAndLongMethodsDeliverTheirResults) {
    m_jvm.defineMethod(m_class, "low", "()I", [](auto&) { return intValue(-7); });
    m_jvm.defineMethod(m_class, "high", "(I)J",
                       [](auto& given) { return longValue(jlong{given[0].i} << 40); });
    JavaObject object(newInstance());
    int low = 0;
    long high = 0;
    EXPECT_EQ(object.callIntMethod(low, "low", "()I"), 0);
    EXPECT_EQ(object.callLongMethod(high, "high", "(I)J", 3), 0);
    EXPECT_EQ(low, -7);
    EXPECT_EQ(high, 3L << 40);
}

TEST_F(JavaObjectCallTest, ObjectMethodDeliversTheReferenceOrNull) {
    const jobject other = newInstance();
    m_jvm.defineMethod(m_class, "other", "()LExample;", [&](auto&) { return objectValue(other); });
    m_jvm.defineMethod(m_class, "none", "()LExample;", [&](auto&) { return objectValue(nullptr); });
    JavaObject object(newInstance());
    jobject result = nullptr;
    EXPECT_EQ(object.callObjectMethod(result, "other", "()LExample;"), 0);
    EXPECT_EQ(result, other);
    EXPECT_EQ(object.callObjectMethod(result, "none", "()LExample;"), 0);
    EXPECT_EQ(result, nullptr);
}

TEST_F(JavaObjectCallTest, StringMethodDeliversTheTextAndKeepsNoReference) {
    m_jvm.defineMethod(m_class, "name", "(I)Ljava/lang/String;", [&](auto& given) {
        return objectValue(m_jvm.local(m_jvm.newString("name " + std::to_string(given[0].i))));
    });
    JavaObject object(newInstance());
    std::string text;
    ASSERT_EQ(object.callStringMethod(text, "name", "(I)Ljava/lang/String;", 1), 0);
    EXPECT_EQ(text, "name 1");
    const size_t locals = m_jvm.liveLocals();
    ASSERT_EQ(object.callStringMethod(text, "name", "(I)Ljava/lang/String;", 2), 0);
    EXPECT_EQ(text, "name 2");
    EXPECT_EQ(m_jvm.liveLocals(), locals);
}

TEST_F(JavaObjectCallTest, StringMethodThatReturnsNullDeliversAnEmptyText) {
    m_jvm.defineMethod(m_class, "name", "()Ljava/lang/String;",
                       [](auto&) { return objectValue(nullptr); });
    JavaObject object(newInstance());
    std::string text = "before";
    EXPECT_EQ(object.callStringMethod(text, "name", "()Ljava/lang/String;"), 0);
    EXPECT_EQ(text, "");
}

TEST_F(JavaObjectCallTest, ToStringCallsTheJavaMethod) {
    m_jvm.defineMethod(m_class, "toString", "()Ljava/lang/String;", [&](auto&) {
        return objectValue(m_jvm.local(m_jvm.newString("an example")));
    });
    EXPECT_EQ(JavaObject(newInstance()).toString(), "an example");
}

TEST_F(JavaObjectCallTest, IntArrayMethodDeliversAView) {
    FakeJvm::Object& numbers = m_jvm.newIntArray({5, 6, 7});
    m_jvm.defineMethod(m_class, "numbers", "()[I",
                       [&](auto&) { return objectValue(m_jvm.local(numbers)); });
    JavaObject object(newInstance());
    std::shared_ptr<JniArray<int, jintArray>> view;
    ASSERT_EQ(object.callIntArrayMethod(view, "numbers", "()[I"), 0);
    ASSERT_EQ(view->getLength(), 3);
    EXPECT_EQ(view->getElements()[2], 7);
}

TEST_F(JavaObjectCallTest, IntArrayMethodReleasesTheViewHeldBefore) {
    FakeJvm::Object& numbers = m_jvm.newIntArray({5});
    m_jvm.defineMethod(m_class, "numbers", "()[I",
                       [&](auto&) { return objectValue(m_jvm.local(numbers)); });
    JavaObject object(newInstance());
    std::shared_ptr<JniArray<int, jintArray>> view;
    object.callIntArrayMethod(view, "numbers", "()[I");
    object.callIntArrayMethod(view, "numbers", "()[I");
    EXPECT_EQ(m_jvm.m_lentBuffers, 1);
}

TEST_F(JavaObjectCallTest, IntArrayMethodThatReturnsNullLeavesTheOutput) {
    FakeJvm::Object* numbers = &m_jvm.newIntArray({5});
    m_jvm.defineMethod(m_class, "numbers", "()[I", [&](auto&) {
        return objectValue(numbers ? m_jvm.local(*numbers) : nullptr);
    });
    JavaObject object(newInstance());
    std::shared_ptr<JniArray<int, jintArray>> view;
    object.callIntArrayMethod(view, "numbers", "()[I");
    const auto before = view;
    numbers = nullptr;
    EXPECT_EQ(object.callIntArrayMethod(view, "numbers", "()[I"), 0);
    EXPECT_EQ(view, before);
}

TEST_F(JavaObjectCallTest, TwoCallsOfOneMethodLookItUpOnce) {
    m_jvm.defineMethod(m_class, "poke", "()V", [](auto&) { return noValue(); });
    JavaObject object(newInstance());
    object.callVoidMethod("poke", "()V");
    object.callVoidMethod("poke", "()V");
    EXPECT_EQ(m_jvm.calls("GetMethodID"), 1);
    EXPECT_EQ(m_jvm.calls("CallVoidMethodV"), 2);
}

TEST_F(JavaObjectCallTest, MethodsThatDifferInSignatureAreLookedUpApart) {
    m_jvm.defineMethod(m_class, "size", "()I", [](auto&) { return intValue(1); });
    m_jvm.defineMethod(m_class, "size", "(I)I", [](auto&) { return intValue(2); });
    JavaObject object(newInstance());
    int result = 0;
    object.callIntMethod(result, "size", "()I");
    EXPECT_EQ(result, 1);
    object.callIntMethod(result, "size", "(I)I", 0);
    EXPECT_EQ(result, 2);
}

TEST_F(JavaObjectCallTest, LookupLeavesTheClassReferenceToTheVm) {
    m_jvm.defineMethod(m_class, "poke", "()V", [](auto&) { return noValue(); });
    JavaObject object(newInstance());
    const size_t locals = m_jvm.liveLocals();
    object.callVoidMethod("poke", "()V");
    EXPECT_EQ(m_jvm.liveLocals(), locals + 1);
}

TEST_F(JavaObjectCallTest, MissingMethodIsReportedByEveryCallButLookedUpOnce) {
    JavaObject object(newInstance());
    for (int call = 0; call < 3; ++call) {
        int status = 0;
        EXPECT_EQ(outputOf([&] { status = object.callVoidMethod("gone", "(I)V", 1); }),
                  "Could not find \"gone(I)V\" method");
        EXPECT_EQ(status, -3);
    }
    EXPECT_EQ(m_jvm.calls("GetMethodID"), 1);
    EXPECT_EQ(m_jvm.calls("CallVoidMethodV"), 0);
}

TEST_F(JavaObjectCallTest, FailedLookupLeavesItsJavaExceptionPending) {
    JavaObject object(newInstance());
    outputOf([&] { object.callVoidMethod("gone", "()V"); });
    ASSERT_TRUE(m_jvm.m_pendingException);
    EXPECT_EQ(m_jvm.m_pendingException->className, "java/lang/NoSuchMethodError");
}

TEST_F(JavaObjectCallTest, EveryCallMemberReportsAMissingMethodAndLeavesItsOutput) {
    JavaObject object(newInstance());
    int number = 1;
    long longNumber = 2;
    jobject reference = object.get();
    std::string text = "before";
    std::shared_ptr<JniArray<int, jintArray>> view;
    const std::string output = outputOf([&] {
        EXPECT_EQ(object.callIntMethod(number, "a", "()I"), libjni::MethodNotFound);
        EXPECT_EQ(object.callLongMethod(longNumber, "b", "()J"), libjni::MethodNotFound);
        EXPECT_EQ(object.callObjectMethod(reference, "c", "()LC;"), libjni::MethodNotFound);
        EXPECT_EQ(object.callStringMethod(text, "d", "()LD;"), libjni::MethodNotFound);
        EXPECT_EQ(object.callIntArrayMethod(view, "e", "()[I"), libjni::MethodNotFound);
        EXPECT_EQ(object.toString(), "");
    });
    EXPECT_EQ(output, "Could not find \"a()I\" method"
                      "Could not find \"b()J\" method"
                      "Could not find \"c()LC;\" method"
                      "Could not find \"d()LD;\" method"
                      "Could not find \"e()[I\" method"
                      "Could not find \"toString()Ljava/lang/String;\" method");
    EXPECT_EQ(number, 1);
    EXPECT_EQ(longNumber, 2);
    EXPECT_EQ(reference, object.get());
    EXPECT_EQ(text, "before");
    EXPECT_EQ(view, nullptr);
}

TEST_F(JavaObjectCallTest, CopyHasTheReferenceButNotTheLookups) {
    m_jvm.defineMethod(m_class, "poke", "()V", [](auto&) { return noValue(); });
    JavaObject object(newInstance());
    object.callVoidMethod("poke", "()V");
    JavaObject copy(object);
    EXPECT_EQ(copy.get(), object.get());
    copy.callVoidMethod("poke", "()V");
    EXPECT_EQ(m_jvm.calls("GetMethodID"), 2);
}

TEST_F(JavaObjectCallTest, AssignmentTakesTheReferenceAndKeepsTheOwnLookups) {
    m_jvm.defineMethod(m_class, "poke", "()V", [](auto&) { return noValue(); });
    JavaObject object(newInstance());
    object.callVoidMethod("poke", "()V");
    const JavaObject other(newInstance());
    object = other;
    EXPECT_EQ(object.get(), other.get());
    object.callVoidMethod("poke", "()V");
    EXPECT_EQ(m_jvm.calls("GetMethodID"), 1);
}

TEST_F(JavaObjectCallTest, EqualityIsThatOfTheJavaObjectsButHashIsThatOfTheWrapper) {
    FakeJvm::Object& instance = m_jvm.newObject(m_class);
    const JavaObject one(m_jvm.local(instance));
    const JavaObject same(m_jvm.local(instance));
    const JavaObject other(newInstance());
    EXPECT_TRUE(one == same);
    EXPECT_FALSE(one == other);
    EXPECT_NE(one.hash(), same.hash());
    EXPECT_EQ(one.hash(), reinterpret_cast<size_t>(&one));
}

} // namespace
} // namespace Vostrel::tests
