#pragma once

#include "libimagedecoder/UpdateSyntax.h"

#include <cstdint>
#include <stdexcept>

namespace Vostrel::streamencoder {

/// The two encodings. The numbers are those of a recording.
enum class Codec : uint8_t { Ict = 0, Lbe = 1 };

/// How a codec writes the lengths of its records.
constexpr const libimagedecoder::RecordLengthCode&
LengthCodeOf(Codec codec, const libimagedecoder::UpdateRules& rules) {
    switch (codec) {
    case Codec::Ict:
        return rules.m_IctLength;
    case Codec::Lbe:
        return rules.m_LbeLength;
    }
    throw std::invalid_argument("The codec is unknown");
}

/// The numbers are those by which a viewer creates its decoder.
enum class ChromaSubsampling : uint8_t { Yuv420 = 0, Yuv422 = 1, Yuv444 = 2 };

constexpr unsigned ChromaDivX(ChromaSubsampling chroma) {
    return chroma == ChromaSubsampling::Yuv444 ? 1 : 2;
}
constexpr unsigned ChromaDivY(ChromaSubsampling chroma) {
    return chroma == ChromaSubsampling::Yuv420 ? 2 : 1;
}

/// How the records of coded blocks follow each other in protocol version 2. A decoder with a thread
/// pool cuts records out of the stream by their lengths, one without a pool ignores the lengths; so
/// the same bytes suit both only when no record asks to be cut. Versions 0 and 1 have no lengths,
/// and their records always follow each other bit by bit.
enum class RecordLayout : uint8_t {
    Continuous =
        0,       ///< lengths are there, the next bit follows directly: for a decoder without pool
    Pool = 1,    ///< records end on a byte and tell their length: for a decoder with a pool
    InPlace = 2, ///< every length is 0, the next bit follows directly: for any decoder
};

/// The shapes of a skip code, shortest first; a shape can hold every count of those before it.
enum class SkipForm { OneBit, SixBits, Long };

/// What the decoder and the encoder of an update must agree on, and the freedom that an encoder has
/// within that.
struct UpdateFormat {
    Codec m_codec = Codec::Ict;
    unsigned m_uiProtocolVersion = 2; ///< 0, 1 or 2
    RecordLayout m_layout = RecordLayout::Pool;

    /// No skip code takes a shorter shape than this, for exercising a decoder.
    SkipForm m_minSkipForm = SkipForm::OneBit;
    /// LBE lengths always take their long shape, for exercising a decoder.
    bool m_bLongLengthPrefix = false;
    /// Zero bytes at the end of every record of the pool layout, counted in its length, for
    /// exercising a decoder.
    unsigned m_uiRecordPadding = 0;
};

} // namespace Vostrel::streamencoder
