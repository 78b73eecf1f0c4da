#pragma once

#include "libimagedecoder/AlignedMemory.h"
#include "libimagedecoder/LbePlaneKernel.h"
#include "libimagedecoder/LbeQuality.h"
#include "libimagedecoder/LbeSyntax.h"
#include "libimagedecoder/MacroblockDecoder.h"

#include <cstdint>

namespace Vostrel::libimagedecoder {

/// Decoder of the LBE encoding: blocks of 16x16 pixels at reduced depth, each coded as one plane of
/// luma levels and one plane of packed chroma values, in literals and runs.
class ImageDecoderLbe : public MacroblockDecoder {
public:
    /// Renderer, stream and logger are not owned and must outlive the decoder.
    /// threadCount: workers of the pool, 0..1024; only protocol version 2 can use them.
    /// Throws std::invalid_argument for arguments out of range, std::bad_alloc.
    ImageDecoderLbe(ImageDecoderRenderer* renderer, IStreambuffer* stream, ILogger* logger,
                    unsigned long threadCount, unsigned int protocolVersion,
                    unsigned int chromaSubsampling);

    /// The same with a given kernel instead of the fastest one.
    ImageDecoderLbe(ImageDecoderRenderer* renderer, IStreambuffer* stream, ILogger* logger,
                    unsigned long threadCount, unsigned int protocolVersion,
                    unsigned int chromaSubsampling, LbePlaneKernel planeKernel);

    void SetResolution(unsigned short width, unsigned short height) override;

protected:
    /// All ones, with nothing read or drawn, for a quality outside 2 to 11.
    uint64_t HandleUpdateImplementation(unsigned int quality, unsigned short reserved,
                                        unsigned short x, unsigned short y, unsigned short width,
                                        unsigned short height) override;

private:
    class Update;
    using DrawFunction = void (ImageDecoderRenderer::*)(
        unsigned char, unsigned char, unsigned short, unsigned short, unsigned short,
        unsigned short, unsigned long, unsigned long, unsigned char*, unsigned short*, const bool*);
    DrawFunction GetDrawFunction() const;
    UpdateJobs::DecodeRecord ScheduleDecodeTile(Update& update) const;

    LbePlaneKernel m_pPlaneKernel;
    uint32_t m_lumaRunCountBits = LbeLumaCountBits;
    uint32_t m_chromaRunCountBits;
    uint32_t m_qualityMask;
    uint32_t m_lumaSamplesPerBlock = 256;
    uint32_t m_chromaSamplesPerBlock;     ///< 64, 128 or 256
    AlignedArray<uint8_t> m_lumaPlane;    ///< one level per pixel
    AlignedArray<uint16_t> m_chromaPlane; ///< one packed Cb/Cr value per chroma position
    UpdateJobs m_Jobs;                    ///< last: its end waits for the jobs
};

} // namespace Vostrel::libimagedecoder
