#pragma once

#include "libimagedecoder/BitRegister.h"
#include "libimagedecoder/ChangedArea.h"
#include "libimagedecoder/IImageDecoder.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "libimagedecoder/Macroblock.h"
#include "libimagedecoder/StreambufferArray.h"
#include "libimagedecoder/UpdateJobs.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace Vostrel::libimagedecoder {

/// What both encodings share of an update: the walk over its macroblocks by skip codes, the mask of
/// unchanged ones, the changed area, and the cutting of a record out of the stream for a job.
///
/// An encoding hands the walk a codec, one object for one update, with
///   uint32_t ReadBits(unsigned int n)                read 1 to 16 bits of the update;
///   static RecordLength ReadLength(read)             the length that precedes a coded macroblock,
///                                                    by calls of read(n);
///   void DecodeInPlace(const Macroblock&)            decode it from the update's bits;
///   void GiveBack()                                  make the frame's own bit reader current: the
///                                                    codec may have read ahead of it;
///   UpdateJobs::Function Schedule(MacroblockBatch&)  a job that decodes macroblocks, each from its
///                                                    own bytes;
///   void Draw(const DrawnRows&, const bool* skipMask)
///                                                    hand rows of the decoded planes to the
///                                                    renderer.
class MacroblockDecoder : public IImageDecoder {
public:
    /// From how many coded macroblocks on an update is drawn by the workers as well: waking them
    /// takes as long as drawing some hundred macroblocks. Tests lower it.
    void ShareDrawingFrom(size_t codedMacroblocks) { m_uiSharedDrawing = codedMacroblocks; }

protected:
    /// Rows of an update's rectangle that are drawn together: a rectangle of their own.
    struct DrawnRows {
        UpdateRectangle m_Rectangle;
        size_t m_uiTop = 0; ///< pixels from the update's top edge, a multiple of 16
    };

    /// Byte length of a macroblock's record, counted from the start of the skip code before it,
    /// and the bits that the length itself took. 0 bytes: the macroblock is decoded in place.
    struct RecordLength {
        uint32_t m_uiBytes = 0;
        uint32_t m_uiBits = 0;
    };

    /// As IImageDecoder. Throws std::invalid_argument for more than 1024 threads.
    MacroblockDecoder(ImageDecoderRenderer* renderer, IStreambuffer* stream, ILogger* logger,
                      unsigned long threads, unsigned int protocolVersion,
                      unsigned int chromaSubsampling);

    /// Creates the pool where threads and protocol version ask for one, and logs which it is.
    /// encoding is the name in the log line. Only version 2 tells where a macroblock's bytes end.
    void CreateJobs(unsigned long threads, const char* encoding);

    /// Number of workers that may decode at once, the driving thread among them: its worker number
    /// is the last.
    unsigned int WorkerCount() const { return m_uiDrivingWorker + 1; }
    unsigned int DrivingWorker() const { return m_uiDrivingWorker; }

    bool IsResolution(unsigned short width, unsigned short height) const {
        return width == m_uiWidth && height == m_uiHeight;
    }

    /// Samples of a plane that holds the whole framebuffer in whole macroblocks.
    static size_t PlaneSamples(unsigned short width, unsigned short height) {
        return RoundedUpToMacroblocks(width) * RoundedUpToMacroblocks(height);
    }

    /// Throws std::bad_alloc, with nothing changed.
    void ResizeSegmentStore(unsigned short width, unsigned short height);

    /// Stores the size once everything that depends on it has been allocated.
    void CommitResolution(unsigned short width, unsigned short height);

    /// Decodes and draws one update; returns the packed changed area. Throws ImageDecoderException
    /// "StreamError" for a rectangle that the planes cannot hold, and what the codec throws; in
    /// either case nothing is drawn and no job is left running.
    template <class Codec>
    uint64_t DecodeMacroblocks(const UpdateRectangle& rectangle, Codec& codec);

    /// Runs decode(BitStreamReader&, const Macroblock&) over each record's own bytes, on whatever
    /// thread a job is on. What it throws is kept for the driving thread.
    template <class Decode>
    void DecodeSegments(MacroblockBatch& batch, Decode decode);

    /// Bytes behind the stream of such a reader that may be looked at, whatever they hold.
    static constexpr size_t SegmentReadableBytes = 240;

