#include "libimagedecoder/ImageDecoderException.h"
#include "libimagedecoder/ImageDecoderIct.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "libimagedecoder/InverseTransform/InverseIctFactory.h"
#include "libimagedecoder/StreambufferArray.h"
#include "tests/model/ModelTables.h"
#include "tests/model/ModelTile.h"
#include "tests/support/GuardedBuffer.h"
#include "tests/support/PiecewiseStreambuffer.h"
#include "tests/support/RecordingLogger.h"
#include "tests/support/TestBits.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <string>

namespace Vostrel::libimagedecoder {

namespace {

using tests::Bits;
using tests::BytesOf;
using tests::CodeOf;
using tests::FlatLumaTile;
using Codes = HuffmanYCbCrDcAc;

std::string LumaDc(size_t category) {
    return CodeOf(Codes::s_aDcLuminance, category);
}
std::string LumaAc(size_t run, size_t size) {
    return CodeOf(Codes::s_aAcLuminance, run * 16 + size);
}

/// Decodes single tiles with a decoder of the portable transform, in which slot and row-major
/// position are the same. Multipliers are 1024, a factor of one, unless a test sets others.
class IctTile : public testing::Test {
protected:
    explicit IctTile(bool accelerated = false)
        : m_Decoder(&m_Renderer, &m_UpdateStream, &m_Logger, 0, 1, 0,
                    InverseTransform::InverseIct::InverseIctFactory::CreateInverseIct(
                        &m_Logger, accelerated)) {
        m_Dequant.fill(1024);
        std::fill(m_Coefficients.begin(), m_Coefficients.end(), short{0x5A5A});
    }

    void Load(const std::string& text) {
        m_Bytes = BytesOf(text);
        m_pStream = std::make_unique<StreambufferArray>(nullptr, m_Bytes.data(), m_Bytes.size());
        m_pReader = std::make_unique<BitStreamReader>(m_pStream.get(), 0, 0, 0, 0);
    }

    /// Decodes the next tile of what was loaded.
    bool Decode(IctComponent component = ComponentY) {
        return m_Decoder.HuffmannDecodeReorderDequantTile(
            m_pReader.get(), m_Coefficients.Data(), &m_iPredictor, m_Dequant.data(),
            m_Decoder.GetDcTable(component).data(), m_Decoder.GetAcTable(component).data());
    }

    size_t ConsumedBits() const {
        return (m_pStream->GetPosition() + m_pStream->GetPaddingCount()) * 8 -
               m_pReader->GetState().HeldBits();
    }

    std::string DecodeFailure() {
        try {
            Decode();
            return "none";
        } catch (const ImageDecoderException& exception) {
            return exception.what();
        }
    }

    /// The coefficients but the given ones are zero.
    void ExpectOnly(const std::vector<std::pair<size_t, int>>& coefficients) {
        std::array<int, 64> expected{};
        for (const auto& [slot, value] : coefficients)
            expected.at(slot) = value;
        for (size_t slot = 0; slot < 64; ++slot)
            EXPECT_EQ(m_Coefficients[slot], expected[slot]) << "slot " << slot;
    }

