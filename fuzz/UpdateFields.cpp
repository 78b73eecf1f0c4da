#include "fuzz/UpdateFields.h"

#include "libimagedecoder/HuffmanYCbCrDcAc.h"
#include "libimagedecoder/LbeQuality.h"
#include "libimagedecoder/LbeSyntax.h"
#include "libimagedecoder/Macroblock.h"
#include "libimagedecoder/UpdateSyntax.h"

#include <span>

namespace Vostrel::fuzz {
namespace {

using Kind = BitField::Kind;
using Codes = libimagedecoder::HuffmanYCbCrDcAc;
using namespace libimagedecoder;

struct OutOfBits {};

const RecordLengthCode& LengthCodeOf(const UpdateCoding& coding) {
    const UpdateRules& rules = RulesOf(coding.version);
    return coding.lbe ? rules.m_LbeLength : rules.m_IctLength;
}

/// The number in a length field.
uint32_t NumberIn(const BitField& field, const RecordLengthCode& code) {
    return field.value & ((1u << (field.bits - code.PrefixBits())) - 1);
}

class Parser {
public:
    Parser(std::span<const uint8_t> bytes, const UpdateCoding& coding)
        : m_Bytes(bytes), m_Coding(coding), m_Rules(RulesOf(coding.version)),
          m_Length(LengthCodeOf(coding)) {}

    BitFields Run() {
        try {
            while (ParseRecord())
                ;
        } catch (const OutOfBits&) {
        }
        while (m_uiNext < 8 * m_Bytes.size())
            Take(Kind::Tail, static_cast<unsigned>(8 - m_uiNext % 8));
        return m_Fields;
    }

private:
    /// The next bits, 0 to 24, with zeros after the end.
    uint32_t Peek(unsigned bits) const {
        uint32_t word = 0;
        for (size_t byte = m_uiNext / 8; byte < m_uiNext / 8 + 4; ++byte)
            word = word << 8 | (byte < m_Bytes.size() ? m_Bytes[byte] : 0u);
        return static_cast<uint32_t>(uint64_t{word << m_uiNext % 8} >> (32 - bits));
    }

    uint32_t Take(Kind kind, unsigned bits) {
        if (m_uiNext + bits > 8 * m_Bytes.size())
            throw OutOfBits();
        m_Fields.push_back({kind, Peek(bits), bits});
        m_uiNext += bits;
        return m_Fields.back().value;
    }

    /// False after the end marker.
    bool ParseRecord() {
        const size_t start = m_uiNext;
        if (Take(Kind::Skip, SkipBits()) == (4u << m_Rules.m_uiLongSkipBits) - 1)
            return false;
        const uint32_t length = m_Length.IsThere() ? ParseLength() : 0;
        m_Coding.lbe ? ParseBlock() : ParseMacroblock();
        if (m_Coding.pool && length > 0)
            while (m_uiNext < start + 8 * length)
                Take(Kind::Padding, static_cast<unsigned>(8 - m_uiNext % 8));
        return true;
    }

    unsigned SkipBits() const {
        if (Peek(1) == 0)
            return 1;
        return SkipPrefixBits +
               (Peek(SkipPrefixBits) == ShortSkipPrefix ? ShortSkipBits : m_Rules.m_uiLongSkipBits);
    }

    uint32_t ParseLength() {
        const bool isLong = m_Length.HasTwoForms() && Peek(1) != 0;
        Take(Kind::Length,
             m_Length.PrefixBits() + (isLong ? m_Length.m_uiLongBits : m_Length.m_uiShortBits));
        return NumberIn(m_Fields.back(), m_Length);
    }

    void ParseMacroblock() {
        for (int tile = 0; tile < 4; ++tile)
            ParseTile(Kind::DcLuma, Codes::s_aDcLuminance, Kind::AcLuma, Codes::s_aAcLuminance);
        for (int tile = 0; tile < 2 << m_Coding.chroma; ++tile)
            ParseTile(Kind::DcChroma, Codes::s_aDcChrominance, Kind::AcChroma,
                      Codes::s_aAcChrominance);
    }

    void ParseTile(Kind dc, std::span<const Codes::HuffCodeEntry> dcCodes, Kind ac,
                   std::span<const Codes::HuffCodeEntry> acCodes) {
        TakeBits(TakeCode(dc, dcCodes));
        while (const size_t symbol = TakeCode(ac, acCodes))
            TakeBits(symbol % 16);
    }

