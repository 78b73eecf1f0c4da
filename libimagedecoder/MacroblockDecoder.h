#pragma once

#include "libimagedecoder/ChangedArea.h"
#include "libimagedecoder/IImageDecoder.h"
#include "libimagedecoder/ImageDecoderRenderer.h"
#include "libimagedecoder/MacroblockCodec.h"
#include "libimagedecoder/StreambufferArray.h"
#include "libimagedecoder/UpdateJobs.h"
#include "libimagedecoder/UpdateSyntax.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace Vostrel::libimagedecoder {

/// What both encodings share of an update: the walk over its macroblocks by skip codes, the mask of
/// unchanged ones, the changed area, and the jobs that decode records.
///
/// A decoder holds its UpdateJobs as its last member, so that its jobs have ended when the memory
/// goes on which they work.
class MacroblockDecoder : public IImageDecoder {
public:
    /// From how many coded macroblocks on an update is drawn by the workers as well: waking them
    /// takes as long as drawing some hundred macroblocks. Tests lower it.
    void ShareDrawingFrom(size_t codedMacroblocks) { m_uiSharedDrawing = codedMacroblocks; }

protected:
    /// As IImageDecoder. length: how the encoding writes the lengths of its records.
    MacroblockDecoder(ImageDecoderRenderer* renderer, IStreambuffer* stream, ILogger* logger,
                      unsigned int protocolVersion, unsigned int chromaSubsampling,
                      RecordLengthCode UpdateRules::*length);

    /// The jobs of a decoder, with a pool where threads and protocol version ask for one, and logs
    /// which it is. encoding is the name in the log line.
    /// Throws std::invalid_argument for more than 1024 threads.
    UpdateJobs CreateJobs(unsigned long threads, const char* encoding) const;

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
    template <MacroblockCodec Codec>
    uint64_t DecodeMacroblocks(const UpdateRectangle& rectangle, Codec& codec, UpdateJobs& jobs,
                               const UpdateJobs::DecodeRecord& decode);

    /// What the jobs of an update do with a record.
    template <MacroblockCodec Codec>
    UpdateJobs::DecodeRecord RecordDecoderOf(Codec& codec) const {
        return [this, &codec](const MacroblockRecord& record, unsigned int worker) {
            DecodeRecord(record, codec, worker);
        };
    }

    const UpdateRules& GetRules() const { return m_Rules; }

    /// Throws ImageDecoderException "StreamError".
    [[noreturn]] static void ThrowStreamError();

private:
    /// What precedes the data of a coded macroblock.
    struct RecordFields {
        bool m_bEnd = false; ///< no coded macroblock follows
        uint32_t m_uiSkipped = 0;
        uint32_t m_uiBytes = 0; ///< length of the record; 0: it is decoded in place
        uint32_t m_uiBits = 0;  ///< of the fields themselves
    };

    /// How far the walk over an update has come, and what it has found coded.
    struct Progress {
        MacroblockPlace m_Place;
        bool* m_pbSkipMask;
        size_t m_uiCoded = 0;
        ChangedArea m_Changed{};

        Macroblock TakeCoded();
    };

    template <class Source>
    void Walk(Progress& progress, Source& source, UpdateJobs& jobs);

    template <class Codec>
    void DecodeRecord(const MacroblockRecord& record, Codec& codec, unsigned int worker) const;

    template <class Codec>
    void DrawDecoded(const UpdateRectangle& rectangle, const Progress& progress, Codec& codec,
                     UpdateJobs& jobs);

    void CheckRectangle(const UpdateRectangle& rectangle) const;
    bool* PrepareSkipMask(size_t macroblocks);

    template <class Read>
    RecordFields ParseFields(uint32_t remaining, Read read) const;
    RecordFields ReadFields(StreamWindow& window, uint32_t remaining);

