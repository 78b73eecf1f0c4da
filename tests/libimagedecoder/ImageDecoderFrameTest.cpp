#include "libimagedecoder/IImageDecoder.h"
#include "tests/support/PiecewiseStreambuffer.h"

#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>

namespace Vostrel::libimagedecoder {

namespace {

/// A decoder whose encoding is the test's business.
class FrameUnderTest : public IImageDecoder {
public:
    explicit FrameUnderTest(IStreambuffer* stream, unsigned version = 2, unsigned chroma = 0)
        : IImageDecoder(nullptr, stream, nullptr, version, chroma) {}

    void SetResolution(unsigned short, unsigned short) override {}

    uint64_t HandleUpdateImplementation(unsigned int quality, unsigned short reserved,
                                        unsigned short x, unsigned short y, unsigned short width,
                                        unsigned short height) override {
        m_Arguments = {quality, reserved, x, y, width, height};
        return m_Decode();
    }

    uint64_t Update() { return HandleUpdate(1, 0, 0, 0, 16, 16); }

    using IImageDecoder::m_uiChromaDivX;
    using IImageDecoder::m_uiChromaDivY;
    using IImageDecoder::m_uiChromaSubsampling;
    using IImageDecoder::m_uiLongCountBits;
    using IImageDecoder::m_uiLongCountEscape;
    using IImageDecoder::m_uiProtocolVersion;
    using IImageDecoder::m_uiSegmentStoreUsed;
    using IImageDecoder::m_vecSegmentStore;

    std::function<uint64_t()> m_Decode = [] { return uint64_t{0}; };
    std::array<unsigned int, 6> m_Arguments{};
};

/// A stream of ten bytes in one piece, and a decoder that fetches some bytes and then holds bits.
class Frame : public testing::Test {
protected:
    Frame() { m_Stream.Load(std::vector<uint8_t>(10, 0xAB), 10); }

    /// An update that fetches bytes (padding behind the tenth) and ends with such counters.
    void Update(int fetchedBytes, uint32_t windowBits, uint32_t reserveBits) {
        m_Decoder.m_Decode = [=, this] {
            for (int i = 0; i < fetchedBytes; ++i)
                m_Stream.FetchByte();
            m_Decoder.SetState({0, windowBits, 0, reserveBits});
            return uint64_t{0};
        };
        m_Decoder.Update();
    }

