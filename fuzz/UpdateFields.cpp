#include "fuzz/UpdateFields.h"

#include "libimagedecoder/HuffmanYCbCrDcAc.h"
#include "libimagedecoder/LbeQuality.h"

#include <span>

namespace Vostrel::fuzz {
namespace {

using Kind = BitField::Kind;
using Codes = libimagedecoder::HuffmanYCbCrDcAc;

struct OutOfBits {};

class Parser {
public:
    Parser(std::span<const uint8_t> bytes, const UpdateCoding& coding)
        : m_Bytes(bytes), m_Coding(coding) {}

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
    /// The next bits, 0 to 24, with zeros behind the end.
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

    /// False behind the end marker.
    bool ParseRecord() {
        const size_t start = m_uiNext;
        const unsigned longBits = m_Coding.version == 0 ? 14 : 16;
        const uint32_t skip = Take(Kind::Skip, Peek(1) == 0 ? 1 : Peek(2) == 2 ? 8 : 2 + longBits);
        if (skip == (4u << longBits) - 1)
            return false;
        const uint32_t length = m_Coding.version == 2 ? ParseLength() : 0;
        m_Coding.lbe ? ParseBlock() : ParseMacroblock();
        if (m_Coding.pool && length > 0)
            while (m_uiNext < start + 8 * length)
                Take(Kind::Padding, static_cast<unsigned>(8 - m_uiNext % 8));
        return true;
    }

    uint32_t ParseLength() {
        if (!m_Coding.lbe)
            return Take(Kind::Length, 8);
        return Take(Kind::Length, Peek(1) == 0 ? 8 : 11) & 1023;
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
        const unsigned level = m_Coding.quality & (m_Coding.version == 0 ? 7u : 15u);
        const unsigned index = level - libimagedecoder::LowestLbeQuality;
        if (index >= libimagedecoder::s_aLbeQualities.size())
            throw OutOfBits();
        const auto depths = libimagedecoder::s_aLbeQualities[index];
        ParsePlane(256, depths.m_uiLumaBits, 8);
        ParsePlane(64u << m_Coding.chroma, 2u * depths.m_uiChromaBits,
                   m_Coding.version == 0 ? 6 : 8);
    }

    void ParsePlane(unsigned samples, unsigned literalBits, unsigned countBits) {
        for (unsigned done = 0; done < samples;) {
            if (Peek(1) == 0) {
                Take(Kind::Run, 1);
                Take(Kind::Value, literalBits);
                ++done;
                continue;
            }
            const bool longForm = (Take(Kind::Run, 3) & 1) != 0;
            const uint32_t code = Take(Kind::Value, longForm ? 4 : 1);
            if (!longForm)
                done += code + 1;
            else if (code == 15)
                return;
            else
                done += 3 + (code == 14 ? Take(Kind::Value, countBits) : code);
        }
    }

    std::span<const uint8_t> m_Bytes;
    const UpdateCoding& m_Coding;
    size_t m_uiNext = 0;
    BitFields m_Fields;
};

/// A length field for so many bytes, or one that asks for decoding in place.
BitField LengthField(size_t bytes, unsigned bits) {
    if (bits == 11)
        return {Kind::Length, static_cast<uint32_t>(1024 | (bytes < 1024 ? bytes : 0)), 11};
    const bool lbe = bits == 7;
    return {Kind::Length, static_cast<uint32_t>(bytes < (lbe ? 128u : 256u) ? bytes : 0), 8};
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
        if ((length.value & (length.bits == 11 ? 1023u : 255u)) == 0)
            continue;
        const size_t bytes = (position - start + 7) / 8;
        length = LengthField(bytes, coding.lbe && length.bits == 8 ? 7 : length.bits);
        if (position % 8 != 0)
            add({Kind::Padding, 0, static_cast<unsigned>(8 - position % 8)});
    }
    return repaired;
}

} // namespace Vostrel::fuzz
