#include "libimagedecoder/LbePlaneDecoder.h"
#include "libimagedecoder/LbeSyntax.h"

#include <algorithm>

namespace Vostrel::libimagedecoder {
namespace {

size_t ReadLongRun(BitStreamReader& reader, const LbePlaneFormat& format, size_t samplesLeft) {
    const uint32_t code = reader.ReadStreamBits(LbeRunCodeBits);
    if (code == LbeRunToPlaneEnd)
        return samplesLeft;
    if (code == LbeCountFollows)
        return reader.ReadStreamBits(format.m_uiLongRunBits) + LbeShortestLongRun;
    return code + LbeShortestLongRun;
}

void FillFromLeft(uint16_t* sample, size_t run) {
    std::fill_n(sample, run, sample[-1]);
}

/// A run longer than a row repeats what it has just copied.
void CopyFromAbove(uint16_t* sample, size_t run, size_t rowWidth) {
    while (run > 0) {
        const size_t piece = std::min(run, rowWidth);
        std::copy_n(sample - rowWidth, piece, sample);
        sample += piece;
        run -= piece;
    }
}

} // namespace

void DecodeLbePlane(BitStreamReader& reader, const LbePlaneFormat& format, LbePlaneBuffer& buffer) {
    uint16_t* const samples = buffer.Samples();
    for (size_t i = 0; i < format.m_uiSamples;) {
        if (reader.ReadStreamBit() == 0) {
            samples[i++] = static_cast<uint16_t>(reader.ReadStreamBits(format.m_uiLiteralBits));
            continue;
        }
        const size_t samplesLeft = format.m_uiSamples - i;
        const bool fromLeft = reader.ReadStreamBit() != 0;
        const bool longRun = reader.ReadStreamBit() != 0;
        const size_t coded =
            longRun ? ReadLongRun(reader, format, samplesLeft) : reader.ReadStreamBit() + 1;
        const size_t run = std::min(coded, samplesLeft);
        if (fromLeft)
            FillFromLeft(samples + i, run);
        else
            CopyFromAbove(samples + i, run, format.m_uiRowWidth);
        i += run;
    }
}

} // namespace Vostrel::libimagedecoder