    void CutRecord(MacroblockRecord& record, const RecordFields& fields, StreamWindow& window);
    bool CutFromWindow(MacroblockRecord& record, const RecordFields& fields, StreamWindow& window);
    void CutFromReader(MacroblockRecord& record, const RecordFields& fields);
    uint8_t* TakeSegment(MacroblockRecord& record, size_t bytes, size_t zeroBytes);
    void EndSegments();
    static BitReaderState StateAtStart(const MacroblockRecord& record);

    const UpdateRules& m_Rules;
    RecordLengthCode m_Length;
    uint16_t m_uiWidth = 0;
    uint16_t m_uiHeight = 0;
    std::unique_ptr<bool[]> m_pbSkipMask; ///< kept from update to update, grown when needed
    size_t m_uiSkipMaskSize = 0;
    size_t m_uiSharedDrawing = 1000;
};

template <MacroblockCodec Codec>
uint64_t MacroblockDecoder::DecodeMacroblocks(const UpdateRectangle& rectangle, Codec& codec,
                                              UpdateJobs& jobs,
                                              const UpdateJobs::DecodeRecord& decode) {
    CheckRectangle(rectangle);
    m_uiSegmentStoreUsed = 0;
    Progress progress{MacroblockPlace(rectangle), PrepareSkipMask(rectangle.MacroblockCount())};
    typename Codec::Source inPlace(codec, *this, 0, jobs.InPlaceWorker());
    jobs.Run(
        rectangle.MacroblockCount(),
        [&] {
            Walk(progress, inPlace, jobs);
            inPlace.GetWindow().GiveBack();
        },
        decode);
    DrawDecoded(rectangle, progress, codec, jobs);
    return progress.m_Changed.Packed(rectangle);
}

template <class Source>
void MacroblockDecoder::Walk(Progress& progress, Source& source, UpdateJobs& jobs) {
    StreamWindow& window = source.GetWindow();
    for (;;) {
        const RecordFields fields = ReadFields(window, progress.m_Place.Remaining());
        if (fields.m_bEnd)
            return;
        progress.m_Place.Advance(fields.m_uiSkipped);
        if (fields.m_uiBytes == 0 || !jobs.HasPool()) {
            source.Decode(progress.TakeCoded());
            continue;
        }
        if (jobs.NextBeginsBatch())
            EndSegments();
        MacroblockRecord& record = jobs.NewRecord();
        record.m_Macroblock = progress.TakeCoded();
        CutRecord(record, fields, window);
        jobs.AddRecord();
    }
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

template <class Codec>
void MacroblockDecoder::DecodeRecord(const MacroblockRecord& record, Codec& codec,
                                     unsigned int worker) const {
    const BitReaderState state = StateAtStart(record);
    StreambufferArray bytes(m_pLogger, record.m_puiBytes, record.m_uiBytes);
    bytes.SetPosition(state.m_uiReserveBits != 0 ? 1 : 0);
    BitStreamReader reader(&bytes, state);
    typename Codec::Source source(codec, reader, StreamWindow::SlackBytes, worker);
    source.Decode(record.m_Macroblock);
}

/// Many coded macroblocks are drawn row by row, by the workers as well.
template <class Codec>
void MacroblockDecoder::DrawDecoded(const UpdateRectangle& rectangle, const Progress& progress,
                                    Codec& codec, UpdateJobs& jobs) {
    if (progress.m_uiCoded < m_uiSharedDrawing || !jobs.HasPool() ||
        !m_pRenderer->CanDrawRowsApart(rectangle)) {
        codec.Draw({rectangle}, progress.m_pbSkipMask);
        return;
    }
    jobs.Share(rectangle.MacroblockRows(), [&](size_t row) {
        DrawnRows drawn{rectangle, row * MacroblockEdge};
        drawn.m_Rectangle.m_uiY = static_cast<uint16_t>(rectangle.m_uiY + drawn.m_uiTop);
        drawn.m_Rectangle.m_uiHeight =
            static_cast<uint16_t>(std::min(MacroblockEdge, rectangle.m_uiHeight - drawn.m_uiTop));
        codec.Draw(drawn, progress.m_pbSkipMask + row * rectangle.MacroblockColumns());
    });
}

} // namespace Vostrel::libimagedecoder
