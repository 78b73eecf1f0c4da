#include "libimagedecoder/IctTileCursor.h"
#include "libimagedecoder/IctCodingTables.h"
#include "libimagedecoder/ImageDecoderException.h"
#include "libimagedecoder/ImageDecoderIct.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "tests/libimagedecoder/CursorRoad.h"
#include "tests/support/PiecewiseStreambuffer.h"
#include "tests/support/Random.h"
#include "tests/support/RecordingLogger.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace Vostrel::libimagedecoder {

namespace {

using Outcome = IctTileCursor::Outcome;

/// Everything that can be seen after a tile.
struct Sight {
    std::string error;
    bool aborted = false;
    int predictor = 0;
    std::array<int16_t, TileCoefficients> coefficients{};

    bool operator==(const Sight&) const = default;
};

struct Road : CursorRoad {
    using CursorRoad::CursorRoad;

    int m_iPredictor = 0;
};

class IctTileCursorTest : public testing::Test {
protected:
    IctTileCursorTest() {
        // A first update builds the dequantisation tables of its quality.
        m_UpdateStream.Load({0xFF, 0xFF, 0xFF}, 3);
        m_Decoder.HandleUpdate(9, 0, 0, 0, 0, 0);
    }

    Sight DecodePlain(Road& road, IctComponent component) {
        Sight sight;
        try {
            sight.aborted = !m_Decoder.HuffmannDecodeReorderDequantTile(
                &road.m_Reader, sight.coefficients.data(), &road.m_iPredictor,
                m_Decoder.GetDequantTable(component).data(), m_Decoder.GetDcTable(component).data(),
                m_Decoder.GetAcTable(component).data());
        } catch (const ImageDecoderException& error) {
            sight.error = error.what();
        }
        sight.predictor = road.m_iPredictor;
        return sight;
    }

    Sight DecodeFast(Road& road, IctTileCursor& cursor, IctComponent component) {
        Sight sight;
        sight.coefficients.fill(77);
        const Outcome outcome = cursor.DecodeTile(m_Decoder.GetTileTables(component),
                                                  road.m_iPredictor, sight.coefficients.data());
        if (outcome == Outcome::Declined)
            return DecodePlain(road, component);
        if (outcome == Outcome::Flat)
            std::fill(sight.coefficients.begin() + 1, sight.coefficients.end(), int16_t{0});
        ++m_iTilesOnFastRoad;
        if (outcome == Outcome::Low)
            ExpectNothingHigh(sight.coefficients);
        sight.predictor = road.m_iPredictor;
        return sight;
    }

    /// Whatever lies in a row or a column from the fourth on is zero.
    void ExpectNothingHigh(const std::array<int16_t, TileCoefficients>& coefficients) const {
        const auto& zigZag = IctCodingTables::s_aZigZagTile;
        for (size_t k = 0; k < TileCoefficients; ++k) {
            if (zigZag[k] / 8 > 3 || zigZag[k] % 8 > 3) {
                EXPECT_EQ(coefficients[m_Decoder.GetReorderTable()[k]], 0) << k;
            }
        }
    }

    /// Random bits: even ones end tiles soon, mostly set ones are long codes and the abort marker,
    /// mostly clear ones are short codes.
    std::vector<uint8_t> RandomBytes() {
        std::vector<uint8_t> bytes(m_Random.Below(size_t{600}));
        const int kind = m_Random.Below(4);
        for (uint8_t& byte : bytes) {
            byte = m_Random.Byte();
            if (kind == 1)
                byte |= m_Random.Byte();
            if (kind == 2)
                byte &= m_Random.Byte();
            if (kind == 3)
                byte |= static_cast<uint8_t>(m_Random.Byte() | m_Random.Byte());
        }
        return bytes;
    }

    /// Decodes tiles on both roads until the stream ends in an error.
    void CompareRoads(const std::vector<uint8_t>& bytes, size_t capacity) {
        Road plain(bytes, capacity);
        Road fast(bytes, capacity);
        IctTileCursor cursor(fast.m_Reader);
        for (int tile = 0; tile < 300; ++tile) {
            const IctComponent component = m_Random.OneIn(3) ? ComponentCb : ComponentY;
            const size_t repeats = 1 + m_Random.Below(size_t{3});
            if (m_Random.OneIn(3) && cursor.SkipRepeats(RepeatedTiles().Then(
                                         *m_Decoder.GetTileTables(component).m_pFast, repeats))) {
                ++m_iRepeatsSkipped;
                SkipRepeatsPlainly(plain, component, repeats);
                continue;
            }
            const Sight expected = DecodePlain(plain, component);
            ASSERT_EQ(DecodeFast(fast, cursor, component), expected) << "tile " << tile;
            if (m_Random.OneIn(4) || !expected.error.empty() || expected.aborted) {
                cursor.GiveBack();
                ExpectSameState(plain, fast);
            }
            if (HasFailure() || !expected.error.empty())
                return;
            if (m_Random.OneIn(4)) {
                // What follows a macroblock: a skip code, a length.
                if (!ReadSameBits(plain, fast, cursor, 1 + m_Random.Below(16U)))
                    return;
            }
        }
    }

    /// Reads on both roads; false when the stream has no such bits.
    static bool ReadSameBits(Road& plain, Road& fast, IctTileCursor& cursor, uint32_t count) {
        try {
            const uint32_t expected = plain.m_Reader.ReadStreamBits(count);
            EXPECT_EQ(ReadBits(cursor.GetWindow(), fast.m_Reader, count), expected);
            return true;
        } catch (const ImageDecoderException&) {
            EXPECT_THROW(ReadBits(cursor.GetWindow(), fast.m_Reader, count), ImageDecoderException);
            ExpectSameState(plain, fast);
            return false;
        }
    }

