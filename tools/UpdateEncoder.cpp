#include "tools/UpdateEncoder.h"

#include "tools/ChangedBlocks.h"

#include <limits>
#include <stdexcept>

namespace Vostrel::streamencoder {

using libimagedecoder::RoundedUpToMacroblocks;
using libimagedecoder::UpdateRectangle;

namespace {

constexpr size_t MaxField = std::numeric_limits<uint16_t>::max();

void CheckPictureSize(const Picture& picture) {
    if (RoundedUpToMacroblocks(picture.m_uiWidth) > MaxField ||
        RoundedUpToMacroblocks(picture.m_uiHeight) > MaxField)
        throw std::invalid_argument("The picture is larger than an update can tell");
}

/// The rectangle of whole blocks that covers the given one.
UpdateRectangle RoundedUp(const Picture& picture, const UpdateRectangle& rectangle) {
    if (rectangle.IsEmpty() || rectangle.m_uiX >= picture.m_uiWidth ||
        rectangle.m_uiY >= picture.m_uiHeight)
        throw std::invalid_argument("The rectangle does not touch the picture");

    const size_t width = RoundedUpToMacroblocks(rectangle.m_uiWidth);
    const size_t height = RoundedUpToMacroblocks(rectangle.m_uiHeight);
    if (width > MaxField || height > MaxField)
        throw std::invalid_argument("The rectangle is larger than an update can tell");
    return {rectangle.m_uiX, rectangle.m_uiY, static_cast<uint16_t>(width),
            static_cast<uint16_t>(height)};
}

UpdateFormat WithCodec(UpdateFormat format, Codec codec) {
    format.m_codec = codec;
    return format;
}

} // namespace

UpdateEncoder::UpdateEncoder(Codec codec, const UpdateFormat& format, ChromaSubsampling chroma,
                             uint32_t quality)
    : m_format(WithCodec(format, codec)), m_writer(m_format), m_chroma(chroma),
      m_uiQuality(quality) {}

EncodedUpdate UpdateEncoder::EncodeUpdate(const Picture& picture, const Picture* previous,
                                          const UpdateRectangle& rectangle) {
    CheckPictureSize(picture);
    const UpdateRectangle covered = RoundedUp(picture, rectangle);
    const size_t columns = covered.MacroblockColumns();

    auto changed = previous != nullptr ? ChangedBlocks(picture, *previous, covered)
                                       : std::vector<bool>(covered.MacroblockCount(), true);
    BridgeLongGaps(changed, m_writer.GetMaxSkip());

    const YCbCrPlanes planes = ConvertToYCbCr(picture, covered, m_chroma);
    BeginUpdate();
    BitWriter block;
    size_t skipped = 0;
    for (size_t i = 0; i < changed.size(); ++i) {
        if (!changed[i]) {
            ++skipped;
            continue;
        }
        block.Clear();
        EncodeBlock(planes, i % columns, i / columns, block);
        m_writer.WriteBlock(skipped, block);
        skipped = 0;
    }
    return {m_uiQuality, covered, m_writer.Finish()};
}

EncodedUpdate UpdateEncoder::EncodeUpdate(const Picture& picture, const Picture* previous) {
    CheckPictureSize(picture);
    return EncodeUpdate(picture, previous,
                        {0, 0, static_cast<uint16_t>(picture.m_uiWidth),
                         static_cast<uint16_t>(picture.m_uiHeight)});
}

} // namespace Vostrel::streamencoder
