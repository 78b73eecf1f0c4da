#pragma once

#include "libimagedecoder/ChangedArea.h"
#include "libimagedecoder/IImageDecoder.h"
#include "libimagedecoder/Macroblock.h"
#include "libimagedecoder/StreambufferArray.h"
#include "libimagedecoder/UpdateJobs.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace Vostrel::libimagedecoder {

/// What both encodings share of an update: the walk over its macroblocks by skip codes, the mask of
/// unchanged ones, the changed area, and the cutting of a record out of the stream for a job.
///
/// An encoding hands the walk a codec, one object for one update, with
///   uint32_t ReadBits(unsigned int n)                read 1 to 16 bits of the update;
///   RecordLength ReadLength()                        the length that precedes a coded macroblock;
///   void DecodeInPlace(const Macroblock&)            decode it from the update's bits;
///   void GiveBack()                                  make the frame's own bit reader current: the
///                                                    codec may have read ahead of it;
///   UpdateJobs::Function Schedule(MacroblockBatch&)  a job that decodes macroblocks, each from its
///                                                    own bytes;
///   void Draw(const bool* skipMask)                  hand the decoded planes to the renderer.
class MacroblockDecoder : public IImageDecoder {
protected:
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

    template <class Codec>
    void Walk(const UpdateRectangle& rectangle, Codec& codec, bool* skipMask, ChangedArea& changed);

    template <class Codec>
    void DecodeCoded(const Macroblock& macroblock, uint32_t skipCodeBits, Codec& codec);

    template <class Codec>
    SkipCode ReadSkipCode(Codec& codec) const;

    void CheckRectangle(const UpdateRectangle& rectangle) const;
    bool* PrepareSkipMask(size_t macroblocks);
    void CutSegment(MacroblockJob& record, size_t recordBytes, uint32_t fieldBits);
    uint8_t* TakeSegment(MacroblockJob& record, size_t bytes);
    void EndSegments();

    uint16_t m_uiWidth = 0;
    uint16_t m_uiHeight = 0;
    unsigned int m_uiDrivingWorker = 0;
    std::unique_ptr<bool[]> m_pbSkipMask; ///< kept from update to update, grown when needed
    size_t m_uiSkipMaskSize = 0;
    std::unique_ptr<UpdateJobs> m_pJobs;
};

template <class Codec>
uint64_t MacroblockDecoder::DecodeMacroblocks(const UpdateRectangle& rectangle, Codec& codec) {
    CheckRectangle(rectangle);
    m_uiSegmentStoreUsed = 0;
    bool* const skipMask = PrepareSkipMask(rectangle.MacroblockCount());
    ChangedArea changed;
    m_pJobs->Run(
        [&] {
            Walk(rectangle, codec, skipMask, changed);
            codec.GiveBack();
        },
        [&](MacroblockBatch& batch) {
            EndSegments();
            return codec.Schedule(batch);
        });
    codec.Draw(skipMask);
    return changed.Packed(rectangle);
}

template <class Codec>
void MacroblockDecoder::Walk(const UpdateRectangle& rectangle, Codec& codec, bool* skipMask,
                             ChangedArea& changed) {
    MacroblockPlace place(rectangle);
    SkipCode skip = ReadSkipCode(codec);
    while (skip.m_iCount >= 0) {
        place.Advance(static_cast<uint32_t>(skip.m_iCount));
        if (place.IsAtEnd())
            return;
        const Macroblock macroblock = place.GetMacroblock();
        skipMask[place.Index()] = false;
        changed.Include(macroblock);
        DecodeCoded(macroblock, skip.m_uiBits, codec);
        place.Advance(1);
        skip = ReadSkipCode(codec);
    }
}

/// 0: count 0. 10 and six bits: count 0..63. 11 and a long count, whose all-ones value ends the
/// update.
template <class Codec>
MacroblockDecoder::SkipCode MacroblockDecoder::ReadSkipCode(Codec& codec) const {
    if (codec.ReadBits(1) == 0)
        return {0, 1};
    if (codec.ReadBits(1) == 0)
        return {static_cast<int32_t>(codec.ReadBits(ShortCountBits)), 2 + ShortCountBits};
    const uint32_t count = codec.ReadBits(m_uiLongCountBits);
    return {count == m_uiLongCountEscape ? -1 : static_cast<int32_t>(count), 2 + m_uiLongCountBits};
}

template <class Codec>
void MacroblockDecoder::DecodeCoded(const Macroblock& macroblock, uint32_t skipCodeBits,
                                    Codec& codec) {
    const RecordLength length = m_uiProtocolVersion >= 2 ? codec.ReadLength() : RecordLength{};
    if (!m_pJobs->HasPool() || length.m_uiBytes == 0) {
        codec.DecodeInPlace(macroblock);
        return;
    }
    codec.GiveBack();
    MacroblockJob& record = m_pJobs->NewRecord();
    record.m_Macroblock = macroblock;
    CutSegment(record, length.m_uiBytes, skipCodeBits + length.m_uiBits);
    m_pJobs->AddRecord();
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
