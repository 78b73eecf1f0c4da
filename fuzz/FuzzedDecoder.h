#pragma once

#include "fuzz/GuardedFramebuffer.h"
#include "fuzz/GuardedStreambuffer.h"
#include "fuzz/Kernels.h"
#include "fuzz/SilentLogger.h"
#include "libimagedecoder/IImageDecoder.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "tests/model/ModelDecoder.h"

#include <cstdint>
#include <memory>
#include <span>

namespace Vostrel::fuzz {

/// What a decoder under test is created with; variant is a number of a kernel variant, whose rule
/// the settings name.
struct DecoderChoice {
    model::ModelSettings settings;
    unsigned variant = 0;
};

/// A decoder of the viewer's, with its renderer and its stream, and the model that it is held
/// against.
class FuzzedDecoder {
public:
    explicit FuzzedDecoder(const DecoderChoice& choice);

    /// The decoder of these settings, which is made once: pools and code tables cost far more than
    /// an update. Reset it before use.
    static FuzzedDecoder& For(const DecoderChoice& choice);

    /// A state that depends on nothing that happened before, for both: planes are zeroed, options
    /// are off.
    void Reset(model::ModelSink sink, int width, int height);

    model::ModelOutcome Update(unsigned quality, const model::ModelRectangle& area,
                               std::span<const uint8_t> bytes, size_t pieceCapacity);

    libimagedecoder::ImageDecoderRenderer& Renderer() { return m_Renderer; }
    model::ModelDecoder& Model() { return m_Model; }

private:
    std::unique_ptr<libimagedecoder::IImageDecoder> MakeDecoder(const DecoderChoice& choice);

    SilentLogger m_Logger;
    GuardedStreambuffer m_Stream{&m_Logger};
    libimagedecoder::ImageDecoderRenderer m_Renderer;
    std::unique_ptr<libimagedecoder::IImageDecoder> m_pDecoder;
    model::ModelDecoder m_Model;
};

} // namespace Vostrel::fuzz