    /// On the plain road, the tiles that SkipRepeats stands for.
    void SkipRepeatsPlainly(Road& plain, IctComponent component, size_t tiles) {
        for (size_t tile = 0; tile < tiles; ++tile) {
            const int predictor = plain.m_iPredictor;
            const Sight sight = DecodePlain(plain, component);
            EXPECT_EQ(sight.error, "");
            EXPECT_EQ(sight.predictor, predictor);
            EXPECT_EQ(std::count(sight.coefficients.begin() + 1, sight.coefficients.end(), 0), 63);
        }
    }

    tests::Random m_Random;
    tests::RecordingLogger m_Logger;
    tests::PiecewiseStreambuffer m_UpdateStream{&m_Logger};
    ImageDecoderRenderer m_Renderer{&m_Logger};
    ImageDecoderIct m_Decoder{&m_Renderer, &m_UpdateStream, &m_Logger, 0, 1, 0};
    int m_iTilesOnFastRoad = 0;
    int m_iRepeatsSkipped = 0;
};

TEST_F(IctTileCursorTest, AgreesWithThePlainDecoderOnAnyBitsInOnePiece) {
    for (int round = 0; round < 4000 && !HasFailure(); ++round)
        CompareRoads(RandomBytes(), 1000);
    EXPECT_GT(m_iTilesOnFastRoad, 10000);
    EXPECT_GT(m_iRepeatsSkipped, 100);
}

TEST_F(IctTileCursorTest, AgreesWithThePlainDecoderOnAnyBitsInSmallPieces) {
    for (int round = 0; round < 4000 && !HasFailure(); ++round)
        CompareRoads(RandomBytes(), 1 + m_Random.Below(size_t{300}));
    EXPECT_GT(m_iTilesOnFastRoad, 1000);
}

TEST_F(IctTileCursorTest, TakesTheLastTileOfAWindowWithoutReadingBehindIt) {
    // Flat luma tiles of 6 bits: category 0 (00), end (1010). Four tiles are three bytes; the peek
    // at the last end code asks for 12 more bits than there are tiles.
    const std::vector<uint8_t> bytes = {0b00101000, 0b10100010, 0b10001010, 0x00, 0x00};
    Road road(bytes, bytes.size());
    IctTileCursor cursor(road.m_Reader);
    std::array<int16_t, TileCoefficients> coefficients{};
    // Before the first byte is fetched there is no window to borrow from.
    ASSERT_FALSE(DecodePlain(road, ComponentY).aborted);
    for (int tile = 1; tile < 4; ++tile)
        EXPECT_EQ(cursor.DecodeTile(m_Decoder.GetTileTables(ComponentY), road.m_iPredictor,
                                    coefficients.data()),
                  Outcome::Flat);
    cursor.GiveBack();
    EXPECT_EQ(road.m_Stream.GetPosition(), 5U);
    EXPECT_EQ(road.m_Reader.GetState().HeldBits(), 16U);
}

TEST_F(IctTileCursorTest, DeclinesAReaderWhoseBitsAreNotTheWindows) {
    struct Case {
        size_t position;
        BitReaderState state;
    };
    for (const Case& odd : {Case{0, {0, 0, 0b000, 3}}, {1, {0, 0, 0b00101000, 8}}}) {
        Road road(std::vector<uint8_t>(64, 0b00101000), 64);
        road.m_Reader.ReadStreamBits(8);
        road.m_Stream.SetPosition(odd.position);
        road.m_Reader.SetState(odd.state);
        IctTileCursor cursor(road.m_Reader);
        std::array<int16_t, TileCoefficients> coefficients{};
        EXPECT_EQ(cursor.DecodeTile(m_Decoder.GetTileTables(ComponentY), road.m_iPredictor,
                                    coefficients.data()),
                  Outcome::Declined);
        EXPECT_EQ(road.m_Reader.GetState().HeldBits(), odd.state.HeldBits());
        EXPECT_EQ(road.m_Stream.GetPosition(), odd.position);
    }
}

TEST_F(IctTileCursorTest, DeclinesWhenTheEndCodesPeekNeedsAByteBehindTheWindow) {
    const std::vector<uint8_t> bytes = {0b00101000, 0b10100010, 0b10001010, 0x00};
    Road road(bytes, bytes.size());
    IctTileCursor cursor(road.m_Reader);
    std::array<int16_t, TileCoefficients> coefficients{};
    ASSERT_FALSE(DecodePlain(road, ComponentY).aborted);
    const auto decode = [&] {
        return cursor.DecodeTile(m_Decoder.GetTileTables(ComponentY), road.m_iPredictor,
                                 coefficients.data());
    };
    EXPECT_EQ(decode(), Outcome::Flat);
    EXPECT_EQ(decode(), Outcome::Flat);
    // The last end code starts at bit 20: a peek there ends at bit 36, in a fifth byte.
    EXPECT_EQ(decode(), Outcome::Declined);
    EXPECT_EQ(road.m_Stream.GetPaddingCount(), 0U);
    EXPECT_FALSE(DecodePlain(road, ComponentY).aborted);
    EXPECT_EQ(road.m_Stream.GetPaddingCount(), 1U);
}

} // namespace

} // namespace Vostrel::libimagedecoder
