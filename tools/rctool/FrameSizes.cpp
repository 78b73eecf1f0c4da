#include "tools/rctool/FrameSizes.h"

#include "tools/rctool/FrameReader.h"

#include <stdexcept>

namespace Vostrel::rctool {

using streamencoder::PictureSize;

namespace {

std::string ToText(const PictureSize& size) {
    return std::to_string(size.m_uiWidth) + " x " + std::to_string(size.m_uiHeight) + " pixels";
}

} // namespace

void CheckLimit(const std::string& frame, const PictureSize& size) {
    if (size.m_uiWidth > MaxSide || size.m_uiHeight > MaxSide ||
        size.m_uiWidth * size.m_uiHeight > MaxPixels)
        throw std::runtime_error(frame + ": The frame has " + ToText(size) + "; a side may have " +
                                 std::to_string(MaxSide) + " pixels, all of it " +
                                 std::to_string(MaxPixels));
}

void CheckSame(const std::string& frame, const PictureSize& size, const PictureSize& recorded) {
    if (size != recorded)
        throw std::runtime_error(frame + ": The frame has " + ToText(size) +
                                 ", the recording's have " + ToText(recorded) +
                                 "; --resize records frames of several sizes");
}

void CheckFrames(const std::vector<std::string>& frames, std::optional<PictureSize> recorded,
                 bool mayChange) {
    for (const std::string& frame : frames) {
        if (IsFrameStream(frame))
            continue;
        const PictureSize size = streamencoder::ReadPngSize(frame);
        CheckLimit(frame, size);
        if (!recorded)
            recorded = size;
        if (!mayChange)
            CheckSame(frame, size, *recorded);
    }
}

} // namespace Vostrel::rctool
