#include "libimagedecoder/ImageDecoderIct.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "libimagedecoder/InverseTransform/InverseIctFactory.h"
#include "tests/libimagedecoder/KernelTables.h"
#include "tests/model/ModelTables.h"
#include "tests/support/PiecewiseStreambuffer.h"
#include "tests/support/RecordingLogger.h"
#include "tests/support/TestBits.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace Vostrel::libimagedecoder {

namespace {

using InverseTransform::InverseIct::IInverseIct;
using InverseTransform::InverseIct::InverseIctFactory;
using Table = std::vector<ImageDecoderIct::huff_entry_t>;

/// A transform that transforms nothing and counts how often its norms are asked for.
class CountingTransform : public IInverseIct {
public:
    using IInverseIct::IInverseIct;
    void TransformTile(short*, unsigned char*, unsigned long) override {}
    bool IsAccelerated() const override { return false; }
    const unsigned char* GetTileIndexPermutation() const override { return m_Permutation.data(); }
    const double* GetNormalizationFactors() const override {
        ++m_iNormsAsked;
        return IInverseIct::GetNormalizationFactors();
    }
    std::uint16_t GetDataAlignmentBytes() const override { return 8; }

    std::array<unsigned char, 64> m_Permutation{};
    mutable int m_iNormsAsked = 0;
};

class IctTables : public testing::Test {
protected:
    void CreatePortable() { Create(InverseIctFactory::CreateInverseIct(&m_Logger, false)); }

    void Create(std::shared_ptr<IInverseIct> transform) {
        m_pDecoder = std::make_unique<ImageDecoderIct>(&m_Renderer, &m_Stream, &m_Logger, 0, 1, 0,
                                                       std::move(transform));
    }

    /// An update that codes nothing.
    void Update(unsigned quality) {
        m_Stream.Load(tests::BytesOf(tests::EndOfUpdate(1)), 16);
        m_pDecoder->HandleUpdate(quality, 0, 0, 0, 0, 0);
    }

