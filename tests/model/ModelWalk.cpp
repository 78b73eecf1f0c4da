#include "tests/model/ModelWalk.h"

#include <algorithm>

namespace Vostrel::model {

namespace {

constexpr int EndOfUpdate = -1;

struct SkipCode {
    int count;
    int bits;
};

SkipCode ReadSkipCode(ModelBits& bits, int longCountBits) {
    if (bits.Read(1) == 0)
        return {0, 1};
    if (bits.Read(1) == 0)
        return {bits.Read(6), 8};
    const int count = bits.Read(longCountBits);
    return {count == (1 << longCountBits) - 1 ? EndOfUpdate : count, longCountBits + 2};
}

/// The offsets of the coded blocks within the rectangle.
struct Bounds {
    int minX = 65535;
    int minY = 65535;
    int maxX = 0;
    int maxY = 0;

    void Include(int left, int top) {
        minX = std::min(minX, left);
        minY = std::min(minY, top);
        maxX = std::max(maxX, left);
        maxY = std::max(maxY, top);
    }

    /// The lower fields are edges less the smallest offset, not sizes; viewers rely on it.
    uint64_t Pack(const ModelRectangle& area) const {
        if (minX == 65535)
            return 0;
        uint64_t packed = 0;
        for (const int field : {area.x + minX, area.y + minY, area.x + maxX + BlockEdge - minX,
                                area.y + maxY + BlockEdge - minY})
            packed = packed << 16 | (static_cast<uint64_t>(field) & 0xFFFF);
        return packed;
    }
};

/// The bytes of a record that are still in the stream, followed by zeros: L + 4 in all.
std::vector<uint8_t> CutSegment(ModelBits& bits, int recordBytes, int fieldBits) {
    const int fetched = (bits.HeldBits() + fieldBits) / 8;
    if (recordBytes < fetched)
        throw ModelError("StreamError");
    std::vector<uint8_t> segment(static_cast<size_t>(recordBytes + 4), 0);
    for (int i = 0; i < recordBytes - fetched; ++i) {
        const std::optional<uint8_t> byte = bits.Stream().NextDataByte();
        if (!byte)
            throw ModelError("Stream has no more bytes!");
        segment[static_cast<size_t>(i)] = *byte;
    }
    return segment;
}

class Walk {
public:
    Walk(ModelBits& bits, const ModelRectangle& area, const ModelWalkRules& rules,
         IModelBlockCodec& codec)
        : m_Bits(bits), m_Area(area), m_Rules(rules), m_Codec(codec), m_Mask(area) {}

    ModelWalkResult Run() {
        try {
            WalkAll();
        } catch (const ModelError& walkFailure) {
            // Every job of this update precedes the block at which the walk failed.
            throw ModelError(m_strJobFailure.value_or(walkFailure.what()));
        }
        if (m_strJobFailure)
            throw ModelError(*m_strJobFailure);
        return {m_Mask, m_Bounds.Pack(m_Area)};
    }

private:
    void WalkAll() {
        SkipCode skip = ReadSkipCode(m_Bits, m_Rules.longCountBits);
        for (int top = 0; top < m_Area.height; top += BlockEdge) {
            for (int left = 0; left < m_Area.width; left += BlockEdge) {
                if (skip.count == EndOfUpdate)
                    return;
                if (skip.count > 0) {
                    --skip.count;
                    continue;
                }
                Block(skip.bits, left, top);
                skip = ReadSkipCode(m_Bits, m_Rules.longCountBits);
            }
        }
    }

    void Block(int skipBits, int left, int top) {
        const std::optional<ModelLength> length = m_Codec.ReadLength(m_Bits);
        m_Bounds.Include(left, top);
        m_Mask.MarkCoded(left, top);
        if (m_Rules.pool && length && length->bytes > 0)
            Job(length->bytes, skipBits + length->fieldBits, left, top);
        else
            m_Codec.DecodeBlock(m_Bits, left, top);
    }

    void Job(int recordBytes, int fieldBits, int left, int top) {
        const std::vector<uint8_t> segment = CutSegment(m_Bits, recordBytes, fieldBits);
        ModelStream segmentStream(segment, segment.size());
        ModelBits jobBits(segmentStream, m_Bits);
        m_Bits.Clear();
        try {
            m_Codec.DecodeBlock(jobBits, left, top);
        } catch (const ModelError& failure) {
            if (!m_strJobFailure)
                m_strJobFailure = failure.what();
        }
    }

    ModelBits& m_Bits;
    const ModelRectangle& m_Area;
    const ModelWalkRules& m_Rules;
    IModelBlockCodec& m_Codec;
    ModelMask m_Mask;
    Bounds m_Bounds;
    std::optional<std::string> m_strJobFailure;
};

} // namespace

ModelWalkResult WalkBlocks(ModelBits& bits, const ModelRectangle& area, const ModelWalkRules& rules,
                           IModelBlockCodec& codec) {
    return Walk(bits, area, rules, codec).Run();
}

} // namespace Vostrel::model
