// Tiles of any bits, decoded one after the other until the bits fail, by the plain tile decoder and
// on the fast road with its cursor; both against the model's, and the cursor's reader against the
// plain one's.

#include "fuzz/DecodingRoad.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/GuardedPages.h"
#include "fuzz/Kernels.h"
#include "fuzz/SilentLogger.h"
#include "fuzz/TileCursorUnderTest.h"
#include "libimagedecoder/ImageDecoderException.h"
#include "libimagedecoder/ImageDecoderIct.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "tests/model/ModelTile.h"

#include <array>
#include <memory>
#include <vector>

namespace Vostrel::fuzz {
namespace {

using namespace libimagedecoder;
using model::TileTable;

/// A decoder of one kernel variant, for its code tables and its order of coefficients.
struct TileDecoder {
    explicit TileDecoder(unsigned variant)
        : renderer(MakeConverter(variant, &logger)), transform(MakeTransform(variant, &logger)),
          decoder(&renderer, &stream, &logger, 0, 1, 0, transform) {}

    static TileDecoder& For(unsigned variant) {
        static std::vector<std::unique_ptr<TileDecoder>> decoders(KernelVariants());
        if (!decoders[variant])
            decoders[variant] = std::make_unique<TileDecoder>(variant);
        return *decoders[variant];
    }

    SilentLogger logger;
    GuardedStreambuffer stream{&logger};
    GuardedStreambuffer cursorStream{&logger};
    ImageDecoderRenderer renderer;
    std::shared_ptr<InverseTransform::InverseIct::IInverseIct> transform;
    ImageDecoderIct decoder;
};

/// Multipliers in row-major order: those of a quality level, or any.
TileTable Multipliers(FuzzInput& input, bool luma) {
    const unsigned choice = input.Byte();
    if (choice < 240) {
        static const auto tables = [] {
            std::array<std::array<TileTable, 16>, 2> all;
            for (size_t level = 0; level < 16; ++level)
                all[0][level] = model::ChromaDequantisation(static_cast<int>(level)),
                all[1][level] = model::LumaDequantisation(static_cast<int>(level));
            return all;
        }();
        return tables[luma ? 1 : 0][choice % 16];
    }
    Spread any(input.Take(8));
    TileTable table{};
    for (int64_t& multiplier : table)
        multiplier = static_cast<int32_t>(uint32_t{any.Next()} << (choice % 16 + 9) | any.Next());
    return table;
}

/// A road with the DC predictor of its tiles.
struct TileRoad : DecodingRoad {
    TileRoad(GuardedStreambuffer& itsStream, int64_t itsPredictor)
        : DecodingRoad(itsStream), predictor(static_cast<int>(itsPredictor)) {}

    int predictor;
};

/// What the model makes of a tile.
struct ModelledTile {
    TileTable coefficients{};
    Failure failure = Failure::None;
};

class TileRun {
public:
    explicit TileRun(FuzzInput& input)
        : m_Decoder(TileDecoder::For(input.Below(KernelVariants()))), m_bLuma(input.Coin()),
          m_Multipliers(Multipliers(input, m_bLuma)),
          m_iModelPredictor(static_cast<int>(input.DoubleWord())), m_uiChoices(input.Byte()),
          m_uiPiece(PieceOf(input.Byte())), m_uiSkippedBits(input.Below(8)), m_Bytes(input.Rest()),
          m_ModelStream({m_Bytes.begin(), m_Bytes.end()}, m_uiPiece) {
        const unsigned char* const permutation = m_Decoder.transform->GetTileIndexPermutation();
        for (size_t i = 0; i < TileCoefficients; ++i) {
            m_auiSlots[i] = permutation[IctCodingTables::s_aZigZagTile[i]];
            m_aiDequant[permutation[i]] = static_cast<int>(m_Multipliers[i]);
        }
        m_Tables = TileCursorUnderTest::Tables(m_Decoder.decoder, m_bLuma, m_auiSlots, m_aiDequant);
        m_Decoder.stream.Load(m_Bytes, m_uiPiece);
        m_Decoder.cursorStream.Load(m_Bytes, m_uiPiece);
    }

    void Run() {
        if (m_uiSkippedBits > 0 && !m_Bytes.empty()) {
            m_Plain.reader.ReadStreamBits(m_uiSkippedBits);
            m_Fast.reader.ReadStreamBits(m_uiSkippedBits);
            m_Model.Read(static_cast<int>(m_uiSkippedBits));
        }
        for (unsigned tile = 0; tile < 16; ++tile) {
            const Milestone start(m_Plain);
            const ModelledTile expected = DecodeByModel();
            ComparePlainRoad(m_Plain, expected);
            CompareModelReader();
            CompareFastRoad(start, expected, (m_uiChoices >> (1 + tile % 7) & 1) != 0);
            if (expected.failure != Failure::None)
                return;
        }
        m_Cursor.GiveBack();
        Check(Milestone(m_Fast) == Milestone(m_Plain), "the cursor ends elsewhere");
    }

private:
    ModelledTile DecodeByModel() {
        try {
            return {model::DecodeTile(m_Model,
                                      {m_bLuma ? &model::DcLuminance() : &model::DcChrominance(),
                                       m_bLuma ? &model::AcLuminance() : &model::AcChrominance(),
                                       &m_Multipliers},
                                      m_iModelPredictor)};
        } catch (const model::ModelError& error) {
            return {{}, FailureOf(error.what())};
        }
    }