    /// Throws ImageDecoderException "StreamError".
    [[noreturn]] static void ThrowStreamError();

private:
    /// A run of unchanged macroblocks before the next coded one; -1 when no coded one follows.
    struct SkipCode {
        int32_t m_iCount = 0;
        uint32_t m_uiBits = 0; ///< length of the code itself
    };
    static constexpr uint32_t ShortCountBits = 6;
    /// Bytes that must be there to look at the fields of a record, whatever they are.
    static constexpr size_t AlignedFieldsRoom = 16;

    static constexpr size_t BytesOfBits(size_t bits) { return (bits + 7) / 8; }

    /// How far the walk over an update has come, and what it has found coded.
    struct Progress {
        MacroblockPlace m_Place;
        bool* m_pbSkipMask;
        size_t m_uiCoded = 0;
        ChangedArea m_Changed{};

        Macroblock TakeCoded();
    };

    template <class Codec>
    void Walk(Progress& progress, Codec& codec);

    template <class Codec>
    void DrawDecoded(const UpdateRectangle& rectangle, const Progress& progress, Codec& codec);

    template <class Codec>
    bool DecodeCoded(const Macroblock& macroblock, uint32_t skipCodeBits, Codec& codec);

    template <class Codec>
    void CutAlignedRecords(Progress& progress);

    template <class Read>
    SkipCode ReadSkipCode(Read read) const;

    void CheckRectangle(const UpdateRectangle& rectangle) const;
    bool* PrepareSkipMask(size_t macroblocks);
    void CutSegment(MacroblockJob& record, size_t recordBytes, uint32_t fieldBits);
    void CutAlignedSegment(MacroblockJob& record, size_t recordBytes, uint32_t fieldBits);
    uint8_t* TakeSegment(MacroblockJob& record, size_t bytes);
    void EndSegments();

    uint16_t m_uiWidth = 0;
    uint16_t m_uiHeight = 0;
    unsigned int m_uiDrivingWorker = 0;
    std::unique_ptr<bool[]> m_pbSkipMask; ///< kept from update to update, grown when needed
    size_t m_uiSkipMaskSize = 0;
    std::unique_ptr<UpdateJobs> m_pJobs;
    size_t m_uiSharedDrawing = 1000;
};

template <class Codec>
uint64_t MacroblockDecoder::DecodeMacroblocks(const UpdateRectangle& rectangle, Codec& codec) {
    CheckRectangle(rectangle);
    m_uiSegmentStoreUsed = 0;
    Progress progress{MacroblockPlace(rectangle), PrepareSkipMask(rectangle.MacroblockCount())};
    m_pJobs->Run(
        rectangle.MacroblockCount(),
        [&] {
            Walk(progress, codec);
            codec.GiveBack();
        },
        [&](MacroblockBatch& batch) {
            EndSegments();
            return codec.Schedule(batch);
        });
    DrawDecoded(rectangle, progress, codec);
    return progress.m_Changed.Packed(rectangle);
}

template <class Codec>
void MacroblockDecoder::Walk(Progress& progress, Codec& codec) {
    const auto read = [&](unsigned int n) { return codec.ReadBits(n); };
    bool mayBeRecords = m_pJobs->HasPool();
    for (;;) {
        if (mayBeRecords)
            CutAlignedRecords<Codec>(progress);
        const SkipCode skip = ReadSkipCode(read);
        if (skip.m_iCount < 0)
            return;
        progress.m_Place.Advance(static_cast<uint32_t>(skip.m_iCount));
        if (progress.m_Place.IsAtEnd())
            return;
        mayBeRecords = DecodeCoded(progress.TakeCoded(), skip.m_uiBits, codec);
    }
}

/// Many coded macroblocks are drawn row by row, by the workers as well.
template <class Codec>
void MacroblockDecoder::DrawDecoded(const UpdateRectangle& rectangle, const Progress& progress,
                                    Codec& codec) {
    if (progress.m_uiCoded < m_uiSharedDrawing || !m_pJobs->HasPool() ||
        !m_pRenderer->CanDrawRowsApart(rectangle)) {
        codec.Draw({rectangle}, progress.m_pbSkipMask);
        return;
    }
    m_pJobs->Share(rectangle.MacroblockRows(), [&](size_t row) {
        DrawnRows drawn{rectangle, row * MacroblockEdge};
        drawn.m_Rectangle.m_uiY = static_cast<uint16_t>(rectangle.m_uiY + drawn.m_uiTop);
        drawn.m_Rectangle.m_uiHeight =
            static_cast<uint16_t>(std::min(MacroblockEdge, rectangle.m_uiHeight - drawn.m_uiTop));
        codec.Draw(drawn, progress.m_pbSkipMask + row * rectangle.MacroblockColumns());
    });
}

