#include "jni/StreambufferJava.h"

#include "libimagedecoder/ImageDecoderException.h"
#include "tests/jni/AllocationFailure.h"
#include "tests/jni/FakeHelper.h"
#include "tests/support/FakeJvmFixture.h"

#include <new>

namespace Vostrel::tests {
namespace {

using jni::StreambufferJava;
using libimagedecoder::ImageDecoderException;
using testing::ElementsAre;
using testing::IsEmpty;

template <class Action>
std::string failureOf(Action action) {
    try {
        action();
    } catch (const ImageDecoderException& failure) {
        return failure.what();
    }
    return "none";
}

class StreambufferJavaTest : public FakeJvmFixture {
protected:
    static constexpr size_t Capacity = 100;

    void bind() { m_stream->FillInternalBufferFromArray(Capacity, m_array); }

    std::vector<uint8_t> fetch(size_t count) {
        std::vector<uint8_t> bytes;
        for (size_t i = 0; i < count; ++i)
            bytes.push_back(m_stream->FetchByte());
        return bytes;
    }

    FakeHelper m_helper{m_jvm};
    FakeJvm::Object& m_arrayObject = m_jvm.newByteArray(std::vector<jbyte>(Capacity, 77));
    jbyteArray m_array = m_jvm.local<jbyteArray>(m_arrayObject);
    std::unique_ptr<StreambufferJava> m_stream =
        std::make_unique<StreambufferJava>(m_helper.get(), nullptr);
};

TEST_F(StreambufferJavaTest, HoldsTheJavaObjectAndWhileBoundTheArray) {
    EXPECT_EQ(m_jvm.liveGlobals(), 1u);
    bind();
    EXPECT_EQ(m_jvm.liveGlobals(), 2u);
    m_stream->ReleaseInternalBuffer();
    EXPECT_EQ(m_jvm.liveGlobals(), 1u);
    m_stream.reset();
    EXPECT_EQ(m_jvm.liveGlobals(), 0u);
}

TEST_F(StreambufferJavaTest, DestructionWhileBoundReleasesEverything) {
    bind();
    m_stream.reset();
    EXPECT_EQ(m_jvm.liveGlobals(), 0u);
}

TEST_F(StreambufferJavaTest, BindingDeliversNothingOfTheArrayYet) {
    bind();
    EXPECT_EQ(m_stream->GetSize(), 0u);
    EXPECT_EQ(m_stream->GetPosition(), 0u);
    m_helper.m_pieces = {{1}};
    EXPECT_THAT(fetch(1), ElementsAre(1));
}

TEST_F(StreambufferJavaTest, ReadsPieceAfterPieceWithItsCapacity) {
    bind();
    m_helper.m_pieces = {{1, 255}, {3}};
    EXPECT_THAT(fetch(3), ElementsAre(1, 255, 3));
    EXPECT_THAT(m_helper.m_capacities, ElementsAre(100, 100));
}

TEST_F(StreambufferJavaTest, ReadOfAFullArrayIsTaken) {
    bind();
    m_helper.m_pieces = {std::vector<int>(Capacity, 5)};
    EXPECT_EQ(fetch(Capacity), std::vector<uint8_t>(Capacity, 5));
}

TEST_F(StreambufferJavaTest, ReadDoesNotTouchSizeAndPosition) {
    bind();
    m_helper.m_pieces = {{1, 2, 3}};
    EXPECT_EQ(m_stream->ReadFromBuffer(), 3u);
    EXPECT_EQ(m_stream->GetSize(), 0u);
    EXPECT_EQ(m_stream->GetPosition(), 0u);
}

TEST_F(StreambufferJavaTest, ReadOfZeroIsTheEndOfDataAndNoError) {
    bind();
    EXPECT_EQ(m_stream->ReadFromBuffer(), 0u);
    EXPECT_THAT(fetch(2), ElementsAre(0, 0));
    EXPECT_TRUE(m_stream->IsEndOfStream());
    EXPECT_EQ(failureOf([&] { fetch(1); }), "Stream has no more bytes!");
}

TEST_F(StreambufferJavaTest, BindingAgainEndsTheEndOfDataAndThePadding) {
    bind();
    fetch(2);
    m_stream->ReleaseInternalBuffer();
    EXPECT_TRUE(m_stream->IsEndOfStream());
    bind();
    EXPECT_FALSE(m_stream->IsEndOfStream());
    EXPECT_EQ(m_stream->GetPaddingCount(), 0u);
    m_helper.m_pieces = {{9}};
    EXPECT_THAT(fetch(1), ElementsAre(9));
}

TEST_F(StreambufferJavaTest, NegativeReadFails) {
    bind();
    for (const jint claim : {-1, std::numeric_limits<jint>::min()}) {
        m_helper.m_claims = {claim};
        EXPECT_EQ(failureOf([&] { fetch(1); }), "Unable to read from java buffer!");
    }
}

TEST_F(StreambufferJavaTest, ReadBeyondTheCapacityFailsBeforeAnythingIsCopied) {
    bind();
    m_helper.m_claims = {Capacity + 1};
    const int regions = m_jvm.calls("GetByteArrayRegion");
    EXPECT_EQ(failureOf([&] { fetch(1); }), "Unable to read from java buffer!");
    EXPECT_EQ(m_jvm.calls("GetByteArrayRegion"), regions);
}

TEST_F(StreambufferJavaTest, ReadBeyondAnArrayShorterThanTheCapacityFails) {
    m_stream->FillInternalBufferFromArray(Capacity + 50, m_array);
    m_helper.m_claims = {Capacity + 1};
    EXPECT_EQ(failureOf([&] { fetch(1); }), "Unable to read from java buffer!");
    m_helper.m_claims = {Capacity};
    EXPECT_EQ(m_stream->ReadFromBuffer(), Capacity);
}

TEST_F(StreambufferJavaTest, ArrayLongerThanTheCapacityIsHeldButNotReadBeyondIt) {
    m_stream->FillInternalBufferFromArray(Capacity - 50, m_array);
    m_helper.m_claims = {Capacity - 50, Capacity - 49};
    EXPECT_EQ(m_stream->ReadFromBuffer(), Capacity - 50);
    EXPECT_EQ(failureOf([&] { fetch(1); }), "Unable to read from java buffer!");
    EXPECT_THAT(m_helper.m_capacities, ElementsAre(50, 50));
}

TEST_F(StreambufferJavaTest, NullArrayReadsAsEmpty) {
    m_stream->FillInternalBufferFromArray(Capacity, nullptr);
    m_helper.removeMethod("read([BI)I");
    EXPECT_EQ(outputOf([&] { EXPECT_EQ(failureOf([&] { fetch(1); }), "Connection closed"); }),
              "Could not find \"read([BI)I\" method");
    m_stream->ReleaseInternalBuffer();
}

TEST_F(StreambufferJavaTest, MissingReadClosesTheConnection) {
    m_helper.removeMethod("read([BI)I");
    bind();
    EXPECT_EQ(outputOf([&] { EXPECT_EQ(failureOf([&] { fetch(1); }), "Connection closed"); }),
              "Could not find \"read([BI)I\" method");
}

TEST_F(StreambufferJavaTest, UnusedBytesAreStalledWhereTheyLieInTheArray) {
    bind();
    m_helper.m_pieces = {std::vector<int>(100, 5)};
    fetch(90);
    m_stream->ReleaseInternalBuffer();
    EXPECT_THAT(m_helper.m_stalls, ElementsAre(FakeHelper::Stall{&m_arrayObject, 90, 10}));
    EXPECT_EQ(m_stream->GetSize(), 0u);
    EXPECT_EQ(m_stream->GetPosition(), 0u);
}

TEST_F(StreambufferJavaTest, NothingIsStalledAfterEveryByteWasUsed) {
    bind();
    m_helper.m_pieces = {{1, 2}};
    fetch(2);
    m_stream->ReleaseInternalBuffer();
    EXPECT_THAT(m_helper.m_stalls, IsEmpty());
}

TEST_F(StreambufferJavaTest, NothingIsStalledWhenNothingWasRead) {
    bind();
    m_stream->ReleaseInternalBuffer();
    EXPECT_THAT(m_helper.m_stalls, IsEmpty());
}

TEST_F(StreambufferJavaTest, MissingStallWithUnusedBytesClosesTheConnection) {
    m_helper.removeMethod("stall([BII)V");
    bind();
    m_helper.m_pieces = {{1, 2}};
    fetch(1);
    EXPECT_EQ(outputOf([&] {
                  EXPECT_EQ(failureOf([&] { m_stream->ReleaseInternalBuffer(); }),
                            "Connection closed");
              }),
              "Could not find \"stall([BII)V\" method");
    EXPECT_EQ(m_jvm.liveGlobals(), 2u);
    m_stream.reset();
    EXPECT_EQ(m_jvm.liveGlobals(), 0u);
}

TEST_F(StreambufferJavaTest, MissingStallDoesNotMatterWithoutUnusedBytes) {
    m_helper.removeMethod("stall([BII)V");
    bind();
    m_stream->ReleaseInternalBuffer();
    EXPECT_EQ(m_jvm.liveGlobals(), 1u);
}

TEST_F(StreambufferJavaTest, BindingTwiceReplacesTheArrayWithoutStalling) {
    bind();
    m_helper.m_pieces = {{1, 2}, {3}};
    fetch(1);
    FakeJvm::Object& other = m_jvm.newByteArray({0, 0, 0});
    m_stream->FillInternalBufferFromArray(3, m_jvm.local<jbyteArray>(other));
    EXPECT_THAT(m_helper.m_stalls, IsEmpty());
    EXPECT_EQ(m_jvm.liveGlobals(), 2u);
    EXPECT_THAT(fetch(1), ElementsAre(3));
    EXPECT_EQ(m_helper.m_capacities.back(), 3);
    EXPECT_EQ(other.bytes[0], 3);
}

TEST_F(StreambufferJavaTest, BindingTwiceForgetsPositionAndPadding) {
    bind();
    m_helper.m_pieces = {{1}};
    fetch(3);
    ASSERT_EQ(m_stream->GetPaddingCount(), 2u);
    ASSERT_EQ(m_stream->GetPosition(), 1u);
    bind();
    EXPECT_EQ(m_stream->GetPaddingCount(), 0u);
    EXPECT_EQ(m_stream->GetPosition(), 0u);
    EXPECT_EQ(m_stream->GetSize(), 0u);
}

TEST_F(StreambufferJavaTest, BindingWithoutMemoryFailsAndCanBeRepeated) {
    bind();
    bind();                         // From now on the fake VM's own books allocate nothing.
    for (const int n : {1, 2, 3}) { // the array's reference, the buffer, the view
        const AllocationFailure failure(n);
        EXPECT_THROW(bind(), std::bad_alloc);
    }
    bind();
    m_helper.m_pieces = {{4}};
    EXPECT_THAT(fetch(1), ElementsAre(4));
}

TEST_F(StreambufferJavaTest, ObjectIsAtTheAddressOfItsInterface) {
    EXPECT_EQ(static_cast<void*>(m_stream.get()),
              static_cast<void*>(static_cast<libimagedecoder::IStreambuffer*>(m_stream.get())));
}

} // namespace
} // namespace Vostrel::tests
