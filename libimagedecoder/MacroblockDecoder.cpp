#include "libimagedecoder/MacroblockDecoder.h"

#include "libimagedecoder/ILogger.h"
#include "libimagedecoder/ImageDecoderException.h"
#include "libthread/ThreadPool.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace Vostrel::libimagedecoder {
namespace {

constexpr unsigned long MaxThreads = 1024;

/// Zero bytes that follow a job's record, so that the 16-bit peek at its last code finds bytes.
constexpr size_t SegmentSlackBytes = 4;

/// Skip code and length of a record: a long count of 16 bits and a length of 10 at most.
constexpr size_t MaxFieldBytes = (2 + 16 + 11 + 7) / 8;

} // namespace

MacroblockDecoder::MacroblockDecoder(ImageDecoderRenderer* renderer, IStreambuffer* stream,
                                     ILogger* logger, unsigned long threads,
                                     unsigned int protocolVersion, unsigned int chromaSubsampling)
    : IImageDecoder(renderer, stream, logger, protocolVersion, chromaSubsampling) {
    if (threads > MaxThreads)
        throw std::invalid_argument("A decoder uses at most 1024 threads");
}

void MacroblockDecoder::CreateJobs(unsigned long threads, const char* encoding) {
    std::unique_ptr<libthread::ThreadPool> pool;
    if (threads != 0 && m_uiProtocolVersion >= 2 && libthread::ThreadPool::isSupported()) {
        m_pLogger->Log("Using multithreaded parallel %s decoder with %u threads.", encoding,
                       static_cast<unsigned int>(threads));
        pool = std::make_unique<libthread::ThreadPool>(threads);
        m_uiDrivingWorker = static_cast<unsigned int>(threads);
    } else {
        m_pLogger->Log("Using singlethreaded %s decoder.", encoding);
    }
    m_pJobs = std::make_unique<UpdateJobs>(std::move(pool), m_uiDrivingWorker);
}

void MacroblockDecoder::ResizeSegmentStore(unsigned short width, unsigned short height) {
    m_vecSegmentStore.resize(size_t{width} * height / 2);
    m_uiSegmentStoreUsed = 0;
}

void MacroblockDecoder::CommitResolution(unsigned short width, unsigned short height) {
    m_uiWidth = width;
    m_uiHeight = height;
}

void MacroblockDecoder::ThrowStreamError() {
    throw ImageDecoderException("StreamError");
}

void MacroblockDecoder::CheckRectangle(const UpdateRectangle& rectangle) const {
    if (rectangle.m_uiWidth > RoundedUpToMacroblocks(m_uiWidth) ||
        rectangle.m_uiHeight > RoundedUpToMacroblocks(m_uiHeight))
        ThrowStreamError();
}

/// One entry per macroblock in row order, all of them unchanged until the walk finds them coded.
bool* MacroblockDecoder::PrepareSkipMask(size_t macroblocks) {
    if (macroblocks > m_uiSkipMaskSize) {
        m_pbSkipMask = std::make_unique<bool[]>(macroblocks);
        m_uiSkipMaskSize = macroblocks;
    }
    std::fill_n(m_pbSkipMask.get(), macroblocks, true);
    return m_pbSkipMask.get();
}

/// Gives a job its own copy of a record of recordBytes. The reader holds the record's first bytes
/// already, fieldBits of them used up by the skip code and the length. Its counters go to the job,
/// with the bytes that they come from in front of the copied ones, so that a job's stream looks
/// like any other; and the reader starts afresh at the byte behind the record.
void MacroblockDecoder::CutSegment(MacroblockJob& record, size_t recordBytes, uint32_t fieldBits) {
    const size_t fetchedBytes = (HeldBits() + fieldBits) / 8;
    if (recordBytes < fetchedBytes)
        ThrowStreamError();
    const size_t copiedBytes = recordBytes - fetchedBytes;
    const size_t heldBytes = BytesOfBits(HeldBits());
    record.m_uiSegmentBytes = heldBytes + recordBytes + SegmentSlackBytes;
    record.m_uiHeldBytes = heldBytes;
    record.m_puiSegment = TakeSegment(record, record.m_uiSegmentBytes);
    uint8_t* const copied = record.m_puiSegment + heldBytes;
    m_pStream->CopyBytes(copied, copiedBytes);
    std::fill(copied + copiedBytes, record.m_puiSegment + record.m_uiSegmentBytes, uint8_t{0});
    uint64_t held = uint64_t{m_uiWindow} << m_uiReserveBits | m_uiReserve;
    for (uint8_t* byte = copied; byte != record.m_puiSegment; held >>= 8)
        *--byte = static_cast<uint8_t>(held);
    record.m_ReaderState = GetState();
    SetState({});
}

/// The same for a reader that holds nothing, and a record that the stream's window holds whole.
void MacroblockDecoder::CutAlignedSegment(MacroblockJob& record, size_t recordBytes,
                                          uint32_t fieldBits) {
    const size_t fetchedBytes = BytesOfBits(fieldBits);
    const auto heldBits = static_cast<uint32_t>(8 * fetchedBytes - fieldBits);
    const size_t heldBytes = BytesOfBits(heldBits);
    const size_t passedBytes = fetchedBytes - heldBytes;
    record.m_uiSegmentBytes = heldBytes + recordBytes + SegmentSlackBytes;
    record.m_uiHeldBytes = heldBytes;
    record.m_puiSegment = TakeSegment(record, record.m_uiSegmentBytes);
    const uint8_t* const bytes = m_pStream->GetUnread().data();
    std::memcpy(record.m_puiSegment, bytes + passedBytes, recordBytes - passedBytes);
    // A length that is known costs nothing to fill; what is too much of it lies in the bytes that
    // may be looked at.
    static_assert(MaxFieldBytes + SegmentSlackBytes <= 16 && 16 <= SegmentReadableBytes);
    std::memset(record.m_puiSegment + recordBytes - passedBytes, 0, 16);
    record.m_ReaderState = {0, 0, bytes[fetchedBytes - 1] & ((1u << heldBits) - 1), heldBits};
    m_pStream->SetPosition(m_pStream->GetPosition() + recordBytes);
}

/// Memory for a segment: from the segment store while it has room, else the record's own.
uint8_t* MacroblockDecoder::TakeSegment(MacroblockJob& record, size_t bytes) {
    if (m_vecSegmentStore.size() - m_uiSegmentStoreUsed < bytes + SegmentReadableBytes) {
        record.m_puiOwned = std::make_unique<uint8_t[]>(bytes + SegmentReadableBytes);
        return record.m_puiOwned.get();
    }
    uint8_t* const segment = m_vecSegmentStore.data() + m_uiSegmentStoreUsed;
    m_uiSegmentStoreUsed += bytes;
    return segment;
}

/// Leaves readable bytes behind the last segment of a batch. Those of the next batch will not do:
/// they are written while a worker may look at them.
void MacroblockDecoder::EndSegments() {
    const size_t bytes =
        std::min(SegmentReadableBytes, m_vecSegmentStore.size() - m_uiSegmentStoreUsed);
    std::fill_n(m_vecSegmentStore.data() + m_uiSegmentStoreUsed, bytes, uint8_t{0});
    m_uiSegmentStoreUsed += bytes;
}

} // namespace Vostrel::libimagedecoder
