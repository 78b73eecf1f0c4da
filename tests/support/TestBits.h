#pragma once

#include "libimagedecoder/HuffmanYCbCrDcAc.h"
#include "tests/model/BitText.h"
#include "tests/support/Random.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Update streams written down as texts of zeros and ones; blanks part the fields for the reader.
namespace Vostrel::tests {

using model::BytesOf;

/// The low count bits of value.
inline std::string Bits(uint64_t value, int count) {
    std::string text;
    for (int bit = count - 1; bit >= 0; --bit)
        text += (value >> bit & 1) != 0 ? '1' : '0';
    return text;
}

inline std::string Repeated(const std::string& text, size_t times) {
    std::string all;
    for (size_t i = 0; i < times; ++i)
        all += text;
    return all;
}

inline size_t CountBits(const std::string& text) {
    size_t count = 0;
    for (const char c : text)
        count += c == '0' || c == '1' ? 1 : 0;
    return count;
}

/// Filled up to whole bytes, with zeros or ones.
inline std::string Padded(std::string text, char filler = '0') {
    text.append((8 - CountBits(text) % 8) % 8, filler);
    return text;
}

// Skip codes.

inline const std::string NoSkip = "0 ";

inline std::string ShortSkip(unsigned count) {
    return Bits(0b10, 2) + Bits(count, 6) + " ";
}

/// Long counts have 14 bits in protocol version 0, else 16.
inline std::string LongSkip(unsigned count, unsigned version) {
    const int countBits = version == 0 ? 14 : 16;
    const unsigned largest = (1u << countBits) - 1;
    return Bits(uint64_t{0b11} << countBits | (count & largest), 2 + countBits) + " ";
}

inline std::string EndOfUpdate(unsigned version) {
    return LongSkip(0xFFFF, version);
}

// ICT.

/// The chroma subsampling codes.
inline constexpr unsigned Chroma420 = 0;
inline constexpr unsigned Chroma422 = 1;
inline constexpr unsigned Chroma444 = 2;

inline size_t ChromaTiles(unsigned chroma) {
    return size_t{2} << chroma;
}

/// Tiles without a DC difference or a coefficient.
inline const std::string FlatLumaTile = "00 1010 ";
inline const std::string FlatChromaTile = "00 00 ";

/// A macroblock whose samples are what the DC predictors say.
inline std::string FlatMacroblock(unsigned chroma) {
    return Repeated(FlatLumaTile, 4) + Repeated(FlatChromaTile, ChromaTiles(chroma));
}

/// A luma tile of category 12, by which an encoder aborts an update.
inline const std::string AbortMarker = "1111111110 ";

/// A record of protocol version 2 for a pool: skip code, length and macroblock, in whole bytes.
inline std::string IctRecord(const std::string& skip, const std::string& macroblock) {
    const std::string body = Padded(skip + Bits(0, 8) + macroblock);
    const size_t bytes = CountBits(body) / 8;
    return Padded(skip + Bits(bytes < 256 ? bytes : 0, 8) + " " + macroblock);
}

template <class Table>
std::string CodeOf(const Table& table, size_t symbol) {
    return Bits(table[symbol].m_uiCode, table[symbol].m_uiLength);
}

/// The bits of a tile with any DC difference and a few coefficients anywhere.
inline std::string RandomTile(Random& random, bool luma) {
    using Tables = libimagedecoder::HuffmanYCbCrDcAc;
    const int category = random.OneIn(8) ? random.Between(0, 11) : random.Between(0, 7);
    const auto symbol = static_cast<size_t>(category);
    std::string text =
        luma ? CodeOf(Tables::s_aDcLuminance, symbol) : CodeOf(Tables::s_aDcChrominance, symbol);
    text += Bits(random.Bits(), category);
    const auto& ac = luma ? Tables::s_aAcLuminance : Tables::s_aAcChrominance;
    for (int position = 0; !random.OneIn(5);) {
        const int run = random.OneIn(3) ? random.Between(0, 15) : 0;
        const int size = random.OneIn(6) ? random.Between(1, 10) : random.Between(1, 3);
        position += run + 1;
        if (position > 63)
            break;
        text += CodeOf(ac, static_cast<size_t>(run * 16 + size)) + Bits(random.Bits(), size);
    }
    return text + CodeOf(ac, 0) + " ";
}

inline std::string RandomMacroblock(Random& random, unsigned chroma) {
    std::string text;
    for (size_t tile = 0; tile < 4; ++tile)
        text += RandomTile(random, true);
    for (size_t tile = 0; tile < ChromaTiles(chroma); ++tile)
        text += RandomTile(random, false);
    return text;
}

// LBE.

/// A record of protocol version 2 for a pool. The length has 7 bits where that is enough, unless
/// the 10-bit form is asked for.
inline std::string LbeRecord(const std::string& skip, const std::string& block,
                             bool longLength = false) {
    const auto with = [&](const std::string& length) {
        return Padded(skip + length + " " + block);
    };
    size_t bytes = CountBits(with(Bits(0, 1) + Bits(0, 7))) / 8;
    if (bytes < 128 && !longLength)
        return with(Bits(0, 1) + Bits(bytes, 7));
    bytes = CountBits(with(Bits(1, 1) + Bits(0, 10))) / 8;
    return with(Bits(1, 1) + Bits(bytes < 1024 ? bytes : 0, 10));
}

/// How one plane of an LBE block is coded.
struct PlaneCoding {
    size_t samples;
    int literalBits;
    int longRunBits;
};

/// Literals and runs of every form, of which the last may pass the plane's end.
inline std::string RandomPlane(Random& random, const PlaneCoding& coding) {
    std::string text;
    for (size_t i = 0; i < coding.samples;) {
        if (random.OneIn(2)) {
            text += Bits(0, 1) + Bits(random.Bits(), coding.literalBits);
            ++i;
            continue;
        }
        text += random.OneIn(2) ? "10" : "11";
        const unsigned code = random.Below(20u);
        const uint64_t count = random.Bits() % (uint64_t{1} << coding.longRunBits);
        if (code > 15) {
            text += Bits(0, 1) + Bits(code, 1);
            i += 1 + code % 2;
        } else if (code == 15) {
            if (!random.OneIn(4)) {
                text += "00";
                ++i;
                continue;
            }
            text += "11111";
            i = coding.samples;
        } else {
            text +=
                Bits(1, 1) + Bits(code, 4) + (code == 14 ? Bits(count, coding.longRunBits) : "");
            i += 3 + (code == 14 ? count : code);
        }
    }
    return text + " ";
}

/// Depths of an LBE update.
struct LbeDepths {
    int luma;
    int chroma;
};

/// The depths of the qualities 2 to 11.
inline LbeDepths DepthsOf(unsigned quality) {
    constexpr LbeDepths Table[] = {{2, 3}, {2, 4}, {3, 3}, {3, 4}, {4, 3},
                                   {4, 4}, {5, 4}, {5, 5}, {6, 4}, {6, 5}};
    return Table[quality - 2];
}

inline size_t ChromaSamples(unsigned chroma) {
    return size_t{64} << chroma;
}

inline std::string RandomBlock(Random& random, unsigned quality, unsigned version,
                               unsigned chroma) {
    const LbeDepths depths = DepthsOf(quality);
    return RandomPlane(random, {256, depths.luma, 8}) +
           RandomPlane(random, {ChromaSamples(chroma), 2 * depths.chroma, version == 0 ? 6 : 8});
}

/// A plane that holds one value: a literal, and a run from the left to the plane's end.
inline std::string PlainPlane(unsigned value, int literalBits) {
    return Bits(0, 1) + Bits(value, literalBits) + " 1 11 1111 ";
}

inline std::string PlainBlock(unsigned quality, unsigned luma, unsigned chromaValue) {
    const LbeDepths depths = DepthsOf(quality);
    return PlainPlane(luma, depths.luma) + PlainPlane(chromaValue, 2 * depths.chroma);
}

// Whole updates.

/// What the updates of one decoder life have in common.
struct UpdateCoding {
    bool lbe;
    unsigned version;
    unsigned chroma;
    bool pool;        ///< version 2 for a decoder with a pool: records in whole bytes
    unsigned quality; ///< of LBE's blocks, 2 to 11
};

inline std::string RandomBody(Random& random, const UpdateCoding& coding) {
    return coding.lbe ? RandomBlock(random, coding.quality, coding.version, coding.chroma)
                      : RandomMacroblock(random, coding.chroma);
}

/// Any form of skip code for a count of unchanged macroblocks.
inline std::string RandomSkip(Random& random, unsigned count, unsigned version) {
    if (count == 0 && random.OneIn(2))
        return NoSkip;
    return count < 64 && random.OneIn(2) ? ShortSkip(count) : LongSkip(count, version);
}

/// A coded macroblock with the fields in front of it. Behind a record that is decoded in place
/// despite a pool the stream goes on in mid-byte; these end on a byte by trial, so that the record
/// behind them starts on one.
inline std::string RandomRecord(Random& random, const UpdateCoding& coding,
                                const std::string& skip) {
    if (coding.version < 2)
        return skip + RandomBody(random, coding);
    if (!coding.pool) {
        const std::string anyLength =
            coding.lbe ? Bits(0, 1) + Bits(random.Bits(), 7) : Bits(random.Bits(), 8);
        return skip + anyLength + RandomBody(random, coding);
    }
    if (!random.OneIn(4)) {
        const std::string body = RandomBody(random, coding);
        const std::string record =
            coding.lbe ? LbeRecord(skip, body, random.OneIn(2)) : IctRecord(skip, body);
        const std::string length = record.substr(skip.size(), coding.lbe ? 11 : 8);
        if (length.substr(coding.lbe ? 1 : 0).find('1') != std::string::npos)
            return record;
    }
    for (;;) {
        const std::string record = skip + Bits(0, 8) + RandomBody(random, coding);
        if (CountBits(record) % 8 == 0)
            return record;
    }
}

/// An update over so many macroblocks, followed by bytes of the next message.
inline std::string RandomUpdate(Random& random, const UpdateCoding& coding, size_t macroblocks) {
    std::string text;
    for (size_t next = 0;;) {
        const auto skipped = random.OneIn(2) ? 0 : random.Below(size_t{6});
        if (next + skipped >= macroblocks || random.OneIn(20)) {
            text += random.OneIn(2) ? EndOfUpdate(coding.version)
                                    : LongSkip(static_cast<unsigned>(macroblocks), coding.version);
            break;
        }
        const std::string skip = RandomSkip(random, static_cast<unsigned>(skipped), coding.version);
        text += RandomRecord(random, coding, skip);
        next += skipped + 1;
    }
    return Padded(text) + "10110101 11011111 00000000";
}

/// The same with some bits turned over, or cut short.
inline std::string Damaged(Random& random, std::string text) {
    for (int changes = random.Between(0, 4); changes > 0; --changes) {
        char& bit = text[random.Below(text.size())];
        if (bit != ' ')
            bit = bit == '0' ? '1' : '0';
    }
    if (random.OneIn(2))
        text.resize(random.Below(text.size()));
    return text;
}

} // namespace Vostrel::tests
