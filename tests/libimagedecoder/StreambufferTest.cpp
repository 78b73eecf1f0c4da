#include "libimagedecoder/IStreambuffer.h"
#include "libimagedecoder/ImageDecoderException.h"
#include "libimagedecoder/StreambufferArray.h"
#include "tests/support/PiecewiseStreambuffer.h"

#include <gtest/gtest.h>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

namespace Vostrel::libimagedecoder {

namespace {

std::vector<uint8_t> Counting(size_t count) {
    std::vector<uint8_t> bytes(count);
    std::iota(bytes.begin(), bytes.end(), uint8_t{1});
    return bytes;
}

std::string FetchFailure(IStreambuffer& stream) {
    try {
        stream.FetchByte();
        return "none";
    } catch (const ImageDecoderException& exception) {
        return exception.what();
    }
}

using Pieces = std::vector<std::vector<uint8_t>>;

/// Delivers its pieces one by one and counts how often it was asked.
class PiecesStream : public IStreambuffer {
public:
    explicit PiecesStream(Pieces pieces) : IStreambuffer(nullptr), m_Pieces(std::move(pieces)) {}

    size_t ReadFromBuffer() override {
        ++m_uiCalls;
        if (m_bBroken)
            throw std::domain_error("broken");
        if (m_uiNext == m_Pieces.size())
            return 0;
        m_puiData = m_Pieces[m_uiNext].data();
        return m_Pieces[m_uiNext++].size();
    }

    bool IsFresh() const {
        return m_puiData == nullptr && m_uiCapacity == 0 && m_uiSize == 0 && m_uiPosition == 0 &&
               m_uiPaddingCount == 0;
    }
    void SetCapacity(size_t capacity) { m_uiCapacity = capacity; }