    tests::RecordingLogger m_Logger;
    tests::PiecewiseStreambuffer m_Stream{&m_Logger};
    ImageDecoderRenderer m_Renderer{&m_Logger};
    std::unique_ptr<ImageDecoderIct> m_pDecoder;
};

void ExpectEntry(const Table& table, const std::string& indexBits, int size, int run,
                 int stallCount) {
    const size_t index = std::stoul(indexBits, nullptr, 2);
    SCOPED_TRACE(indexBits);
    EXPECT_EQ(table.at(index).size, size);
    EXPECT_EQ(table.at(index).run, run);
    EXPECT_EQ(table.at(index).stallCount, stallCount);
    EXPECT_EQ(table.at(index).stallBits, index & ((1u << stallCount) - 1));
}

/// Every 16-bit index whose first bits are a prefix.
void ExpectPrefix(const Table& table, const std::string& prefix, int size, int run) {
    const int rest = 16 - static_cast<int>(prefix.size());
    for (uint64_t bits = 0; bits < uint64_t{1} << rest; ++bits)
        ExpectEntry(table, prefix + tests::Bits(bits, rest), size, run, rest);
}

/// Decodes every index with a decoder that searches its codes one by one.
void ExpectDecodesLike(const Table& table, const model::HuffmanTable& codes) {
    ASSERT_EQ(table.size(), 65536u);
    for (unsigned index = 0; index < 65536; ++index) {
        model::ModelStream stream(tests::BytesOf(tests::Bits(index, 16)), 2);
        model::ModelBits bits(stream);
        const int symbol = codes.Decode(bits);
        const int left = bits.HeldBits();
        ASSERT_EQ(table[index].size, symbol % 16) << index;
        ASSERT_EQ(table[index].run, symbol / 16) << index;
        ASSERT_EQ(table[index].stallCount, left) << index;
        ASSERT_EQ(table[index].stallBits, left > 0 ? static_cast<unsigned>(bits.Read(left)) : 0)
            << index;
    }
}

TEST_F(IctTables, EveryIndexDecodesToTheCodeThatItStartsWith) {
    CreatePortable();
    ExpectDecodesLike(m_pDecoder->GetDcTable(ComponentY), model::DcLuminance());
    ExpectDecodesLike(m_pDecoder->GetAcTable(ComponentY), model::AcLuminance());
    ExpectDecodesLike(m_pDecoder->GetDcTable(ComponentCb), model::DcChrominance());
    ExpectDecodesLike(m_pDecoder->GetAcTable(ComponentCr), model::AcChrominance());
}

TEST_F(IctTables, TheAbortMarkerDecodesToSizeTwelveWithSixBitsLeft) {
    CreatePortable();
    ExpectPrefix(m_pDecoder->GetDcTable(ComponentY), "1111111110", 12, 0);
}

TEST_F(IctTables, AllOnesDecodeAsTheLastCode) {
    CreatePortable();
    const std::string ones(16, '1');
    ExpectEntry(m_pDecoder->GetDcTable(ComponentY), ones, 12, 0, 6);
    ExpectEntry(m_pDecoder->GetAcTable(ComponentY), ones, 10, 15, 0);
    ExpectEntry(m_pDecoder->GetDcTable(ComponentCb), ones, 11, 0, 5);
    ExpectEntry(m_pDecoder->GetAcTable(ComponentCb), ones, 10, 15, 0);
}

TEST_F(IctTables, EndOfBlockAndZeroRunDecodeInTheLuminanceTable) {
    CreatePortable();
    ExpectPrefix(m_pDecoder->GetAcTable(ComponentY), "1010", 0, 0);
    ExpectPrefix(m_pDecoder->GetAcTable(ComponentY), "11111111001", 0, 15);
}

TEST_F(IctTables, BothChromaComponentsShareTheirTables) {
    CreatePortable();
    EXPECT_EQ(&m_pDecoder->GetDcTable(ComponentCb), &m_pDecoder->GetDcTable(ComponentCr));
    EXPECT_EQ(&m_pDecoder->GetAcTable(ComponentCb), &m_pDecoder->GetAcTable(ComponentCr));
    EXPECT_NE(&m_pDecoder->GetDcTable(ComponentCb), &m_pDecoder->GetDcTable(ComponentY));
}

TEST(CreateHuffDecodeTable, IndexesOutsideTheCodesTakeAllBitsBelowAndTheLastCodeAbove) {
    // Two codes, 01 for symbol 0x21 and 10 for symbol 3; symbols 0 to 2 have none.
    std::vector<HuffmanYCbCrDcAc::HuffCodeEntry> codes(0x22);
    codes[0x21] = {2, 0b01};
    codes[3] = {2, 0b10};
    Table table(65536, {0xFF, 0xFF, 0xFF, 0xFFFF});
    ImageDecoderIct::CreateHuffDecodeTableFromEncodeTable(table, codes.data(), codes.size());
    ExpectEntry(table, "0000000000000000", 0, 0, 0);
    ExpectEntry(table, "0011111111111111", 0, 0, 0);
    ExpectPrefix(table, "01", 1, 2);
    ExpectPrefix(table, "10", 3, 0);
    ExpectEntry(table, "1100000000000001", 3, 0, 14);
    ExpectEntry(table, "1111111111111111", 3, 0, 14);
}

TEST(CreateHuffDecodeTable, ASymbolWithSizeFifteenAndRunFifteenIsAFilledEntry) {
    std::vector<HuffmanYCbCrDcAc::HuffCodeEntry> codes(256);
    codes[0xFF] = {1, 0};
    codes[0x00] = {16, 0xFFFF};
    Table table(65536, {0xFF, 0xFF, 0xFF, 0xFFFF});
    ImageDecoderIct::CreateHuffDecodeTableFromEncodeTable(table, codes.data(), codes.size());
    ExpectEntry(table, "0111111111111111", 15, 15, 15);
    ExpectEntry(table, "1111111111111110", 15, 15, 15);
    ExpectEntry(table, "1111111111111111", 0, 0, 0);
}

TEST_F(IctTables, ThePortableReorderTableIsTheZigZag) {
    CreatePortable();
    for (size_t k = 0; k < 64; ++k)
        EXPECT_EQ(m_pDecoder->GetReorderTable()[k], model::ZigZag()[k]);
}

TEST_F(IctTables, TheAcceleratedReorderTableMovesEvenColumnsFirst) {
    constexpr int Column[8] = {0, 4, 1, 5, 2, 6, 3, 7};
    for (const auto& variant : RunnableVariants(InverseIctFactory::GetVariants())) {
        if (IsPortable(variant))
            continue;
        Create(variant.m_pMake(&m_Logger));
        for (size_t k = 0; k < 64; ++k) {
            const int position = model::ZigZag()[k];
            EXPECT_EQ(m_pDecoder->GetReorderTable()[k], position / 8 * 8 + Column[position % 8]);
        }
    }
}

TEST(DequantisationValue, WorkedExampleOfLevelNine) {
    EXPECT_EQ(ImageDecoderIct::CalcDequantDenormDescaleTableValue(16, 0.7, 0, 10, 1.0), 11476);
}

TEST(DequantisationValue, AReciprocalOfOneIsJustBelowIt) {
    // 8192 / 8191 in 16-bit fixed point is 65544.001.
    EXPECT_EQ(ImageDecoderIct::CalcDequantDenormDescaleTableValue(10, 0.1, 0, 16, 1.0), 65544);
    // 8192 / (8191 >> 1) is 2.000488...
    EXPECT_EQ(ImageDecoderIct::CalcDequantDenormDescaleTableValue(10, 0.1, 1, 16, 1.0), 131104);
}

TEST(DequantisationValue, TheShiftDropsBitsOfTheReciprocal) {
    // 8192 / (11 * 0.7) rounds to 1064, 1064 >> 3 is 133; 8192 / 133 * 1024 is 63072.2
    EXPECT_EQ(ImageDecoderIct::CalcDequantDenormDescaleTableValue(11, 0.7, 3, 10, 1.0), 63072);
}

TEST(DequantisationValue, IsRoundedToTheNearest) {
    EXPECT_EQ(ImageDecoderIct::CalcDequantDenormDescaleTableValue(16, 1.0, 0, 0, 0.12), 2);
    EXPECT_EQ(ImageDecoderIct::CalcDequantDenormDescaleTableValue(16, 1.0, 0, 0, 0.09), 1);
}

TEST_F(IctTables, DequantisationTablesOfEveryLevelAreThoseOfTheModel) {
    for (const auto& variant : RunnableVariants(InverseIctFactory::GetVariants())) {
        Create(variant.m_pMake(&m_Logger));
        for (unsigned level = 0; level < 16; ++level) {
            Update(level);
            const model::TileTable luma = model::LumaDequantisation(static_cast<int>(level));
            const model::TileTable chroma = model::ChromaDequantisation(static_cast<int>(level));
            for (size_t k = 0; k < 64; ++k) {
                const size_t slot = m_pDecoder->GetReorderTable()[k];
                const auto position = static_cast<size_t>(model::ZigZag()[k]);
                EXPECT_EQ(m_pDecoder->GetDequantTable(ComponentY)[slot], luma[position]);
                EXPECT_EQ(m_pDecoder->GetDequantTable(ComponentCb)[slot], chroma[position]);
                EXPECT_EQ(m_pDecoder->GetDequantTable(ComponentCr)[slot], chroma[position]);
            }
        }
    }
}

TEST_F(IctTables, OnlyAChangeOfTheLevelRebuildsTheDequantisationTables) {
    const auto transform = std::make_shared<CountingTransform>(&m_Logger);
    Create(transform);
    EXPECT_EQ(transform->m_iNormsAsked, 0);
    Update(0);
    const int once = transform->m_iNormsAsked;
    EXPECT_GT(once, 0) << "the first update builds them, at any level";
    Update(0);
    Update(0x10);
    EXPECT_EQ(transform->m_iNormsAsked, once);
    Update(1);
    EXPECT_EQ(transform->m_iNormsAsked, 2 * once);
    Update(0xFFFFFFF1);
    EXPECT_EQ(transform->m_iNormsAsked, 2 * once);
    Update(0);
    EXPECT_EQ(transform->m_iNormsAsked, 3 * once);
}

TEST_F(IctTables, BothTablesFollowAChangeOfTheLevel) {
    CreatePortable();
    Update(3);
    const auto luma = m_pDecoder->GetDequantTable(ComponentY);
    const auto chroma = m_pDecoder->GetDequantTable(ComponentCb);
    Update(4);
    EXPECT_NE(m_pDecoder->GetDequantTable(ComponentY), luma);
    EXPECT_NE(m_pDecoder->GetDequantTable(ComponentCb), chroma);
    Update(3);
    EXPECT_EQ(m_pDecoder->GetDequantTable(ComponentY), luma);
    EXPECT_EQ(m_pDecoder->GetDequantTable(ComponentCb), chroma);
}

TEST_F(IctTables, Quality0x25UsesLevelFive) {
    CreatePortable();
    Update(0x25);
    EXPECT_EQ(m_pDecoder->GetDequantTable(ComponentY)[0], model::LumaDequantisation(5)[0]);
    EXPECT_EQ(m_pDecoder->GetDequantTable(ComponentCb)[63], model::ChromaDequantisation(5)[63]);
}

} // namespace

} // namespace Vostrel::libimagedecoder
