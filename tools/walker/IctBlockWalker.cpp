#include "tools/walker/IctBlockWalker.h"

#include "libimagedecoder/HuffmanYCbCrDcAc.h"
#include "libimagedecoder/IctSyntax.h"
#include "libimagedecoder/ImageDecoderIct.h"

#include <span>
#include <vector>

namespace Vostrel::walker {

using libimagedecoder::HuffmanYCbCrDcAc;
using libimagedecoder::ImageDecoderIct;
using libimagedecoder::LumaTiles;
using libimagedecoder::TileCoefficients;

namespace {

constexpr unsigned PeekBits = 16;

using EncodeTable = std::span<const HuffmanYCbCrDcAc::HuffCodeEntry>;

std::string BitText(uint32_t bits, size_t count) {
    std::string text;
    while (count-- > 0)
        text += (bits >> count & 1) != 0 ? '1' : '0';
    return text;
}

int ReadValue(BitCursor& bits, unsigned size, const char* what) {
    if (size == 0)
        return 0;
    return libimagedecoder::ExtendIctValue(bits.Read(size, what), size);
}

} // namespace

/// The decode table of one code, with the encode table to tell patterns that have no symbol.
struct IctCode {
    explicit IctCode(EncodeTable encode) : m_encode(encode), m_vDecode(size_t{1} << PeekBits) {
        constexpr uint8_t Unfilled = 0xFF;
        for (auto& entry : m_vDecode)
            entry = {Unfilled, Unfilled, Unfilled, 0xFFFF};
        ImageDecoderIct::CreateHuffDecodeTableFromEncodeTable(m_vDecode, encode.data(),
                                                              encode.size());
    }

    /// Reads a code into the symbol's fields.
    void Read(BitCursor& bits, Symbol& symbol, const char* what) const {
        const uint32_t pattern = bits.Peek16(what);
        const auto& entry = m_vDecode[pattern];
        symbol.m_uiCodeBits = PeekBits - entry.stallCount;
        symbol.m_uiRun = entry.run;
        symbol.m_uiSize = entry.size;
        symbol.m_bits = {bits.GetPosition(), symbol.m_uiCodeBits};
        symbol.m_bUnassigned =
            m_encode[size_t{entry.run} << 4 | entry.size].m_uiCode != pattern >> entry.stallCount;
        bits.Pass(symbol.m_uiCodeBits);
    }

    EncodeTable m_encode;
    std::vector<ImageDecoderIct::huff_entry_t> m_vDecode;
};

namespace {

struct IctCodes {
    IctCode m_dcLuminance{HuffmanYCbCrDcAc::s_aDcLuminance};
    IctCode m_acLuminance{HuffmanYCbCrDcAc::s_aAcLuminance};
    IctCode m_dcChrominance{HuffmanYCbCrDcAc::s_aDcChrominance};
    IctCode m_acChrominance{HuffmanYCbCrDcAc::s_aAcChrominance};
};

const IctCodes& Codes() {
    static const IctCodes codes;
    return codes;
}

} // namespace

IctBlockWalker::IctBlockWalker(const WalkFormat& format)
    : m_uiChromaTiles(LumaTiles / ChromaDivX(format.m_chroma) / ChromaDivY(format.m_chroma)) {}

void IctBlockWalker::Walk(BitCursor& bits, IStreamVisitor& visitor) {
    const IctCodes& codes = Codes();
    size_t index = 0;
    const auto walkArea = [&](libimagedecoder::IctComponent component, size_t tiles,
                              const IctCode& dc, const IctCode& ac) {
        for (; tiles > 0; --tiles) {
            BeginTile(index++, component, bits);
            WalkTile(dc, ac, bits, visitor);
            EndTile(bits, visitor);
        }
    };
    walkArea(libimagedecoder::ComponentY, LumaTiles, codes.m_dcLuminance, codes.m_acLuminance);
    for (const auto chroma : {libimagedecoder::ComponentCb, libimagedecoder::ComponentCr})
        walkArea(chroma, m_uiChromaTiles, codes.m_dcChrominance, codes.m_acChrominance);
}

void IctBlockWalker::WalkTile(const IctCode& dc, const IctCode& ac, BitCursor& bits,
                              IStreamVisitor& visitor) {
    Tell(visitor, WalkDc(dc, bits));
    for (size_t position = 0;;) {
        const Symbol symbol = WalkAc(ac, position, bits);
        Tell(visitor, symbol);
        if (symbol.m_kind == SymbolKind::EndOfTile)
            return;
        position = symbol.m_uiPosition;
    }
}

Symbol IctBlockWalker::WalkDc(const IctCode& dc, BitCursor& bits) {
    Symbol symbol;
    symbol.m_kind = SymbolKind::DcDifference;
    dc.Read(bits, symbol, "a DC code");
    if (symbol.m_uiSize == libimagedecoder::IctAbortMarker)
        throw WalkError(symbol.m_bits.m_uiFirst, bits.GetPosition(), "a DC code of size 0 to 11",
                        symbol.m_bUnassigned ? "1111111111, which aborts the update"
                                             : "1111111110, the marker that aborts an update",
                        StreamErrorText);
    symbol.m_iValue = ReadValue(bits, symbol.m_uiSize, "the bits of a DC difference");
    symbol.m_bits.m_uiCount += symbol.m_uiSize;
    return symbol;
}

/// position is that of the coefficient before.
Symbol IctBlockWalker::WalkAc(const IctCode& ac, size_t position, BitCursor& bits) {
    Symbol symbol;
    ac.Read(bits, symbol, "an AC code");
    symbol.m_uiPosition = position;
    if (symbol.m_uiRun == 0 && symbol.m_uiSize == 0)
        return symbol;
    symbol.m_kind = symbol.m_uiSize == 0 ? SymbolKind::ZeroRun : SymbolKind::Coefficient;
    const size_t codeEnd = bits.GetPosition();
    const uint32_t code = ac.m_encode[symbol.m_uiRun << 4 | symbol.m_uiSize].m_uiCode;
    symbol.m_iValue = ReadValue(bits, symbol.m_uiSize, "the bits of a coefficient");
    symbol.m_bits.m_uiCount += symbol.m_uiSize;
    symbol.m_uiPosition += symbol.m_uiRun + 1;
    if (symbol.m_uiPosition < TileCoefficients)
        return symbol;

    const size_t room = TileCoefficients - 1 - position;
    throw WalkError(symbol.m_bits.m_uiFirst, codeEnd,
                    room == 0 ? "an end of tile"
                              : "an end of tile or a run of at most " + std::to_string(room - 1),
                    BitText(code, symbol.m_uiCodeBits) + ": run " + std::to_string(symbol.m_uiRun) +
                        ", size " + std::to_string(symbol.m_uiSize),
                    StreamErrorText);
}

} // namespace Vostrel::walker