    void ComparePlainRoad(TileRoad& road, const ModelledTile& expected) {
        const auto coefficients = Place();
        Check(Decode(road, coefficients.data()) == expected.failure,
              "a tile fails otherwise than the model's");
        CheckAround();
        Check(road.predictor == m_iModelPredictor, "another predictor");
        if (expected.failure == Failure::None)
            CompareCoefficients(coefficients, expected.coefficients);
    }

    /// start: where the plain road stood before the tile.
    void CompareFastRoad(const Milestone& start, const ModelledTile& expected, bool giveBack) {
        using Outcome = TileCursorUnderTest::Outcome;
        const auto coefficients = Place();
        const int predictor = m_Fast.predictor;
        const Outcome outcome = m_Cursor.Decode(m_Tables, m_Fast.predictor, coefficients.data());
        CheckAround();
        if (outcome == Outcome::Declined) {
            Check(Milestone(m_Fast) == start && m_Fast.predictor == predictor,
                  "a declined tile leaves something behind");
            // Where the plain road failed from the same state it would only fail again.
            if (expected.failure != Failure::None)
                return;
            ComparePlainRoad(m_Fast, expected);
        } else {
            Check(expected.failure == Failure::None, "the cursor takes a bad tile");
            Check(m_Fast.predictor == m_iModelPredictor, "another predictor of the cursor's");
            // Of a flat tile only the first coefficient is written, the others count as zero.
            if (outcome == Outcome::Flat)
                std::ranges::fill(coefficients.subspan(1), int16_t{0});
            CompareCoefficients(coefficients, expected.coefficients);
        }
        if (giveBack)
            m_Cursor.GiveBack();
        if (giveBack || outcome == Outcome::Declined)
            Check(Milestone(m_Fast) == Milestone(m_Plain), "the cursor's reader stands elsewhere");
    }

    Failure Decode(TileRoad& road, int16_t* coefficients) {
        try {
            const bool decoded = m_Decoder.decoder.HuffmannDecodeReorderDequantTile(
                &road.reader, coefficients, &road.predictor, m_aiDequant.data(), m_Tables.m_pDc,
                m_Tables.m_pAc);
            // The abort marker fails an update as a bad tile does.
            return decoded ? Failure::None : Failure::StreamError;
        } catch (const ImageDecoderException& exception) {
            return FailureOf(exception.what());
        }
    }

    void CompareModelReader() {
        Check(m_Plain.reader.GetState().HeldBits() == static_cast<uint32_t>(m_Model.HeldBits()),
              "another number of bits in hand");
        Check(m_Plain.stream.GetConsumedBytes() == m_ModelStream.Consumed(),
              "another count of consumed bytes");
    }

    void CompareCoefficients(std::span<const int16_t> actual, const TileTable& expected) {
        for (size_t i = 0; i < TileCoefficients; ++i)
            Check(actual[m_auiSlots[i]] ==
                      expected[static_cast<size_t>(IctCodingTables::s_aZigZagTile[i])],
                  "another coefficient");
    }

    static GuardedPages& Pages() {
        static GuardedPages pages(TileCoefficients * sizeof(int16_t));
        return pages;
    }
    std::span<int16_t> Place() {
        const auto memory = Pages().Place(TileCoefficients * sizeof(int16_t),
                                          FlushOf((m_uiChoices & 1) != 0), 0x5A);
        return {reinterpret_cast<int16_t*>(memory.data()), TileCoefficients};
    }
    static void CheckAround() {
        Check(Pages().Intact(), "bytes beside the coefficients are overwritten");
    }

    TileDecoder& m_Decoder;
    bool m_bLuma;
    TileTable m_Multipliers;
    int64_t m_iModelPredictor;
    uint8_t m_uiChoices; ///< at which end the coefficients are guarded, when the reader is current
    size_t m_uiPiece;
    uint32_t m_uiSkippedBits;
    std::span<const uint8_t> m_Bytes;
    model::ModelStream m_ModelStream;
    model::ModelBits m_Model{m_ModelStream};
    TileRoad m_Plain{m_Decoder.stream, m_iModelPredictor};
    TileRoad m_Fast{m_Decoder.cursorStream, m_iModelPredictor};
    TileCursorUnderTest m_Cursor{m_Fast.reader};
    IctTileTables m_Tables{};
    std::array<uint8_t, TileCoefficients> m_auiSlots{};
    std::array<int, TileCoefficients> m_aiDequant{};
};

} // namespace
} // namespace Vostrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace Vostrel::fuzz;
    FuzzInput input(data, size);
    TileRun(input).Run();
    return 0;
}
