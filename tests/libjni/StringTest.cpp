#include "libjni/String.h"

#include "tests/support/FakeJvmFixture.h"

namespace Vostrel::tests {
namespace {

using libjni::String;

class StringTest : public FakeJvmFixture {};

TEST_F(StringTest, OfAJavaStringHasItsTextAndAReferenceOfItsOwn) {
    FakeJvm::Object& object = m_jvm.newString("text");
    const auto given = m_jvm.local<jstring>(object);
    {
        const String string(given);
        EXPECT_EQ(string.get(), "text");
        EXPECT_NE(string.getJ(), given);
        EXPECT_EQ(m_jvm.target(string.getJ()), &object);
    }
    EXPECT_EQ(m_jvm.liveLocals(), 1u);
}

TEST_F(StringTest, OfATextMakesAJavaString) {
    {
        const String string(std::string("made"));
        EXPECT_EQ(string.get(), "made");
        EXPECT_EQ(m_jvm.target(string.getJ())->text, "made");
    }
    EXPECT_EQ(m_jvm.liveLocals(), 0u);
}

TEST_F(StringTest, OfNullIsEmpty) {
    const String string(static_cast<jstring>(nullptr));
    EXPECT_EQ(string.get(), "");
    EXPECT_EQ(string.getJ(), nullptr);
}

TEST_F(StringTest, WithoutMemoryForTheCharactersIsEmpty) {
    const auto given = m_jvm.local<jstring>(m_jvm.newString("text"));
    m_jvm.failCall("GetStringUTFChars");
    EXPECT_EQ(String(given).get(), "");
}

TEST_F(StringTest, WithoutMemoryForTheJavaStringHasItsTextAlone) {
    m_jvm.failCall("NewStringUTF");
    const String string(std::string("made"));
    EXPECT_EQ(string.get(), "made");
    EXPECT_EQ(string.getJ(), nullptr);
}

} // namespace
} // namespace Vostrel::tests
