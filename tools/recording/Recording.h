#pragma once

#include "tools/UpdateEncoder.h"
#include "tools/UpdateFormat.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

/// Recordings: the updates of a connection in a file. docs/recording.md describes the bytes.
namespace Vostrel::recording {

using streamencoder::ChromaSubsampling;
using streamencoder::Codec;
using streamencoder::EncodedUpdate;
using streamencoder::RecordLayout;

/// What the updates are drawn into.
enum class Sink : uint8_t { Argb = 0, Planes = 1 };

/// The kernels come in two roundings: that of the portable ones, and that of SSE2 and AVX2.
enum class KernelRule : uint8_t { Accelerated = 0, Portable = 1 };

/// How updates are drawn, from one point of a recording on.
struct Settings {
    uint16_t m_uiWidth = 0; ///< of the framebuffer in pixels, at least 1
    uint16_t m_uiHeight = 0;
    uint8_t m_uiContrast = 0; ///< 0..100
    bool m_bPostprocessing = false;
    Sink m_sink = Sink::Argb;
    KernelRule m_kernels = KernelRule::Accelerated;

    bool operator==(const Settings&) const = default;
};

/// What a decoder must know to read its updates.
struct DecoderFormat {
    Codec m_codec = Codec::Ict;
    uint8_t m_uiProtocolVersion = 2; ///< 0..2
    ChromaSubsampling m_chroma = ChromaSubsampling::Yuv420;
    RecordLayout m_layout = RecordLayout::Pool;
    uint32_t m_uiThreads = 0; ///< workers of the decoder that the checksums come from

    bool operator==(const DecoderFormat&) const = default;
};

/// Whether coded macroblocks tell their lengths.
constexpr bool HasRecordLengths(const DecoderFormat& format) {
    using namespace libimagedecoder;
    return format.m_uiProtocolVersion < s_aUpdateRules.size() &&
           LengthCodeOf(format.m_codec, RulesOf(format.m_uiProtocolVersion)).IsThere();
}

/// Whether the decoder cuts macroblocks out of the stream by their lengths.
constexpr bool CutsRecords(const DecoderFormat& format) {
    return HasRecordLengths(format) && format.m_layout == RecordLayout::Pool;
}

/// The start of a recording. The format is that of decoder 0.
struct Header : DecoderFormat {
    Settings m_settings;        ///< at the start
    uint64_t m_uiStartTime = 0; ///< microseconds since 1970 in UTC, 0 unknown

    bool operator==(const Header&) const = default;
};

/// The most decoders of one recording.
constexpr size_t MaxDecoders = 256;

/// A further decoder, which later updates name by its index.
struct AddedDecoder {
    uint8_t m_uiIndex = 0; ///< the number of decoders before it, at least 1
    DecoderFormat m_format;

    bool operator==(const AddedDecoder&) const = default;
};

/// Which bytes the checksum of a picture is taken over.
enum class Coverage : uint8_t { Nothing = 0, Framebuffer = 1, Rectangle = 2 };

/// The result of an update that failed.
constexpr uint64_t FailedResult = ~uint64_t{0};

struct RecordedUpdate {
    EncodedUpdate m_encoded;          ///< its payload is what the decoder consumed
    uint8_t m_uiDecoder = 0;          ///< index of the decoder that it is for
    uint64_t m_uiTime = 0;            ///< microseconds since the recording began
    std::optional<uint64_t> m_result; ///< packed changed area, or FailedResult
    Coverage m_coverage = Coverage::Nothing;
    uint32_t m_uiPictureCrc = 0; ///< CRC-32 of the picture after the update
};

/// The framebuffer's content, uncompressed: see PictureSize.
struct RecordedPicture {
    std::vector<uint8_t> m_vuiBytes;
};

/// UTF-8 text about the records around it.
struct Note {
    std::string m_text;
};

using Record = std::variant<RecordedUpdate, Settings, RecordedPicture, Note, AddedDecoder>;

/// Where an update stands in a file.
struct IndexEntry {
    uint64_t m_uiOffset;
    uint64_t m_uiTime;

    bool operator==(const IndexEntry&) const = default;
};

/// A file that cannot be read or written, or that is no recording.
class RecordingError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// How a recording ends.
enum class EndKind {
    Whole,
    Cut,          ///< amid a record, as after a crash
    Damaged,      ///< at a record with wrong bytes
    LaterVersion, ///< at a record that this reader does not know and must not pass over
};

/// A record that cannot be read, with which the recording ends.
class BadRecord : public RecordingError {
public:
    explicit BadRecord(EndKind kind)
        : RecordingError(kind == EndKind::Cut ? "a record is cut" : "a record of a later version"),
          m_kind(kind) {}
    explicit BadRecord(const char* damage) : RecordingError(damage), m_kind(EndKind::Damaged) {}

    EndKind m_kind;
};

/// The most bytes that the body of a record, or a picture, may have.
constexpr uint64_t MaxBodySize = 0x3FFFFFFF;

/// Bytes of a framebuffer of these settings: ARGB32 words, or its three planes one after another.
/// chroma: of decoder 0, whose subsampling plane framebuffers have.
constexpr uint64_t PictureSize(const Settings& settings, ChromaSubsampling chroma) {
    const uint64_t width = settings.m_uiWidth;
    const uint64_t height = settings.m_uiHeight;
    if (settings.m_sink == Sink::Argb)
        return 4 * width * height;
    return width * height + 2 * (width / ChromaDivX(chroma)) * (height / ChromaDivY(chroma));
}

} // namespace Vostrel::recording
