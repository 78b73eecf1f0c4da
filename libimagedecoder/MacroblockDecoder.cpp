#include "libimagedecoder/MacroblockDecoder.h"

#include "libimagedecoder/BitRegister.h"
#include "libimagedecoder/ILogger.h"
#include "libimagedecoder/ImageDecoderException.h"
#include "libthread/ThreadPool.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace Vostrel::libimagedecoder {
namespace {

constexpr unsigned long MaxThreads = 1024;

/// Zero bytes that follow a record, so that the 16-bit peek at its last code finds bytes.
constexpr size_t SlackBytes = 4;

/// Zero bytes after a record: the slack, and as many more as the reader had fetched of it, since a
/// record's length counts these as well. A known number is filled faster.
constexpr size_t ZeroBytes = 16;
constexpr size_t MaxHeldBits = 23;
constexpr size_t MaxFieldBits = [] {
    size_t most = 0;
    for (const UpdateRules& rules : s_aUpdateRules)
        most = std::max<size_t>(
            most, SkipPrefixBits + rules.m_uiLongSkipBits +
                      std::max(rules.m_IctLength.MaxBits(), rules.m_LbeLength.MaxBits()));
    return most;
}();
static_assert((MaxHeldBits + MaxFieldBits) / 8 + SlackBytes <= ZeroBytes &&
              ZeroBytes <= StreamWindow::SlackBytes);

constexpr size_t BytesOfBits(size_t bits) {
    return (bits + 7) / 8;
}

} // namespace

MacroblockDecoder::MacroblockDecoder(ImageDecoderRenderer* renderer, IStreambuffer* stream,
                                     ILogger* logger, unsigned int protocolVersion,
                                     unsigned int chromaSubsampling,
                                     RecordLengthCode UpdateRules::*length)
    : IImageDecoder(renderer, stream, logger, protocolVersion, chromaSubsampling),
      m_Rules(RulesOf(protocolVersion)), m_Length(m_Rules.*length) {}

