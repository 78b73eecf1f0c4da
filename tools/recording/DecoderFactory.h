#pragma once

#include "libimagedecoder/IImageDecoder.h"
#include "libimagedecoder/ILogger.h"
#include "libimagedecoder/IStreambuffer.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "tools/recording/Kernels.h"
#include "tools/recording/Recording.h"

#include <memory>
#include <optional>

namespace Vostrel::recording {

/// The worker threads of a decoder: the wanted ones, else those that its format asks for. Throws
/// std::invalid_argument for a wanted number that its record layout excludes.
unsigned ChooseThreads(const DecoderFormat& format, std::optional<unsigned> wanted);

/// What a decoder works with; nothing of it is owned.
struct DecoderSurroundings {
    libimagedecoder::ImageDecoderRenderer* m_pRenderer;
    libimagedecoder::IStreambuffer* m_pStream;
    libimagedecoder::ILogger* m_pLogger;
};

/// The library's decoder of a format. threads: 0..1024. kernels: that this processor can run.
std::unique_ptr<libimagedecoder::IImageDecoder>
MakeDecoder(const DecoderFormat& format, unsigned threads, const KernelLevel& kernels,
            const DecoderSurroundings& surroundings);

} // namespace Vostrel::recording
