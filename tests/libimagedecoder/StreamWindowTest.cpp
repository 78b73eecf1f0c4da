#include "libimagedecoder/StreamWindow.h"
#include "libimagedecoder/ImageDecoderException.h"
#include "tests/libimagedecoder/CursorRoad.h"
#include "tests/support/TestBits.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <vector>

namespace Vostrel::libimagedecoder {

namespace {

constexpr size_t Room = 40;

std::vector<uint8_t> RandomBytes(tests::Random& random, size_t count) {
    std::vector<uint8_t> bytes(count);
    for (uint8_t& byte : bytes)
        byte = random.Byte();
    return bytes;
}

/// A peek of which the last bits are not used, as a decoder of codes does it.
void PeekPlainly(BitStreamReader& reader, uint32_t codeBits) {
    const uint32_t peeked = reader.ReadStreamBits(16);
    reader.StallStreamBits(16 - codeBits, peeked & ((1u << (16 - codeBits)) - 1));
}

bool PeekInWindow(StreamWindow& window, uint32_t codeBits) {
    if (!window.IsReady())
        return false;
    BitRegister bits = window.GetBits();
    bits.Refill();
    bits.Skip(codeBits);
    return window.Commit(bits, 16 - codeBits);
}

/// A stream of one piece that is in memory already, as an update's first piece is.
struct LoadedRoad : CursorRoad {
    explicit LoadedRoad(const std::vector<uint8_t>& bytes) : CursorRoad(bytes, bytes.size()) {
        m_Stream.FetchByte();
        m_Stream.SetPosition(0);
    }
};

class StreamWindows : public testing::Test {
protected:
    tests::Random m_Random;
};

TEST_F(StreamWindows, ReadsAndPeeksLeaveTheReaderWhereItWouldStandByItself) {
    for (int stream = 0; stream < 2000; ++stream) {
        const std::vector<uint8_t> bytes = RandomBytes(m_Random, m_Random.Below(size_t{200}));
        const size_t capacity = 1 + m_Random.Below(size_t{120});
        CursorRoad plain(bytes, capacity);
        CursorRoad fast(bytes, capacity);
        StreamWindow window(fast.m_Reader, Room, 0);
        try {
            for (;;) {
                const uint32_t count = 1 + m_Random.Below(16U);
                if (m_Random.OneIn(2)) {
                    const uint32_t expected = plain.m_Reader.ReadStreamBits(count);
                    ASSERT_EQ(ReadBits(window, fast.m_Reader, count), expected);
                } else {
                    PeekPlainly(plain.m_Reader, count);
                    if (!PeekInWindow(window, count)) {
                        window.GiveBack();
                        PeekPlainly(fast.m_Reader, count);
                    }
                }
                if (m_Random.OneIn(3)) {
                    window.GiveBack();
                    ExpectSameState(plain, fast);
                    ASSERT_FALSE(HasFailure());
                }
            }
        } catch (const ImageDecoderException&) {
            continue; // The end of the stream.
        }
    }
}

TEST_F(StreamWindows, FetchedBytesAreThoseOfTheReader) {
    const std::vector<uint8_t> bytes = RandomBytes(m_Random, 1000);
    LoadedRoad plain(bytes);
    LoadedRoad fast(bytes);
    StreamWindow window(fast.m_Reader, Room, 0);
    ASSERT_TRUE(window.IsReady());
    size_t base = 0;
    const uint8_t* start = window.GetBytes();
    for (int i = 0; i < 400; ++i) {
        const uint32_t count = 1 + m_Random.Below(15U);
        PeekPlainly(plain.m_Reader, count);
        ASSERT_TRUE(PeekInWindow(window, count));
        if (window.GetBytes() != start)
            base = bytes.size() - window.GetSize();
        ASSERT_EQ(base + window.GetFetchedBytes(), plain.m_Stream.GetPosition());
    }
}

TEST_F(StreamWindows, MovingToAByteLeavesAReaderThatHoldsNothing) {
    const std::vector<uint8_t> bytes = RandomBytes(m_Random, 100);
    for (size_t byte = 3; byte <= bytes.size(); ++byte) {
        LoadedRoad road(bytes);
        StreamWindow window(road.m_Reader, Room, 0);
        ASSERT_TRUE(PeekInWindow(window, 3));
        window.MoveToByte(byte);
        if (m_Random.OneIn(2) && byte < bytes.size()) {
            ASSERT_EQ(ReadBits(window, road.m_Reader, 8), bytes[byte]);
            continue;
        }
        window.GiveBack();
        EXPECT_EQ(road.m_Reader.GetState().HeldBits(), 0u);
        EXPECT_EQ(road.m_Stream.GetPosition(), byte);
    }
}

TEST_F(StreamWindows, ACommitPastTheLastByteIsRefused) {
    const std::vector<uint8_t> bytes = RandomBytes(m_Random, 9);
    LoadedRoad road(bytes);
    StreamWindow window(road.m_Reader, Room, 0);
    ASSERT_TRUE(window.IsReady());
    BitRegister bits = window.GetBits();
    bits.Skip(32);
    bits.Refill();
    bits.Skip(40);
    EXPECT_FALSE(window.Commit(bits, 1)); // The reader would have fetched a tenth byte.
    EXPECT_EQ(window.GetPosition(), 0u);
    EXPECT_TRUE(window.Commit(bits, 0));
    EXPECT_EQ(window.GetPosition(), 72u);
}

TEST_F(StreamWindows, AReaderThatHoldsBitsOfAnEarlierPieceLendsNothing) {
    const std::vector<uint8_t> bytes = RandomBytes(m_Random, 64);
    CursorRoad road(bytes, 3);
    StreamWindow window(road.m_Reader, Room, 0);
    road.m_Reader.ReadStreamBits(12);
    PeekPlainly(road.m_Reader, 1); // Ends in the second piece's first byte, and holds 15 bits.
    EXPECT_FALSE(window.IsReady());
    road.m_Reader.ReadStreamBits(11); // The rest of the first piece.
    EXPECT_TRUE(window.IsReady());
}

TEST_F(StreamWindows, AReaderThatHasReadPaddingLendsNothing) {
    CursorRoad road({0xAB}, 1);
    StreamWindow window(road.m_Reader, Room, 0);
    road.m_Reader.ReadStreamBits(9);
    EXPECT_FALSE(window.IsReady());
}

} // namespace

} // namespace Vostrel::libimagedecoder