UpdateJobs MacroblockDecoder::CreateJobs(unsigned long threads, const char* encoding) const {
    if (threads > MaxThreads)
        throw std::invalid_argument("A decoder uses at most 1024 threads");
    if (threads == 0 || !m_Length.IsThere() || !libthread::ThreadPool::isSupported()) {
        m_pLogger->Log("Using singlethreaded %s decoder.", encoding);
        return UpdateJobs(nullptr, 0);
    }
    const auto workers = static_cast<unsigned int>(threads);
    m_pLogger->Log("Using multithreaded parallel %s decoder with %u threads.", encoding, workers);
    return UpdateJobs(std::make_unique<libthread::ThreadPool>(threads), workers);
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

/// remaining: macroblocks from the walk's place on; a skip code that passes them ends the update,
/// and no length follows it.
template <class Read>
MacroblockDecoder::RecordFields MacroblockDecoder::ParseFields(uint32_t remaining,
                                                               Read read) const {
    RecordFields fields;
    const auto readAndCount = [&](unsigned int n) {
        fields.m_uiBits += n;
        return read(n);
    };
    const SkipCode skip = ReadSkipCode(m_Rules, readAndCount);
    fields.m_uiSkipped = skip.m_uiSkipped;
    fields.m_bEnd = skip.m_bEnd || skip.m_uiSkipped >= remaining;
    if (!fields.m_bEnd && m_Length.IsThere())
        fields.m_uiBytes = ReadRecordLength(m_Length, readAndCount);
    return fields;
}

MacroblockDecoder::RecordFields MacroblockDecoder::ReadFields(StreamWindow& window,
                                                              uint32_t remaining) {
    if (window.IsReady()) [[likely]] {
        BitRegister bits = window.GetBits();
        bits.Refill();
        const RecordFields fields = ParseFields(remaining, [&](unsigned int n) {
            const auto value = static_cast<uint32_t>(bits.Peek(n));
            bits.Skip(n);
            return value;
        });
        if (window.CommitRead(bits, fields.m_uiBits)) [[likely]]
            return fields;
    }
    window.GiveBack();
    return ParseFields(remaining, [&](unsigned int n) { return ReadStreamBits(n); });
}

/// Gives a record its own copy of its bytes and moves to the byte after it.
void MacroblockDecoder::CutRecord(MacroblockRecord& record, const RecordFields& fields,
                                  StreamWindow& window) {
    if (CutFromWindow(record, fields, window)) [[likely]]
        return;
    window.GiveBack();
    CutFromReader(record, fields);
}

/// The length counts from the first whole byte of the skip code on. False: the record ends past the
/// window, or before what the reader would have fetched.
bool MacroblockDecoder::CutFromWindow(MacroblockRecord& record, const RecordFields& fields,
                                      StreamWindow& window) {
    if (!window.IsBorrowed())
        return false;
    const size_t position = window.GetPosition();
    const size_t start = BytesOfBits(position - fields.m_uiBits);
    const size_t fetched = window.GetFetchedBytes();
    const size_t end = start + fields.m_uiBytes;
    if (end < fetched || end > window.GetSize())
        return false;
    const size_t first = position / 8;
    std::memcpy(TakeSegment(record, end - first, fetched - start + SlackBytes),
                window.GetBytes() + first, end - first);
    record.m_uiFirstBit = position % 8;
    window.MoveToByte(end);
    return true;
}

/// The same by the reader alone: the bytes that its counters hold precede those that are copied
/// from the stream.
void MacroblockDecoder::CutFromReader(MacroblockRecord& record, const RecordFields& fields) {
    const size_t fetched = (HeldBits() + fields.m_uiBits) / 8;
    if (fields.m_uiBytes < fetched)
        ThrowStreamError();
    const size_t heldBytes = BytesOfBits(HeldBits());
    const size_t copied = fields.m_uiBytes - fetched;
    uint8_t* const bytes = TakeSegment(record, heldBytes + copied, fetched + SlackBytes);
    uint64_t held = uint64_t{m_uiWindow} << m_uiReserveBits | m_uiReserve;
    for (size_t byte = heldBytes; byte-- > 0; held >>= 8)
        bytes[byte] = static_cast<uint8_t>(held);
    m_pStream->CopyBytes(bytes + heldBytes, copied);
    record.m_uiFirstBit = static_cast<uint32_t>(8 * heldBytes - HeldBits());
    SetState({});
}

/// Memory for a record's bytes and for zeros after them: from the segment store while it has room,
/// else the record's own.
uint8_t* MacroblockDecoder::TakeSegment(MacroblockRecord& record, size_t bytes, size_t zeroBytes) {
    const size_t readable = bytes + zeroBytes + StreamWindow::SlackBytes;
    if (m_vecSegmentStore.size() - m_uiSegmentStoreUsed < readable) {
        record.m_puiOwned = std::make_unique<uint8_t[]>(readable);
        record.m_puiBytes = record.m_puiOwned.get();
    } else {
        record.m_puiBytes = m_vecSegmentStore.data() + m_uiSegmentStoreUsed;
        m_uiSegmentStoreUsed += bytes + zeroBytes;
    }
    record.m_uiBytes = bytes + zeroBytes;
    std::memset(record.m_puiBytes + bytes, 0, ZeroBytes);
    return record.m_puiBytes;
}

/// Leaves readable bytes after the last record of a batch. Those of the next batch will not do:
/// they are written while a worker may look at them.
void MacroblockDecoder::EndSegments() {
    m_uiSegmentStoreUsed +=
        std::min(StreamWindow::SlackBytes, m_vecSegmentStore.size() - m_uiSegmentStoreUsed);
}

/// Of a reader that stands at the record's first bit.
BitReaderState MacroblockDecoder::StateAtStart(const MacroblockRecord& record) {
    if (record.m_uiFirstBit == 0)
        return {};
    const uint32_t bits = 8 - record.m_uiFirstBit;
    return {0, 0, record.m_puiBytes[0] & ((1u << bits) - 1), bits};
}

} // namespace Vostrel::libimagedecoder
