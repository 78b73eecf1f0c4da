#include "libjni/JavaObject.h"

#include "tests/support/FakeJvmFixture.h"

namespace Vostrel::tests {
namespace {

using libjni::JavaObject;

class JavaObjectFieldTest : public FakeJvmFixture {
protected:
    JavaObjectFieldTest() : m_instance(m_jvm.newObject(m_jvm.defineClass("Example"))) {}

    void defineField(const std::string& key, FakeJvm::Value value) {
        m_instance.javaClass->fieldKeys.insert(key);
        m_instance.fields[key] = value;
    }

    FakeJvm::Object& m_instance;
};

TEST_F(JavaObjectFieldTest, ReadsEveryType) {
    defineField("countI", {.number = -3});
    defineField("totalJ", {.number = 1L << 40});
    defineField("peerLExample;", {.object = &m_instance});
    defineField("nameLjava/lang/String;", {.object = &m_jvm.newString("a name")});
    JavaObject object(m_jvm.local(m_instance));
    int count = 0;
    long total = 0;
    jobject peer = nullptr;
    std::string name;
    EXPECT_EQ(object.getInt(count, "count"), 0);
    EXPECT_EQ(object.getLong(total, "total"), 0);
    EXPECT_EQ(object.getObject(peer, "peer", "LExample;"), 0);
    EXPECT_EQ(object.getString(name, "name"), 0);
    EXPECT_EQ(count, -3);
    EXPECT_EQ(total, 1L << 40);
    EXPECT_EQ(m_jvm.target(peer), &m_instance);
    EXPECT_EQ(name, "a name");
}

TEST_F(JavaObjectFieldTest, StringFieldKeepsNoReference) {
    defineField("nameLjava/lang/String;", {.object = &m_jvm.newString("a name")});
    JavaObject object(m_jvm.local(m_instance));
    std::string name;
    object.getString(name, "name");
    const size_t locals = m_jvm.liveLocals();
    object.getString(name, "name");
    EXPECT_EQ(m_jvm.liveLocals(), locals);
}

TEST_F(JavaObjectFieldTest, NullStringFieldReadsAsAnEmptyText) {
    defineField("nameLjava/lang/String;", {});
    JavaObject object(m_jvm.local(m_instance));
    std::string name = "before";
    EXPECT_EQ(object.getString(name, "name"), 0);
    EXPECT_EQ(name, "");
}

TEST_F(JavaObjectFieldTest, TwoReadsOfOneFieldLookItUpOnce) {
    defineField("countI", {.number = 1});
    JavaObject object(m_jvm.local(m_instance));
    int count = 0;
    object.getInt(count, "count");
    object.getInt(count, "count");
    EXPECT_EQ(m_jvm.calls("GetFieldID"), 1);
}

TEST_F(JavaObjectFieldTest, MissingFieldIsReportedByEveryReadButLookedUpOnce) {
    JavaObject object(m_jvm.local(m_instance));
    int count = 5;
    for (int read = 0; read < 2; ++read) {
        int status = 0;
        EXPECT_EQ(outputOf([&] { status = object.getInt(count, "gone"); }),
                  "Could not find \"gone\" field");
        EXPECT_EQ(status, -1);
    }
    EXPECT_EQ(count, 5);
    EXPECT_EQ(m_jvm.calls("GetFieldID"), 1);
}

TEST_F(JavaObjectFieldTest, MissingObjectFieldIsReportedWithItsType) {
    JavaObject object(m_jvm.local(m_instance));
    long total = 6;
    jobject peer = object.get();
    std::string name = "before";
    const std::string output = outputOf([&] {
        EXPECT_EQ(object.getLong(total, "total"), -1);
        EXPECT_EQ(object.getObject(peer, "peer", "LExample;"), -1);
        EXPECT_EQ(object.getString(name, "name"), -1);
    });
    EXPECT_EQ(output, "Could not find \"total\" field"
                      "Could not find \"peer\" field of \"LExample;\" type"
                      "Could not find \"name\" field of \"Ljava/lang/String;\" type");
    EXPECT_EQ(total, 6);
    EXPECT_EQ(peer, object.get());
    EXPECT_EQ(name, "before");
}

TEST_F(JavaObjectFieldTest, MethodAndFieldOfOneNameDoNotMix) {
    defineField("sizeI", {.number = 4});
    m_jvm.defineMethod(*m_instance.javaClass, "size", "()I", [](auto&) { return intValue(5); });
    JavaObject object(m_jvm.local(m_instance));
    int field = 0;
    int result = 0;
    object.getInt(field, "size");
    object.callIntMethod(result, "size", "()I");
    EXPECT_EQ(field, 4);
    EXPECT_EQ(result, 5);
}

} // namespace
} // namespace Vostrel::tests
