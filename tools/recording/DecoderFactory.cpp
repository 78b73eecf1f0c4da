#include "tools/recording/DecoderFactory.h"

#include "libimagedecoder/ImageDecoderIct.h"
#include "libimagedecoder/ImageDecoderLbe.h"

#include <algorithm>
#include <stdexcept>

namespace Vostrel::recording {

namespace {

constexpr uint32_t MostDefaultThreads = 64;

} // namespace

unsigned ChooseThreads(const DecoderFormat& format, std::optional<unsigned> wanted) {
    const bool cutsRecords = CutsRecords(format);
    const unsigned threads = wanted.value_or(
        cutsRecords ? std::clamp<uint32_t>(format.m_uiThreads, 1, MostDefaultThreads) : 0);
    if (cutsRecords && threads == 0)
        throw std::invalid_argument("The recording's layout is pool: it needs at least 1 thread");
    if (HasRecordLengths(format) && format.m_layout == RecordLayout::Continuous && threads != 0)
        throw std::invalid_argument("The recording's layout is continuous: it needs 0 threads");
    return threads;
}

std::unique_ptr<libimagedecoder::IImageDecoder>
MakeDecoder(const DecoderFormat& format, unsigned threads, const KernelLevel& kernels,
            const DecoderSurroundings& surroundings) {
    const auto& [renderer, stream, logger] = surroundings;
    const auto chroma = static_cast<unsigned>(format.m_chroma);
    switch (format.m_codec) {
    case Codec::Ict:
        return std::make_unique<libimagedecoder::ImageDecoderIct>(
            renderer, stream, logger, threads, format.m_uiProtocolVersion, chroma,
            CreateInverseIctOf(kernels, logger));
    case Codec::Lbe:
        return std::make_unique<libimagedecoder::ImageDecoderLbe>(
            renderer, stream, logger, threads, format.m_uiProtocolVersion, chroma,
            CreateLbePlaneKernelOf(kernels, logger));
    }
    throw std::invalid_argument("The codec is unknown");
}

} // namespace Vostrel::recording
