#include "tools/walker/StreamWalker.h"

#include "libimagedecoder/UpdateSyntax.h"
#include "tools/walker/IctBlockWalker.h"
#include "tools/walker/LbeBlockWalker.h"

#include <algorithm>
#include <string_view>

namespace Vostrel::walker {

using libimagedecoder::MacroblockEdge;
using libimagedecoder::RoundedUpToMacroblocks;
using libimagedecoder::RulesOf;
using libimagedecoder::UpdateRectangle;

namespace {

constexpr size_t PaddingBytes = 2; ///< that a stream hands out behind its end
constexpr size_t SlackBytes = 4;   ///< that follow a record which was cut

constexpr size_t BytesTouched(size_t bits) {
    return (bits + 7) / 8;
}

} // namespace

uint32_t UsedQuality(const WalkFormat& format, uint32_t quality) {
    constexpr uint32_t LowFourBits = 15;
    const bool isLbe = format.m_codec == streamencoder::Codec::Lbe;
    return quality & (isLbe ? RulesOf(format.m_uiProtocolVersion).m_uiLbeQualityMask : LowFourBits);
}

std::unique_ptr<BlockWalker> BlockWalker::Make(const WalkFormat& format, uint32_t quality) {
    using libimagedecoder::LowestLbeQuality;
    using libimagedecoder::s_aLbeQualities;

    if (format.m_codec == streamencoder::Codec::Ict)
        return std::make_unique<IctBlockWalker>(format);
    const uint32_t masked = UsedQuality(format, quality);
    if (masked - LowestLbeQuality >= s_aLbeQualities.size())
        throw WalkError(0, 0, "a quality of 2 to 11", "quality " + std::to_string(masked),
                        "The quality is unknown");
    return std::make_unique<LbeBlockWalker>(format, s_aLbeQualities[masked - LowestLbeQuality]);
}

/// One update on its way.
class StreamWalker::Walking {
public:
    Walking(const WalkFormat& format, const streamencoder::EncodedUpdate& update,
            IStreamVisitor& visitor)
        : m_format(format), m_update(update), m_visitor(visitor),
          m_bits(update.m_vuiPayload, PaddingBytes), m_rules(RulesOf(format.m_uiProtocolVersion)),
          m_length(LengthCodeOf(format.m_codec, m_rules)) {}

    WalkEnd Walk(const std::optional<Resolution>& resolution);
    void Tell(const WalkError& error) const;

private:
    void CheckRectangle(const Resolution& resolution) const;
    SkipCode ReadSkip();
    void WalkCoded(size_t index, const SkipCode& skip);
    void WalkRecord(Macroblock& block);
    void WalkData(BitCursor& bits, Macroblock& block);

