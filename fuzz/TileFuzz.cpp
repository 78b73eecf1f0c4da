// Tiles of any bits, decoded one after the other until the bits fail, against the plain model's.

#include "fuzz/FuzzInput.h"
#include "fuzz/GuardedPages.h"
#include "fuzz/Kernels.h"
#include "fuzz/SilentLogger.h"
#include "libimagedecoder/ImageDecoderException.h"
#include "libimagedecoder/ImageDecoderIct.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "tests/model/ModelTile.h"
#include "tests/support/PiecewiseStreambuffer.h"

#include <array>
#include <memory>
#include <string>

namespace Vostrel::fuzz {
namespace {

using namespace libimagedecoder;
using model::TileTable;

constexpr size_t Coefficients = 64;

/// A decoder of one kernel variant, for its code tables and its order of coefficients.
struct TileDecoder {
    explicit TileDecoder(unsigned variant)
        : renderer(MakeConverter(variant, &logger)), transform(MakeTransform(variant, &logger)),
          decoder(&renderer, &stream, &logger, 0, 1, 0, transform) {}

    static TileDecoder& For(unsigned variant) {
        static std::array<std::unique_ptr<TileDecoder>, KernelVariants> decoders;
        if (!decoders[variant])
            decoders[variant] = std::make_unique<TileDecoder>(variant);
        return *decoders[variant];
    }

    SilentLogger logger;
    tests::PiecewiseStreambuffer stream{&logger};
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

class TileRun {
public:
    explicit TileRun(FuzzInput& input)
        : m_Decoder(TileDecoder::For(input.Below(KernelVariants))), m_bLuma(input.Coin()),
          m_Multipliers(Multipliers(input, m_bLuma)),
          m_iPredictor(static_cast<int>(input.DoubleWord())), m_iModelPredictor(m_iPredictor),
          m_Flush(FlushOf(input.Coin())), m_uiPiece(1 + input.Below(16)),
          m_uiSkippedBits(input.Below(8)), m_vBytes(input.Rest()),
          m_ModelStream(m_vBytes, m_uiPiece) {
        const unsigned char* const permutation = m_Decoder.transform->GetTileIndexPermutation();
        for (size_t i = 0; i < Coefficients; ++i) {
            m_auiSlots[i] = permutation[i];
            m_aiDequant[permutation[i]] = static_cast<int>(m_Multipliers[i]);
        }
        m_Decoder.stream.Load(m_vBytes, m_uiPiece);
    }

    void Run() {
        if (m_uiSkippedBits > 0 && !m_vBytes.empty()) {
            m_Reader.ReadStreamBits(m_uiSkippedBits);
            m_Model.Read(static_cast<int>(m_uiSkippedBits));
        }
        for (int tiles = 0; tiles < 16; ++tiles) {
            if (!CompareTile())
                return;
        }
    }

private:
    /// False when the tile failed, as it does for the model.
    bool CompareTile() {
        std::string expected;
        TileTable table{};
        try {
            table = model::DecodeTile(m_Model,
                                      {m_bLuma ? &model::DcLuminance() : &model::DcChrominance(),
                                       m_bLuma ? &model::AcLuminance() : &model::AcChrominance(),
                                       &m_Multipliers},
                                      m_iModelPredictor);
        } catch (const model::ModelError& error) {
            expected = error.what();
        }
        static GuardedPages pages(Coefficients * sizeof(short));
        const auto memory = pages.Place(Coefficients * sizeof(short), m_Flush, 0x5A);
        const auto coefficients = reinterpret_cast<short*>(memory.data());
        Check(DecodeInto(coefficients) == expected, "a tile fails otherwise than the model's");
        Check(pages.Intact(), "bytes beside the coefficients are overwritten");
        Check(m_iPredictor == m_iModelPredictor, "another predictor");
        CompareReader();
        if (!expected.empty())
            return false;
        for (size_t i = 0; i < Coefficients; ++i)
            Check(coefficients[m_auiSlots[i]] == table[i], "another coefficient");
        return true;
    }

    /// The failure's text; the abort marker has that of a bad tile.
    std::string DecodeInto(short* coefficients) {
        const IctComponent component = m_bLuma ? ComponentY : ComponentCb;
        try {
            const bool decoded = m_Decoder.decoder.HuffmannDecodeReorderDequantTile(
                &m_Reader, coefficients, &m_iPredictor, m_aiDequant.data(),
                m_Decoder.decoder.GetDcTable(component).data(),
                m_Decoder.decoder.GetAcTable(component).data());
            return decoded ? "" : "StreamError";
        } catch (const ImageDecoderException& exception) {
            return exception.what();
        }
    }

    void CompareReader() {
        Check(m_Reader.GetState().HeldBits() == static_cast<uint32_t>(m_Model.HeldBits()),
              "another number of bits in hand");
        Check(m_Decoder.stream.GetConsumedBytes() == m_ModelStream.Consumed(),
              "another count of consumed bytes");
    }

    TileDecoder& m_Decoder;
    bool m_bLuma;
    TileTable m_Multipliers;
    int m_iPredictor;
    int64_t m_iModelPredictor;
    GuardedPages::Flush m_Flush;
    size_t m_uiPiece;
    uint32_t m_uiSkippedBits;
    std::vector<uint8_t> m_vBytes;
    model::ModelStream m_ModelStream;
    model::ModelBits m_Model{m_ModelStream};
    BitStreamReader m_Reader{&m_Decoder.stream, {}};
    std::array<size_t, Coefficients> m_auiSlots{};
    std::array<int, Coefficients> m_aiDequant{};
};

} // namespace
} // namespace Vostrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace Vostrel::fuzz;
    FuzzInput input(data, size);
    TileRun(input).Run();
    return 0;
}