/// The macroblock that the walk stands on.
inline Macroblock MacroblockDecoder::Progress::TakeCoded() {
    const Macroblock macroblock = m_Place.GetMacroblock();
    m_pbSkipMask[m_Place.Index()] = false;
    ++m_uiCoded;
    m_Changed.Include(macroblock);
    m_Place.Advance(1);
    return macroblock;
}

/// 0: count 0. 10 and six bits: count 0..63. 11 and a long count, whose all-ones value ends the
/// update.
template <class Read>
MacroblockDecoder::SkipCode MacroblockDecoder::ReadSkipCode(Read read) const {
    if (read(1) == 0)
        return {0, 1};
    if (read(1) == 0)
        return {static_cast<int32_t>(read(ShortCountBits)), 2 + ShortCountBits};
    const uint32_t count = read(m_uiLongCountBits);
    return {count == m_uiLongCountEscape ? -1 : static_cast<int32_t>(count), 2 + m_uiLongCountBits};
}

/// Returns whether the macroblock became a record of its own.
template <class Codec>
bool MacroblockDecoder::DecodeCoded(const Macroblock& macroblock, uint32_t skipCodeBits,
                                    Codec& codec) {
    RecordLength length;
    if (m_uiProtocolVersion >= 2)
        length = Codec::ReadLength([&](unsigned int n) { return codec.ReadBits(n); });
    if (!m_pJobs->HasPool() || length.m_uiBytes == 0) {
        codec.DecodeInPlace(macroblock);
        return false;
    }
    codec.GiveBack();
    MacroblockJob& record = m_pJobs->NewRecord();
    record.m_Macroblock = macroblock;
    CutSegment(record, length.m_uiBytes, skipCodeBits + length.m_uiBits);
    m_pJobs->AddRecord();
    return true;
}

/// The fast road through records that start at a byte's boundary and lie in the stream's window, as
/// nearly all do: reading their fields one by one takes longer than everything else that the
/// driving thread does for them. Ends before the first record that is not like that, or not well.
template <class Codec>
void MacroblockDecoder::CutAlignedRecords(Progress& progress) {
    while (HeldBits() == 0) {
        const std::span<const uint8_t> bytes = m_pStream->GetUnread();
        if (bytes.size() < AlignedFieldsRoom)
            return;
        BitRegister fields(bytes.data(), 0);
        const auto read = [&](unsigned int n) {
            const auto value = static_cast<uint32_t>(fields.Peek(n));
            fields.Skip(n);
            return value;
        };
        const SkipCode skip = ReadSkipCode(read);
        const RecordLength length = Codec::ReadLength(read);
        const uint32_t fieldBits = skip.m_uiBits + length.m_uiBits;
        const auto skipped = static_cast<uint32_t>(skip.m_iCount); // none: more than remain
        if (skipped >= progress.m_Place.Remaining() || length.m_uiBytes < BytesOfBits(fieldBits) ||
            length.m_uiBytes > bytes.size())
            return;
        MacroblockJob& record = m_pJobs->NewRecord();
        CutAlignedSegment(record, length.m_uiBytes, fieldBits);
        progress.m_Place.Advance(skipped);
        record.m_Macroblock = progress.TakeCoded();
        m_pJobs->AddRecord();
    }
}

template <class Decode>
void MacroblockDecoder::DecodeSegments(MacroblockBatch& batch, Decode decode) {
    m_pJobs->DecodeBatch(batch, [&](MacroblockJob& record) {
        StreambufferArray segment(m_pLogger, record.m_puiSegment, record.m_uiSegmentBytes);
        segment.SetPosition(record.m_uiHeldBytes);
        BitStreamReader reader(&segment, record.m_ReaderState);
        decode(reader, record.m_Macroblock);
    });
}

} // namespace Vostrel::libimagedecoder