    const WalkFormat& m_format;
    const streamencoder::EncodedUpdate& m_update;
    IStreamVisitor& m_visitor;
    BitCursor m_bits;
    const libimagedecoder::UpdateRules& m_rules;
    const libimagedecoder::RecordLengthCode& m_length;
    std::unique_ptr<BlockWalker> m_pBlocks;
    size_t m_uiAfterCutRecord = 0;      ///< first bit after the last record that was cut out
    std::optional<size_t> m_macroblock; ///< the one that is being walked
    bool m_bInTiles = false;
};

void StreamWalker::Walking::CheckRectangle(const Resolution& resolution) const {
    const UpdateRectangle& area = m_update.m_rectangle;
    if (area.m_uiWidth > RoundedUpToMacroblocks(resolution.m_uiWidth) ||
        area.m_uiHeight > RoundedUpToMacroblocks(resolution.m_uiHeight))
        throw WalkError(0, 0, "a rectangle no larger than the framebuffer",
                        std::to_string(area.m_uiWidth) + " x " + std::to_string(area.m_uiHeight) +
                            " pixels",
                        StreamErrorText);
}

WalkEnd StreamWalker::Walking::Walk(const std::optional<Resolution>& resolution) {
    m_pBlocks = BlockWalker::Make(m_format, m_update.m_uiQuality);
    if (resolution)
        CheckRectangle(*resolution);
    WalkEnd end;
    end.m_uiMacroblocks = m_update.m_rectangle.MacroblockCount();
    SkipCode skip = ReadSkip();
    for (size_t next = 0; skip.m_count && *skip.m_count < end.m_uiMacroblocks - next;) {
        next += *skip.m_count;
        WalkCoded(next++, skip);
        ++end.m_uiCoded;
        skip = ReadSkip();
    }
    end.m_uiBits = m_bits.GetPosition();
    return end;
}

SkipCode StreamWalker::Walking::ReadSkip() {
    m_macroblock.reset();
    const size_t first = m_bits.GetPosition();
    const auto code =
        ReadSkipCode(m_rules, [this](unsigned count) { return m_bits.Read(count, "a skip code"); });
    SkipCode skip{{first, m_bits.GetPosition() - first}, {}};
    if (!code.m_bEnd)
        skip.m_count = code.m_uiSkipped;
    m_visitor.OnSkip(skip);
    return skip;
}

void StreamWalker::Walking::WalkCoded(size_t index, const SkipCode& skip) {
    m_macroblock = index;
    Macroblock block;
    block.m_uiIndex = index;
    const size_t columns = m_update.m_rectangle.MacroblockColumns();
    block.m_place = {index % columns * MacroblockEdge, index / columns * MacroblockEdge};
    block.m_record.m_uiFirst = skip.m_bits.m_uiFirst;
    if (m_length.IsThere()) {
        block.m_length.m_uiFirst = m_bits.GetPosition();
        block.m_uiLength = ReadRecordLength(
            m_length, [this](unsigned count) { return m_bits.Read(count, "a length"); });
        block.m_length.m_uiCount = m_bits.GetPosition() - block.m_length.m_uiFirst;
    }
    if (m_format.m_bPool && block.m_uiLength != 0)
        WalkRecord(block);
    else
        WalkData(m_bits, block);
    block.m_record.m_uiCount = m_bits.GetPosition() - block.m_record.m_uiFirst;
    m_visitor.OnMacroblock(block);
}

/// A record begins with the first whole byte of its skip code, and ends after as many bytes as its
/// length says.
void StreamWalker::Walking::WalkRecord(Macroblock& block) {
    const size_t start = BytesTouched(block.m_record.m_uiFirst);
    const size_t end = start + block.m_uiLength;
    const size_t fetched = m_bits.GetFetchedBytes();
    const std::string found = "length " + std::to_string(block.m_uiLength);
    if (end < fetched)
        throw WalkError(block.m_length.m_uiFirst, block.m_length.End(),
                        "a length of at least " + std::to_string(fetched - start) + " bytes", found,
                        StreamErrorText);
    if (end > fetched && end > m_bits.GetSize())
        throw WalkError(block.m_length.m_uiFirst, block.m_length.End(), "a record within the data",
                        found + ", " + std::to_string(end - m_bits.GetSize()) +
                            " bytes beyond their end",
                        OutOfBytesText);

    const size_t seen = std::min(end, m_bits.GetSize());
    BitCursor record =
        m_bits.CutTo(seen, end - seen + (fetched - start) + SlackBytes + PaddingBytes);
    WalkData(record, block);
    block.m_bCut = true;
    block.m_uiBitsBehindEnd = record.BitsBehindEnd();
    m_bits.GoToByte(end);
    m_uiAfterCutRecord = m_bits.GetPosition();
}

void StreamWalker::Walking::WalkData(BitCursor& bits, Macroblock& block) {
    block.m_data.m_uiFirst = bits.GetPosition();
    m_bInTiles = true;
    m_pBlocks->Walk(bits, m_visitor);
    m_bInTiles = false;
    block.m_data.m_uiCount = bits.GetPosition() - block.m_data.m_uiFirst;
}

void StreamWalker::Walking::Tell(const WalkError& error) const {
    const size_t end = std::min(error.m_uiEnd, 8 * m_bits.GetSize());
    StreamFault fault;
    fault.m_uiBit = error.m_uiBit;
    fault.m_range = {m_uiAfterCutRecord, end - std::min(end, m_uiAfterCutRecord)};
    const bool atEndOfRecord = m_bInTiles && error.m_uiEnd < 8 * m_bits.GetSize();
    fault.m_bMayBeCut = std::string_view(error.what()) == OutOfBytesText && !atEndOfRecord;
    fault.m_expected = error.m_expected;
    fault.m_found = error.m_found;
    fault.m_failure = error.what();
    fault.m_macroblock = m_macroblock;
    if (m_bInTiles)
        fault.m_tile = m_pBlocks->GetTile().m_uiIndex;
    m_visitor.OnError(fault);
}

std::optional<WalkEnd> StreamWalker::Walk(const streamencoder::EncodedUpdate& update,
                                          IStreamVisitor& visitor) const {
    Walking walking(m_format, update, visitor);
    try {
        return walking.Walk(m_resolution);
    } catch (const WalkError& error) {
        walking.Tell(error);
        return std::nullopt;
    }
}

} // namespace Vostrel::walker
