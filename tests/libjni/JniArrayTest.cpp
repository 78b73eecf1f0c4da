#include "libjni/JniArray.h"
#include "libjni/JniReadOnlyArray.h"

#include "tests/support/FakeJvmFixture.h"

#include <array>

namespace Vostrel::tests {
namespace {

using IntArray = libjni::JniArray<int, jintArray>;
using ByteArray = libjni::JniReadOnlyArray<unsigned char, jbyteArray>;
using testing::ElementsAre;

class JniArrayTest : public FakeJvmFixture {};

TEST_F(JniArrayTest, ChangedElementsReachTheJavaArrayAtDestruction) {
    FakeJvm::Object& object = m_jvm.newIntArray({1, 2, 3});
    {
        const IntArray array(m_jvm.local<jintArray>(object));
        ASSERT_EQ(array.getLength(), 3);
        array.getElements()[1] = 20;
        EXPECT_THAT(object.ints, ElementsAre(1, 2, 3));
    }
    EXPECT_THAT(object.ints, ElementsAre(1, 20, 3));
}

TEST_F(JniArrayTest, AbortDropsTheChanges) {
    FakeJvm::Object& object = m_jvm.newIntArray({1, 2, 3});
    {
        IntArray array(m_jvm.local<jintArray>(object));
        array.getElements()[1] = 20;
        array.abort();
    }
    EXPECT_THAT(object.ints, ElementsAre(1, 2, 3));
}

TEST_F(JniArrayTest, WithoutMemoryForElementsNothingIsReleased) {
    m_jvm.failCall("GetIntArrayElements");
    const IntArray array(m_jvm.local<jintArray>(m_jvm.newIntArray({1})));
    EXPECT_EQ(array.getElements(), nullptr);
}

TEST_F(JniArrayTest, ReadOnlyArrayCopiesTheWholeArray) {
    std::array<unsigned char, 4> storage{9, 9, 9, 9};
    const ByteArray array(m_jvm.local<jbyteArray>(m_jvm.newByteArray({1, -1, 3})), storage.data(),
                          false);
    EXPECT_EQ(array.getLength(), 3);
    EXPECT_THAT(storage, ElementsAre(1, 255, 3, 9));
}

TEST_F(JniArrayTest, ReadOnlyArrayWithoutStorageCopiesNothing) {
    const ByteArray array(m_jvm.local<jbyteArray>(m_jvm.newByteArray({1, 2})), nullptr, false);
    EXPECT_EQ(array.getLength(), 2);
    EXPECT_EQ(m_jvm.calls("GetByteArrayRegion"), 0);
}

TEST_F(JniArrayTest, ReadOnlyArrayOfNullIsEmpty) {
    std::array<unsigned char, 1> storage{9};
    const ByteArray array(nullptr, storage.data(), false);
    EXPECT_EQ(array.getLength(), 0);
    EXPECT_EQ(storage[0], 9);
}

TEST_F(JniArrayTest, ReadOnlyArrayFreesStorageThatItOwns) {
    // The leak checker of the sanitizer build sees the other half.
    const ByteArray array(m_jvm.local<jbyteArray>(m_jvm.newByteArray({7})), new unsigned char[1],
                          true);
    EXPECT_EQ(array.getStorage()[0], 7);
}

TEST_F(JniArrayTest, CopyFirstRefreshesTheFirstBytesAlone) {
    FakeJvm::Object& object = m_jvm.newByteArray({1, 2, 3});
    std::array<unsigned char, 3> storage{};
    ByteArray array(m_jvm.local<jbyteArray>(object), storage.data(), false);
    object.bytes = {4, 5, 6};
    array.copyFirst(0);
    EXPECT_THAT(storage, ElementsAre(1, 2, 3));
    array.copyFirst(2);
    EXPECT_THAT(storage, ElementsAre(4, 5, 3));
}

} // namespace
} // namespace Vostrel::tests
