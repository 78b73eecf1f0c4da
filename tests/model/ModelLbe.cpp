#include "tests/model/ModelLbe.h"

#include <array>

namespace Vostrel::model {

namespace {

/// Reads the length of a run of which at most `left` samples have room.
int ReadRunLength(ModelBits& bits, bool longForm, int longRunBits, int left) {
    if (!longForm)
        return bits.Read(1) + 1;
    const int code = bits.Read(4);
    if (code <= 13)
        return code + 3;
    if (code == 14)
        return bits.Read(longRunBits) + 3;
    return left;
}

/// Stores a block's samples (in row order) with its top-left sample at (left, top) of a plane.
void Store(ModelPlane& plane, int stride, int left, int top, const std::vector<int64_t>& samples,
           int rowWidth) {
    for (size_t i = 0; i < samples.size(); ++i) {
        const size_t row = static_cast<size_t>(top) + i / static_cast<size_t>(rowWidth);
        const size_t column = static_cast<size_t>(left) + i % static_cast<size_t>(rowWidth);
        plane.Set(row * static_cast<size_t>(stride) + column, samples[i]);
    }
}

} // namespace

std::optional<ModelLbeDepths> LbeDepths(unsigned quality, unsigned protocolVersion) {
    static constexpr std::array<ModelLbeDepths, 10> depths{
        {{2, 3}, {2, 4}, {3, 3}, {3, 4}, {4, 3}, {4, 4}, {5, 4}, {5, 5}, {6, 4}, {6, 5}}};
    const unsigned level = quality & (protocolVersion == 0 ? 7u : 15u);
    if (level < 2 || level > 11)
        return std::nullopt;
    return depths[level - 2];
}

std::vector<int64_t> DecodeRuns(ModelBits& bits, const ModelRunCoding& coding) {
    std::vector<int64_t> entries;
    const auto count = static_cast<size_t>(coding.samples);
    entries.reserve(count);
    while (entries.size() < count) {
        if (bits.Read(1) == 0) {
            entries.push_back(bits.Read(coding.literalBits));
            continue;
        }
        const size_t distance = bits.Read(1) == 1 ? 1 : static_cast<size_t>(coding.rowWidth);
        const bool longForm = bits.Read(1) == 1;
        const int run = ReadRunLength(bits, longForm, coding.longRunBits,
                                      static_cast<int>(count - entries.size()));
        for (int i = 0; i < run && entries.size() < count; ++i)
            entries.push_back(entries.size() < distance ? 0 : entries[entries.size() - distance]);
    }
    return entries;
}

std::optional<ModelLength> ModelLbeCodec::ReadLength(ModelBits& bits) {
    if (m_uiProtocolVersion < 2)
        return std::nullopt;
    if (bits.Read(1) == 1)
        return ModelLength{bits.Read(10), 11};
    return ModelLength{bits.Read(7), 8};
}

void ModelLbeCodec::DecodeBlock(ModelBits& bits, int left, int top) {
    const int chromaWidth = BlockEdge / m_Chroma.divX;
    const int chromaSamples = chromaWidth * BlockEdge / m_Chroma.divY;
    const std::vector<int64_t> luma =
        DecodeRuns(bits, {BlockEdge * BlockEdge, BlockEdge, m_Depths.lumaBits, 8});
    const std::vector<int64_t> chroma =
        DecodeRuns(bits, {chromaSamples, chromaWidth, 2 * m_Depths.chromaBits,
                          m_uiProtocolVersion == 0 ? 6 : 8});
    Store(m_Planes.y, m_iLumaStride, left, top, luma, BlockEdge);
    Store(m_Planes.cb, m_iLumaStride / m_Chroma.divX, left / m_Chroma.divX, top / m_Chroma.divY,
          chroma, chromaWidth);
}

} // namespace Vostrel::model
