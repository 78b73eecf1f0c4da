#include "libjni/JavaClass.h"
#include "libjni/JavaEnum.h"

#include "tests/support/FakeJvmFixture.h"

namespace Vostrel::tests {
namespace {

using libjni::JavaClass;
using libjni::JavaEnum;

class JavaClassTest : public FakeJvmFixture {
protected:
    JavaClassTest()
        : m_object(m_jvm.defineClass("pack/Colour")), m_class(m_jvm.local<jclass>(m_object)) {}

    FakeJvm::Object& m_object;
    jclass m_class;
};

TEST_F(JavaClassTest, KeepsClassAndName) {
    {
        const JavaClass javaClass(m_class, "pack/Colour");
        EXPECT_EQ(javaClass.get(), m_class);
        EXPECT_EQ(javaClass.getName(), "pack/Colour");
    }
    EXPECT_EQ(m_jvm.liveLocals(), 1u);
}

TEST_F(JavaClassTest, ReadsEveryTypeOfStaticField) {
    m_object.fields["countI"] = {.number = 8};
    m_object.fields["totalJ"] = {.number = 1L << 50};
    m_object.fields["peerLPeer;"] = {.object = &m_object};
    m_object.fields["nameLjava/lang/String;"] = {.object = &m_jvm.newString("colour")};
    const JavaClass javaClass(m_class, "pack/Colour");
    int count = 0;
    long total = 0;
    jobject peer = nullptr;
    std::string name;
    EXPECT_EQ(javaClass.getInt(count, "count"), 0);
    EXPECT_EQ(javaClass.getLong(total, "total"), 0);
    EXPECT_EQ(javaClass.getObject(peer, "peer", "LPeer;"), 0);
    EXPECT_EQ(javaClass.getString(name, "name"), 0);
    EXPECT_EQ(count, 8);
    EXPECT_EQ(total, 1L << 50);
    EXPECT_EQ(m_jvm.target(peer), &m_object);
    EXPECT_EQ(name, "colour");
}

TEST_F(JavaClassTest, StaticFieldsAreLookedUpByEveryRead) {
    m_object.fields["countI"] = {.number = 8};
    const JavaClass javaClass(m_class, "pack/Colour");
    int count = 0;
    javaClass.getInt(count, "count");
    javaClass.getInt(count, "count");
    EXPECT_EQ(m_jvm.calls("GetStaticFieldID"), 2);
}

TEST_F(JavaClassTest, MissingStaticFieldsAreReported) {
    const JavaClass javaClass(m_class, "pack/Colour");
    int count = 1;
    long total = 2;
    jobject peer = nullptr;
    std::string name = "before";
    const std::string output = outputOf([&] {
        EXPECT_EQ(javaClass.getInt(count, "count"), -1);
        EXPECT_EQ(javaClass.getLong(total, "total"), -1);
        EXPECT_EQ(javaClass.getObject(peer, "peer", "LPeer;"), -1);
        EXPECT_EQ(javaClass.getString(name, "name"), -1);
    });
    EXPECT_EQ(output, "Could not find \"count\" field"
                      "Could not find \"total\" field"
                      "Could not find \"peer\" field of \"LPeer;\" type"
                      "Could not find \"name\" field of \"Ljava/lang/String;\" type");
    EXPECT_EQ(count, 1);
    EXPECT_EQ(total, 2);
    EXPECT_EQ(name, "before");
}

TEST_F(JavaClassTest, EnumConstantIsAStaticFieldOfItsOwnType) {
    FakeJvm::Object& red = m_jvm.newObject(m_object);
    m_object.fields["RedLpack/Colour;"] = {.object = &red};
    jobject value = nullptr;
    EXPECT_EQ(JavaEnum(m_class, "pack/Colour").getValue(value, "Red"), 0);
    EXPECT_EQ(m_jvm.target(value), &red);
}

TEST_F(JavaClassTest, EnumConstantIsFoundByClassName) {
    FakeJvm::Object& red = m_jvm.newObject(m_object);
    m_object.fields["RedLpack/Colour;"] = {.object = &red};
    jobject value = nullptr;
    EXPECT_EQ(JavaEnum::getValue(value, "pack/Colour", "Red"), 0);
    EXPECT_EQ(m_jvm.target(value), &red);
    EXPECT_EQ(m_jvm.liveLocals(), 2u);
}

TEST_F(JavaClassTest, MissingEnumConstantIsReportedWithItsType) {
    jobject value = nullptr;
    int status = 0;
    EXPECT_EQ(outputOf([&] { status = JavaEnum::getValue(value, "pack/Colour", "Blue"); }),
              "Could not find \"Blue\" field of \"Lpack/Colour;\" type");
    EXPECT_EQ(status, -1);
}

TEST_F(JavaClassTest, UnknownEnumClassIsReported) {
    jobject value = nullptr;
    int status = 0;
    EXPECT_EQ(outputOf([&] { status = JavaEnum::getValue(value, "pack/None", "Red"); }),
              "Could not find \"pack/None\" enum class");
    EXPECT_EQ(status, -2);
    EXPECT_EQ(value, nullptr);
}

} // namespace
} // namespace Vostrel::tests
