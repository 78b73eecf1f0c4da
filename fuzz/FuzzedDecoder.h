#pragma once

#include "fuzz/GuardedFramebuffer.h"
#include "fuzz/Kernels.h"
#include "fuzz/SilentLogger.h"
#include "libimagedecoder/IImageDecoder.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "tests/model/ModelDecoder.h"
#include "tests/support/PiecewiseStreambuffer.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace Vostrel::fuzz {

/// What a decoder under test is created with; variant is a number of a kernel variant, whose rule
/// the settings name.
struct DecoderChoice {
    model::ModelSettings settings;
    unsigned variant = 0;
};

/// A decoder of the viewer's, with its renderer and its stream, to be held against a
/// model::ModelDecoder.
class FuzzedDecoder {
public:
    explicit FuzzedDecoder(const DecoderChoice& choice);

    /// The decoder of these settings, which is made once: pools and code tables cost far more than
    /// an update. Reset it before use.
    static FuzzedDecoder& For(const DecoderChoice& choice);

    /// A state that depends on nothing that happened before: planes are zeroed, options are off.
    void Reset(int width, int height);

    model::ModelOutcome Update(unsigned quality, const model::ModelRectangle& area,
                               const std::vector<uint8_t>& bytes, size_t pieceCapacity);

    libimagedecoder::ImageDecoderRenderer& Renderer() { return m_Renderer; }

private:
    std::unique_ptr<libimagedecoder::IImageDecoder> MakeDecoder(const DecoderChoice& choice);

    SilentLogger m_Logger;
    tests::PiecewiseStreambuffer m_Stream{&m_Logger};
    libimagedecoder::ImageDecoderRenderer m_Renderer;
    std::unique_ptr<libimagedecoder::IImageDecoder> m_pDecoder;
};

} // namespace Vostrel::fuzz