    size_t TakeCode(Kind kind, std::span<const Codes::HuffCodeEntry> codes) {
        const uint32_t peeked = Peek(16);
        for (size_t symbol = 0; symbol < codes.size(); ++symbol) {
            const unsigned length = codes[symbol].m_uiLength;
            if (length != 0 && peeked >> (16 - length) == codes[symbol].m_uiCode) {
                Take(kind, length);
                return symbol;
            }
        }
        throw OutOfBits();
    }

    void TakeBits(size_t bits) {
        if (bits > 0)
            Take(Kind::Value, static_cast<unsigned>(bits));
    }

    void ParseBlock() {
        const unsigned level = m_Coding.quality & m_Rules.m_uiLbeQualityMask;
        const unsigned index = level - LowestLbeQuality;
        if (index >= s_aLbeQualities.size())
            throw OutOfBits();
        const LbeQuality depths = s_aLbeQualities[index];
        ParsePlane(MacroblockEdge * MacroblockEdge, depths.m_uiLumaBits, LbeLumaCountBits);
        ParsePlane(64u << m_Coding.chroma, 2u * depths.m_uiChromaBits,
                   m_Rules.m_uiLbeChromaCountBits);
    }

    void ParsePlane(size_t samples, unsigned literalBits, unsigned countBits) {
        for (size_t done = 0; done < samples;) {
            if (Peek(1) == 0) {
                Take(Kind::Run, 1);
                Take(Kind::Value, literalBits);
                ++done;
                continue;
            }
            const bool longForm = (Take(Kind::Run, 3) & 1) != 0;
            const uint32_t code = Take(Kind::Value, longForm ? LbeRunCodeBits : 1);
            if (!longForm)
                done += code + 1;
            else if (code == LbeRunToPlaneEnd)
                return;
            else
                done += LbeShortestLongRun +
                        (code == LbeCountFollows ? Take(Kind::Value, countBits) : code);
        }
    }

    std::span<const uint8_t> m_Bytes;
    const UpdateCoding& m_Coding;
    const UpdateRules& m_Rules;
    const RecordLengthCode& m_Length;
    size_t m_uiNext = 0;
    BitFields m_Fields;
};

/// The same form of a length for so many bytes, or one that asks for decoding in place.
BitField WithNumber(BitField field, size_t bytes, const RecordLengthCode& code) {
    const uint32_t numbers = 1u << (field.bits - code.PrefixBits());
    field.value -= NumberIn(field, code);
    field.value += static_cast<uint32_t>(bytes < numbers ? bytes : 0);
    return field;
}

} // namespace

BitFields ParseUpdate(std::span<const uint8_t> bytes, const UpdateCoding& coding) {
    return Parser(bytes, coding).Run();
}

std::vector<uint8_t> PackFields(const BitFields& fields) {
    std::vector<uint8_t> bytes;
    size_t next = 0;
    for (const BitField& field : fields) {
        for (unsigned bit = field.bits; bit-- > 0; ++next) {
            if (next % 8 == 0)
                bytes.push_back(0);
            bytes.back() =
                static_cast<uint8_t>(bytes.back() | (field.value >> bit & 1) << (7 - next % 8));
        }
    }
    return bytes;
}

BitFields WithLengthsRepaired(const BitFields& fields, const UpdateCoding& coding) {
    const RecordLengthCode& code = LengthCodeOf(coding);
    BitFields repaired;
    size_t position = 0;
    const auto add = [&](const BitField& field) {
        repaired.push_back(field);
        position += field.bits;
    };
    for (size_t i = 0; i < fields.size();) {
        const size_t start = position;
        const size_t first = repaired.size();
        // A record goes from its skip code to the next one.
        do {
            if (fields[i].kind != Kind::Padding)
                add(fields[i]);
        } while (++i < fields.size() && fields[i].kind != Kind::Skip);
        if (first + 1 >= repaired.size() || repaired[first + 1].kind != Kind::Length)
            continue;
        BitField& length = repaired[first + 1];
        if (NumberIn(length, code) == 0)
            continue;
        length = WithNumber(length, (position - start + 7) / 8, code);
        if (position % 8 != 0)
            add({Kind::Padding, 0, static_cast<unsigned>(8 - position % 8)});
    }
    return repaired;
}

} // namespace Vostrel::fuzz