    size_t m_uiCalls = 0;
    bool m_bBroken = false;

private:
    Pieces m_Pieces;
    size_t m_uiNext = 0;
};

TEST(Streambuffer, AnArrayYieldsItsBytesThenTwoZerosThenThrows) {
    for (const size_t count : {0u, 1u, 2u, 7u}) {
        std::vector<uint8_t> bytes = Counting(count);
        StreambufferArray stream(nullptr, bytes.data(), count);
        for (size_t i = 0; i < count; ++i)
            EXPECT_EQ(stream.FetchByte(), i + 1);
        EXPECT_EQ(stream.FetchByte(), 0);
        EXPECT_EQ(stream.FetchByte(), 0);
        EXPECT_EQ(FetchFailure(stream), "Stream has no more bytes!");
        EXPECT_EQ(FetchFailure(stream), "Stream has no more bytes!");
        EXPECT_EQ(bytes, Counting(count));
    }
}

TEST(Streambuffer, TheFieldsStayAsTheyWereWhenTheThirdPaddingByteIsRefused) {
    std::vector<uint8_t> bytes = Counting(3);
    StreambufferArray stream(nullptr, bytes.data(), 3);
    for (int i = 0; i < 5; ++i)
        stream.FetchByte();
    EXPECT_THROW(stream.FetchByte(), ImageDecoderException);
    EXPECT_EQ(stream.GetPosition(), 3u);
    EXPECT_EQ(stream.GetSize(), 3u);
    EXPECT_EQ(stream.GetPaddingCount(), 2u);
    EXPECT_TRUE(stream.IsEndOfStream());
}

TEST(Streambuffer, ReadPaddingHandsOutTwoZerosWhateverTheWindowHolds) {
    std::vector<uint8_t> bytes = Counting(3);
    StreambufferArray stream(nullptr, bytes.data(), 3);
    EXPECT_EQ(stream.ReadPadding(), 0);
    EXPECT_EQ(stream.ReadPadding(), 0);
    EXPECT_THROW(stream.ReadPadding(), ImageDecoderException);
    EXPECT_EQ(stream.GetPaddingCount(), 2u);
    EXPECT_EQ(stream.GetPosition(), 0u);
    EXPECT_FALSE(stream.IsEndOfStream());
}

TEST(Streambuffer, ResetRestoresThePaddingAllowanceAndKeepsTheEndOfTheStream) {
    PiecesStream stream(Pieces{{1}});
    for (int i = 0; i < 3; ++i)
        stream.FetchByte();
    EXPECT_THROW(stream.FetchByte(), ImageDecoderException);
    EXPECT_EQ(stream.m_uiCalls, 2u);

    stream.SetCapacity(17);
    stream.ResetBufferState();
    EXPECT_TRUE(stream.IsFresh());
    EXPECT_TRUE(stream.IsEndOfStream());
    EXPECT_EQ(stream.FetchByte(), 0);
    EXPECT_EQ(stream.FetchByte(), 0);
    EXPECT_THROW(stream.FetchByte(), ImageDecoderException);
    EXPECT_EQ(stream.m_uiCalls, 2u) << "an ended stream is not asked again";
}

TEST(Streambuffer, ResetOfALiveStreamDoesNotEndIt) {
    PiecesStream stream(Pieces{{1, 2}, {3}});
    stream.FetchByte();
    stream.ResetBufferState();
    EXPECT_FALSE(stream.IsEndOfStream());
    EXPECT_EQ(stream.FetchByte(), 3);
}

TEST(Streambuffer, RefillsOnlyWhenTheWindowIsUsedUp) {
    PiecesStream stream(Pieces{{10, 11}, {20}, {30, 31, 32}});
    EXPECT_EQ(stream.m_uiCalls, 0u);
    EXPECT_EQ(stream.FetchByte(), 10);
    EXPECT_EQ(stream.FetchByte(), 11);
    EXPECT_EQ(stream.m_uiCalls, 1u);
    EXPECT_EQ(stream.FetchByte(), 20);
    EXPECT_EQ(stream.GetSize(), 1u);
    EXPECT_EQ(stream.GetPosition(), 1u);
    EXPECT_EQ(stream.FetchByte(), 30);
    EXPECT_EQ(stream.GetSize(), 3u);
    EXPECT_EQ(stream.GetPosition(), 1u);
    EXPECT_EQ(stream.m_uiCalls, 3u);
}

TEST(Streambuffer, AnErrorOfTheRefillPassesThroughUnchanged) {
    PiecesStream stream(Pieces{{1}});
    stream.FetchByte();
    stream.m_bBroken = true;
    EXPECT_THROW(stream.FetchByte(), std::domain_error);
    EXPECT_FALSE(stream.IsEndOfStream());
    EXPECT_EQ(stream.GetPosition(), 1u);
    stream.m_bBroken = false;
    EXPECT_EQ(stream.FetchByte(), 0);
}

TEST(Streambuffer, CopiesBytesAcrossPieces) {
    for (const size_t capacity : {1u, 2u, 3u, 5u, 100u}) {
        tests::PiecewiseStreambuffer stream(nullptr);
        stream.Load(Counting(20), capacity);
        EXPECT_EQ(stream.FetchByte(), 1);
        std::vector<uint8_t> copy(14, 0xEE);
        stream.CopyBytes(copy.data(), 13);
        std::vector<uint8_t> expected = Counting(14);
        expected.erase(expected.begin());
        expected.push_back(0xEE);
        EXPECT_EQ(copy, expected);
        EXPECT_EQ(stream.FetchByte(), 15);
        EXPECT_EQ(stream.GetConsumedBytes(), 15u);
    }
}

TEST(Streambuffer, CopyingNothingTouchesNothing) {
    PiecesStream stream(Pieces{});
    stream.CopyBytes(nullptr, 0);
    EXPECT_EQ(stream.m_uiCalls, 0u);
    EXPECT_FALSE(stream.IsEndOfStream());
}

TEST(Streambuffer, PaddingIsNeverCopied) {
    PiecesStream stream(Pieces{{1, 2}});
    uint8_t copy[4] = {9, 9, 9, 9};
    try {
        stream.CopyBytes(copy, 3);
        ADD_FAILURE() << "copied more than there is";
    } catch (const ImageDecoderException& exception) {
        EXPECT_STREQ(exception.what(), "Stream has no more bytes!");
    }
    EXPECT_EQ(copy[2], 9);
    EXPECT_EQ(stream.GetPaddingCount(), 0u);
    EXPECT_TRUE(stream.IsEndOfStream());
}

TEST(Streambuffer, CopyingAfterPaddingWasHandedOutThrows) {
    std::vector<uint8_t> bytes = Counting(1);
    StreambufferArray stream(nullptr, bytes.data(), 1);
    stream.FetchByte();
    stream.FetchByte();
    uint8_t copy = 9;
    EXPECT_THROW(stream.CopyBytes(&copy, 1), ImageDecoderException);
    EXPECT_EQ(copy, 9);
}

} // namespace

} // namespace Vostrel::libimagedecoder