    tests::RecordingLogger m_Logger;
    tests::PiecewiseStreambuffer m_UpdateStream{&m_Logger};
    ImageDecoderRenderer m_Renderer{&m_Logger};
    ImageDecoderIct m_Decoder;
    std::array<int, 64> m_Dequant{};
    tests::GuardedBuffer<short> m_Coefficients{64};
    int m_iPredictor = 0;
    std::vector<uint8_t> m_Bytes;
    std::unique_ptr<StreambufferArray> m_pStream;
    std::unique_ptr<BitStreamReader> m_pReader;
};

class AcceleratedIctTile : public IctTile {
protected:
    AcceleratedIctTile() : IctTile(true) {}
};

TEST_F(IctTile, WithoutDifferenceAndCoefficientsHoldsThePredictorAlone) {
    m_iPredictor = -77;
    m_Dequant[0] = 1500;
    Load(FlatLumaTile);
    EXPECT_TRUE(Decode());
    ExpectOnly({{0, -113}}); // -77 * 1500 / 1024 is -112.79
    EXPECT_EQ(m_iPredictor, -77);
    EXPECT_EQ(ConsumedBits(), 6u);
}

TEST_F(IctTile, TheAbortMarkerTakesTenBitsAndLeavesPredictorAndZeros) {
    m_iPredictor = 1234;
    Load(tests::AbortMarker + "101011");
    EXPECT_FALSE(Decode());
    EXPECT_EQ(ConsumedBits(), 10u);
    EXPECT_EQ(m_iPredictor, 1234);
    ExpectOnly({});
}

TEST_F(IctTile, AllOnesAreTheAbortMarkerToo) {
    Load("1111111111 000000");
    EXPECT_FALSE(Decode());
    EXPECT_EQ(ConsumedBits(), 10u);
}

TEST_F(IctTile, CategoryThreeMapsItsPatternsToMinusSevenToSeven) {
    const std::pair<const char*, int> patterns[] = {{"000", -7}, {"010", -5}, {"011", -4},
                                                    {"100", 4},  {"101", 5},  {"111", 7}};
    for (const auto& [bits, difference] : patterns) {
        m_iPredictor = 0;
        Load(LumaDc(3) + bits + LumaAc(0, 0));
        EXPECT_TRUE(Decode());
        EXPECT_EQ(m_iPredictor, difference) << bits;
        ExpectOnly({{0, difference}});
    }
}

TEST_F(IctTile, EveryDifferenceOfEveryCategoryReachesThePredictor) {
    for (int category = 0; category <= 11; ++category) {
        const int magnitude = 1 << category;
        for (int pattern = 0; pattern < magnitude; ++pattern) {
            m_iPredictor = 10000;
            Load(LumaDc(static_cast<size_t>(category)) +
                 Bits(static_cast<uint64_t>(pattern), category) + LumaAc(0, 0));
            ASSERT_TRUE(Decode());
            // The upper half of the patterns are the values themselves, the lower half negative.
            const int difference = 2 * pattern >= magnitude ? pattern : pattern - magnitude + 1;
            ASSERT_EQ(m_iPredictor, 10000 + (category == 0 ? 0 : difference));
        }
    }
}

TEST_F(IctTile, ThePredictorRunsOnFromTileToTile) {
    Load(LumaDc(3) + "111" + LumaAc(0, 0) + LumaDc(2) + "00" + LumaAc(0, 0) + FlatLumaTile);
    for (const int expected : {7, 4, 4}) {
        EXPECT_TRUE(Decode());
        ExpectOnly({{0, expected}});
    }
}

TEST_F(IctTile, RunTwoSizeOneAfterDcGoesToTheThirdScanPosition) {
    m_Dequant[16] = 3000;
    Load(LumaDc(0) + LumaAc(2, 1) + "0" + LumaAc(0, 0));
    EXPECT_TRUE(Decode());
    ExpectOnly({{16, -3}}); // -3000 / 1024 is -2.93; scan position 3 is row 2, column 0
}

TEST_F(AcceleratedIctTile, RunTwoSizeOneAfterDcGoesToTheSlotOfTheThirdScanPosition) {
    const size_t slot = m_Decoder.GetReorderTable()[3];
    EXPECT_EQ(slot, 16u);
    m_Dequant[slot] = 3000;
    Load(LumaDc(0) + LumaAc(2, 1) + "0" + LumaAc(1, 2) + "11" + LumaAc(0, 0));
    EXPECT_TRUE(Decode());
    ExpectOnly({{16, -3}, {1, 3}}); // scan position 5 is row 0, column 2, stored in element 1
}

TEST_F(IctTile, ShiftsNegativeProductsTowardsMinusInfinity) {
    m_Dequant[0] = 1;
    m_Dequant[1] = 1;
    Load(LumaDc(1) + "0" + LumaAc(0, 1) + "0" + LumaAc(0, 0));
    EXPECT_TRUE(Decode());
    ExpectOnly({{0, -1}, {1, -1}});
}

TEST_F(IctTile, ALargeProductKeepsItsLow16BitsAfterTheShift) {
    m_Dequant[0] = 65536;
    m_Dequant[1] = 40000 * 1024 / 1023;
    Load(LumaDc(11) + Bits(2047, 11) + LumaAc(0, 10) + Bits(1023, 10) + LumaAc(0, 0));
    EXPECT_TRUE(Decode());
    // 2047 * 64 is 131008, two above 2 * 65536 - 66; 1023 * 40039 >> 10 is 39999.
    ExpectOnly({{0, 131008 - 131072}, {1, 39999 - 65536}});
}

TEST_F(IctTile, AProductWrapsAt32Bits) {
    m_iPredictor = 1 << 20;
    m_Dequant[0] = (1 << 12) + 1;
    Load(FlatLumaTile);
    EXPECT_TRUE(Decode());
    ExpectOnly({{0, 1 << 10}}); // of 2^32 + 2^20 the low 32 bits
}

TEST_F(IctTile, APredictorAtTheEndOfItsRangeWrapsAround) {
    m_iPredictor = std::numeric_limits<int>::max();
    m_Dequant[0] = 0;
    Load(LumaDc(1) + "1" + LumaAc(0, 0));
    EXPECT_TRUE(Decode());
    EXPECT_EQ(m_iPredictor, std::numeric_limits<int>::min());
}

TEST_F(IctTile, AZeroRunPassesSixteenPositionsAndWritesAZero) {
    Load(LumaDc(0) + LumaAc(0, 1) + "1" + LumaAc(15, 0) + LumaAc(0, 1) + "1" + LumaAc(0, 0));
    EXPECT_TRUE(Decode());
    ExpectOnly({{1, 1}, {static_cast<size_t>(model::ZigZag()[18]), 1}});
}

TEST_F(IctTile, TheCoefficientAtPosition63IsFollowedByAnEndOfBlock) {
    Load(LumaDc(0) + tests::Repeated(LumaAc(15, 0), 3) + LumaAc(14, 1) + "1" + LumaAc(0, 0) +
         FlatLumaTile);
    EXPECT_TRUE(Decode());
    ExpectOnly({{63, 1}});
    EXPECT_TRUE(Decode());
    ExpectOnly({});
}

TEST_F(IctTile, APositionPast63IsAStreamErrorAndTouchesNothingOutside) {
    for (size_t last = 0; last < 64; ++last) {
        // Up to position last in single steps, then every run that passes 63.
        std::string start = LumaDc(0);
        for (size_t k = 0; k < last; ++k)
            start += LumaAc(0, 1) + "1";
        for (size_t run = 0; run <= 15; ++run) {
            if (last + run + 1 <= 63)
                continue;
            Load(start + LumaAc(run, 10) + Bits(1023, 10) + LumaAc(0, 0));
            ASSERT_EQ(DecodeFailure(), "StreamError") << last << " + " << run;
            if (run == 15) {
                Load(start + LumaAc(15, 0) + LumaAc(0, 0));
                ASSERT_EQ(DecodeFailure(), "StreamError") << last;
            }
        }
    }
    EXPECT_TRUE(m_Coefficients.GuardsIntact());
}

TEST_F(IctTile, ARowOfZeroRunsIsAStreamErrorAtTheFourth) {
    Load(LumaDc(0) + tests::Repeated(LumaAc(15, 0), 17) + LumaAc(0, 0));
    EXPECT_EQ(DecodeFailure(), "StreamError");
    EXPECT_TRUE(m_Coefficients.GuardsIntact());
}

TEST_F(IctTile, AllOnesInAnAcCodeAreRun15Size10) {
    Load(LumaDc(0) + std::string(16, '1') + Bits(1, 10) + LumaAc(0, 0));
    EXPECT_TRUE(Decode());
    ExpectOnly({{static_cast<size_t>(model::ZigZag()[16]), 1 - 1023}});
}

TEST_F(IctTile, TheLastCodesMayPeekTwoBytesBehindTheEnd) {
    Load("00 1010 11"); // the peek of the end of block at bit 2 needs 18 bits
    EXPECT_TRUE(Decode());
    EXPECT_EQ(m_pStream->GetPaddingCount(), 2u);
}

TEST_F(IctTile, AThirdByteBehindTheEndIsAnError) {
    Load("00 0100 10"); // an AC code of size 3 and no end of block
    EXPECT_EQ(DecodeFailure(), "Stream has no more bytes!");
}

TEST_F(IctTile, ChromaTilesUseTheTablesTheyAreGiven) {
    Load(CodeOf(Codes::s_aDcChrominance, 11) + Bits(2047, 11) +
         CodeOf(Codes::s_aAcChrominance, 0x52) + "10" + CodeOf(Codes::s_aAcChrominance, 0));
    EXPECT_TRUE(Decode(ComponentCr));
    ExpectOnly({{0, 2047}, {static_cast<size_t>(model::ZigZag()[6]), 2}});
}

/// Random tiles against the model, with the multipliers of a quality level.
class RandomIctTile : public IctTile, public testing::WithParamInterface<bool> {
protected:
    RandomIctTile() : IctTile(GetParam()) {}
};

TEST_P(RandomIctTile, DecodesLikeTheModel) {
    tests::Random random;
    for (int run = 0; run < 3000; ++run) {
        const bool luma = random.OneIn(2);
        const int level = random.Between(0, 15);
        const model::TileTable multipliers =
            luma ? model::LumaDequantisation(level) : model::ChromaDequantisation(level);
        const auto& reorder = m_Decoder.GetReorderTable();
        for (size_t k = 0; k < 64; ++k)
            m_Dequant[reorder[k]] =
                static_cast<int>(multipliers[static_cast<size_t>(model::ZigZag()[k])]);
        m_iPredictor = random.Between(-40000, 40000);
        int64_t modelPredictor = m_iPredictor;

        Load(tests::RandomTile(random, luma) + "1100");
        model::ModelStream stream(m_Bytes, m_Bytes.size());
        model::ModelBits bits(stream);
        const model::TileTable expected = model::DecodeTile(
            bits,
            {luma ? &model::DcLuminance() : &model::DcChrominance(),
             luma ? &model::AcLuminance() : &model::AcChrominance(), &multipliers},
            modelPredictor);
        ASSERT_TRUE(Decode(luma ? ComponentY : ComponentCb));
        ASSERT_EQ(m_iPredictor, modelPredictor);
        for (size_t k = 0; k < 64; ++k)
            ASSERT_EQ(m_Coefficients[reorder[k]], expected[static_cast<size_t>(model::ZigZag()[k])])
                << "run " << run << ", scan position " << k;
    }
    EXPECT_TRUE(m_Coefficients.GuardsIntact());
}

INSTANTIATE_TEST_SUITE_P(, RandomIctTile, testing::Bool(), [](const auto& accelerated) {
    return accelerated.param ? "InTheAcceleratedOrder" : "InThePortableOrder";
});

} // namespace

} // namespace Vostrel::libimagedecoder