    tests::PiecewiseStreambuffer m_Stream{nullptr};
    FrameUnderTest m_Decoder{&m_Stream};
};

TEST_F(Frame, PassesItsArgumentsAndTheResultThrough) {
    m_Decoder.m_Decode = [] { return 0xFEDC'BA98'7654'3210u; };
    EXPECT_EQ(m_Decoder.HandleUpdate(0xFFFFFFF5, 0xFFFF, 0x8001, 0x8002, 0x8003, 0xFFFE),
              0xFEDC'BA98'7654'3210u);
    EXPECT_EQ(m_Decoder.m_Arguments,
              (std::array<unsigned int, 6>{0xFFFFFFF5, 0xFFFF, 0x8001, 0x8002, 0x8003, 0xFFFE}));
}

TEST_F(Frame, EveryUpdateStartsWithAnEmptyReader) {
    m_Decoder.SetState({0x1FF, 9, 0x7, 3});
    BitReaderState seen{1, 1, 1, 1};
    m_Decoder.m_Decode = [&] {
        seen = m_Decoder.GetState();
        return uint64_t{0};
    };
    m_Decoder.Update();
    EXPECT_EQ(seen.HeldBits(), 0u);
    EXPECT_EQ(seen.m_uiWindow, 0u);
    EXPECT_EQ(seen.m_uiReserve, 0u);
    EXPECT_EQ(m_Stream.GetPosition(), 0u);
}

TEST_F(Frame, TwentyOneUnreadBitsMoveTheStreamBackByTwoBytes) {
    Update(5, 16, 5);
    EXPECT_EQ(m_Stream.GetPosition(), 3u);
}

TEST_F(Frame, BitsOfAPartlyUsedByteAreDropped) {
    Update(5, 7, 0);
    EXPECT_EQ(m_Stream.GetPosition(), 5u);
    Update(0, 3, 5);
    EXPECT_EQ(m_Stream.GetPosition(), 4u);
}

TEST_F(Frame, BytesThatCameFromPaddingAreNotGivenBack) {
    Update(12, 15, 0);
    EXPECT_EQ(m_Stream.GetPosition(), 10u);
    EXPECT_EQ(m_Stream.GetPaddingCount(), 2u);
    EXPECT_TRUE(m_Stream.IsEndOfStream());
}

TEST_F(Frame, OnlyWhatExceedsThePaddingIsGivenBack) {
    Update(11, 16, 0);
    EXPECT_EQ(m_Stream.GetPosition(), 9u);
    EXPECT_EQ(m_Stream.GetPaddingCount(), 1u);
    EXPECT_TRUE(m_Stream.IsEndOfStream());
}

TEST_F(Frame, AsMuchPaddingAsUnreadBytesGivesNothingBack) {
    Update(12, 16, 7);
    EXPECT_EQ(m_Stream.GetPosition(), 10u);
}

TEST_F(Frame, ThePositionNeverMovesBeforeTheStart) {
    Update(1, 16, 8);
    EXPECT_EQ(m_Stream.GetPosition(), 0u);
    EXPECT_EQ(m_Stream.GetSize(), 10u);
}

TEST_F(Frame, AThrowingUpdateGivesNothingBack) {
    m_Decoder.m_Decode = [&]() -> uint64_t {
        m_Decoder.ReadStreamBits(1);
        m_Decoder.SetState({0, 16, 0, 7});
        throw std::domain_error("no");
    };
    EXPECT_THROW(m_Decoder.Update(), std::domain_error);
    EXPECT_EQ(m_Stream.GetPosition(), 1u);
}

TEST(FrameFields, FollowProtocolVersionAndSubsampling) {
    tests::PiecewiseStreambuffer stream(nullptr);
    constexpr std::array<uint32_t, 3> DivX = {2, 2, 1};
    constexpr std::array<uint32_t, 3> DivY = {2, 1, 1};
    for (unsigned version = 0; version <= 2; ++version) {
        for (unsigned chroma = 0; chroma <= 2; ++chroma) {
            const FrameUnderTest decoder(&stream, version, chroma);
            EXPECT_EQ(decoder.m_uiProtocolVersion, version);
            EXPECT_EQ(decoder.m_uiLongCountBits, version == 0 ? 14u : 16u);
            EXPECT_EQ(decoder.m_uiLongCountEscape, version == 0 ? 16383u : 65535u);
            EXPECT_EQ(decoder.m_uiChromaSubsampling, chroma);
            EXPECT_EQ(decoder.m_uiChromaDivX, DivX[chroma]);
            EXPECT_EQ(decoder.m_uiChromaDivY, DivY[chroma]);
        }
    }
}

TEST(FrameFields, TheSegmentStoreStartsWith16384UnusedZeros) {
    tests::PiecewiseStreambuffer stream(nullptr);
    const FrameUnderTest decoder(&stream);
    EXPECT_EQ(decoder.m_vecSegmentStore, std::vector<uint8_t>(16384, 0));
    EXPECT_EQ(decoder.m_uiSegmentStoreUsed, 0u);
}

TEST(FrameFields, UnknownVersionsAndSubsamplingsAreRejected) {
    tests::PiecewiseStreambuffer stream(nullptr);
    for (const unsigned bad : {3u, 4u, 255u, 0x80000000u, 0xFFFFFFFFu}) {
        EXPECT_THROW(FrameUnderTest(&stream, bad, 0), std::invalid_argument) << bad;
        EXPECT_THROW(FrameUnderTest(&stream, 0, bad), std::invalid_argument) << bad;
    }
}

TEST(FrameTables, SignAndCategoryTablesCoverElevenBits) {
    for (uint32_t n = 0; n < 12; ++n) {
        EXPECT_EQ(IImageDecoder::m_sign.at(n), n == 0 ? 0u : 1u << (n - 1));
        EXPECT_EQ(IImageDecoder::m_cats.at(n), (1u << n) - 1);
    }
    EXPECT_EQ(IImageDecoder::m_sign.size(), 12u);
    EXPECT_EQ(IImageDecoder::m_cats.size(), 12u);
}

} // namespace

} // namespace Vostrel::libimagedecoder
