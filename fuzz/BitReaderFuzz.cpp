// A script of reads, peeks, stalls and saved and continued readers over a stream that arrives in
// pieces, against a model that knows nothing but the order of the bits.

#include "fuzz/FuzzCheck.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/GuardedStreambuffer.h"
#include "libimagedecoder/BitStreamReader.h"
#include "libimagedecoder/ImageDecoderException.h"
#include "libimagedecoder/StreambufferArray.h"

#include <array>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace Vostrel::fuzz {
namespace {

using libimagedecoder::BitReaderState;
using libimagedecoder::BitStreamReader;
using libimagedecoder::ImageDecoderException;
using libimagedecoder::IStreambuffer;

constexpr std::string_view OutOfBytes = "Stream has no more bytes!";

/// The bytes of a stream, with its position counted from the start of the last piece.
class StreamModel {
public:
    StreamModel(std::span<const uint8_t> bytes, size_t piece) : m_Bytes(bytes), m_uiPiece(piece) {}

    /// Nothing for the third byte behind the end.
    std::optional<uint8_t> Next() {
        if (const auto byte = NextOfStream())
            return byte;
        if (m_uiPadding == 2)
            return std::nullopt;
        ++m_uiPadding;
        return uint8_t{0};
    }

    std::optional<uint8_t> NextOfStream() {
        if (m_uiBegin + m_uiPosition == m_uiEnd) {
            if (m_uiEnd == m_Bytes.size())
                return std::nullopt;
            m_uiBegin = m_uiEnd;
            m_uiEnd = std::min(m_Bytes.size(), m_uiEnd + m_uiPiece);
            m_uiPosition = 0;
        }
        return m_Bytes[m_uiBegin + m_uiPosition++];
    }

    void GiveBack(size_t count) {
        while (count > m_uiPadding && m_uiPosition > 0) {
            --m_uiPosition;
            --count;
        }
    }

    size_t Position() const { return m_uiPosition; }
    size_t Padding() const { return m_uiPadding; }

private:
    std::span<const uint8_t> m_Bytes;
    size_t m_uiPiece;
    size_t m_uiBegin = 0; ///< of the current piece
    size_t m_uiEnd = 0;
    size_t m_uiPosition = 0; ///< within it
    size_t m_uiPadding = 0;
};

/// The bits in hand as one number, the next one on top. The first windowBits of them are the
/// window: only their number matters, since a stall must not exceed it.
struct ReaderModel {
    uint64_t bits = 0;
    size_t heldBits = 0; ///< at most 16 of the window, 7 of a byte, and what a read fetches
    size_t windowBits = 0;

    /// Nothing when the stream has no more bytes; what it gave until then stays.
    std::optional<uint32_t> Read(StreamModel& stream, size_t count) {
        while (heldBits < count) {
            const auto byte = stream.Next();
            if (!byte)
                return std::nullopt;
            bits = bits << 8 | *byte;
            heldBits += 8;
        }
        const uint32_t value = Value(0, count);
        heldBits -= count;
        bits = Lowest(heldBits);
        windowBits = windowBits >= count ? windowBits - count : 0;
        return value;
    }

    /// Stalled bits go behind those of the window, which a proper user has emptied before.
    bool Stall(size_t count, uint32_t value) {
        if (windowBits + count > 16)
            return false;
        const size_t behind = heldBits - windowBits;
        const uint64_t stalled = value & ((uint64_t{1} << count) - 1);
        bits = (bits >> behind << count | stalled) << behind | Lowest(behind);
        heldBits += count;
        windowBits += count;
        return true;
    }

    /// The bits from one place to another, counted from the next one on.
    uint32_t Value(size_t from, size_t to) const {
        return static_cast<uint32_t>(Lowest(heldBits - from) >> (heldBits - to));
    }

private:
    uint64_t Lowest(size_t count) const { return bits & ((uint64_t{1} << count) - 1); }
};

class Script {
public:
    Script(FuzzInput& input, GuardedStreambuffer& stream, StreamModel& model)
        : m_Input(input), m_Stream(stream), m_StreamModel(model) {}

    void Run() {
        // Behind the end everything fails alike, and exceptions are slow.
        for (int steps = 0; steps < 200 && m_iFailures < 2 && !m_Input.IsEmpty(); ++steps) {
            Step();
            CompareState();
        }
    }

private:
    void Step() {
        const unsigned step = m_Input.Byte();
        switch (step % 8) {
        case 0:
        case 1:
        case 2:
            Read(1 + step / 8 % 16);
            break;
        case 3:
            PeekAndStall(step / 8 % 17);
            break;
        case 4:
            Stall(step / 8 % 17, m_Input.Word());
            break;
        case 5: // A saved reader goes on where it stood.
            m_Reader = step / 8 % 2 != 0 ? BitStreamReader(&m_Stream, m_Reader.GetState())
                                         : Continued(&m_Stream);
            break;
        case 6:
            step / 8 % 2 != 0 ? ReadSegment() : CopyBytes(step / 16);
            break;
        default:
            if (step / 8 % 2 != 0)
                GiveBack();
            else
                SwitchToFresh();
        }
    }

    void Read(uint32_t count) {
        const std::optional<uint32_t> expected = m_Model.Read(m_StreamModel, count);
        const std::optional<uint32_t> actual = ReadFrom(m_Reader, count);
        Check(actual == expected, "a read gives other bits");
    }

    /// Reads 16 bits and puts some of them back, as the Huffman decoder does.
    void PeekAndStall(uint32_t used) {
        const std::optional<uint32_t> peeked = m_Model.Read(m_StreamModel, 16);
        Check(ReadFrom(m_Reader, 16) == peeked, "a peek gives other bits");
        if (peeked)
            Stall(16 - used, *peeked);
    }

    void Stall(uint32_t count, uint32_t bits) {
        const bool fits = m_Model.Stall(count, bits);
        try {
            m_Reader.StallStreamBits(count, bits);
            Check(fits, "a stall beyond the window is taken");
        } catch (const std::invalid_argument& exception) {
            Check(!fits, "a stall within the window is refused");
            Check(exception.what() ==
                      std::string_view("The given arguments to StallStreamBits would overflow the "
                                       "internal buffer!"),
                  "another text for a stall");
            ++m_iFailures;
        }
    }

    /// The bits in hand, followed by bytes of a job's own, are read by a reader of their own.
    void ReadSegment() {
        const std::span<const uint8_t> bytes = m_Input.Take(m_Input.Below(8));
        std::array<uint8_t, 8> memory{};
        // Ends where the array does, so that a sanitizer sees a read behind it.
        uint8_t* const copy = memory.end() - bytes.size();
        std::ranges::copy(bytes, copy);
        StreamModel segmentModel(bytes, memory.size());
        ReaderModel reader = m_Model;
        libimagedecoder::StreambufferArray segment(nullptr, copy, bytes.size());
        BitStreamReader continued = Continued(&segment);
        for (unsigned reads = m_Input.Below(16); reads > 0; --reads) {
            const uint32_t count = 1 + m_Input.Below(16);
            const std::optional<uint32_t> expected = reader.Read(segmentModel, count);
            Check(ReadFrom(continued, count) == expected, "a continued reader gives other bits");
            Check(segment.GetPosition() == segmentModel.Position() &&
                      segment.GetPaddingCount() == segmentModel.Padding(),
                  "another position in a segment");
            if (!expected)
                return;
        }
    }

    /// count: 0 to 15.
    void CopyBytes(size_t count) {
        std::array<uint8_t, 16> expected{};
        size_t available = 0;
        while (available < count) {
            const auto byte = m_StreamModel.NextOfStream();
            if (!byte)
                break;
            expected[available++] = *byte;
        }
        std::array<uint8_t, 16> actual{};
        try {
            m_Stream.CopyBytes(actual.data(), count);
            Check(available == count, "bytes are copied that are not there");
            Check(actual == expected, "other bytes are copied");
        } catch (const ImageDecoderException& exception) {
            Check(available < count && exception.what() == OutOfBytes, "a copy fails");
            ++m_iFailures;
        }
    }

    void GiveBack() {
        const size_t count = m_Model.heldBits / 8;
        m_StreamModel.GiveBack(count);
        m_Stream.GiveBackBytes(count);
        SwitchToFresh();
    }

    void SwitchToFresh() {
        m_Model = {};
        m_Reader.SetState({});
    }

    BitStreamReader Continued(IStreambuffer* stream) const {
        const BitReaderState& state = m_Reader.GetState();
        return {stream, state.m_uiWindow, state.m_uiWindowBits, state.m_uiReserve,
                state.m_uiReserveBits};
    }

    std::optional<uint32_t> ReadFrom(BitStreamReader& reader, uint32_t count) {
        try {
            return count == 1 ? reader.ReadStreamBit() : reader.ReadStreamBits(count);
        } catch (const ImageDecoderException& exception) {
            Check(exception.what() == OutOfBytes, "another text for the end");
            ++m_iFailures;
            return std::nullopt;
        }
    }

    void CompareState() const {
        const BitReaderState& state = m_Reader.GetState();
        const size_t held = m_Model.heldBits;
        Check(state.HeldBits() == held, "another number of bits in hand");
        Check(state.m_uiWindowBits == m_Model.windowBits, "another number of bits in the window");
        Check(state.m_uiWindow == m_Model.Value(0, m_Model.windowBits), "another window");
        Check(state.m_uiReserve == m_Model.Value(m_Model.windowBits, held), "another reserve");
        Check(m_Stream.GetPosition() == m_StreamModel.Position(), "another position");
        Check(m_Stream.GetPaddingCount() == m_StreamModel.Padding(), "another padding count");
    }

    FuzzInput& m_Input;
    GuardedStreambuffer& m_Stream;
    StreamModel& m_StreamModel;
    BitStreamReader m_Reader{&m_Stream, 0, 0, 0, 0};
    ReaderModel m_Model;
    int m_iFailures = 0;
};

} // namespace
} // namespace Vostrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace Vostrel::fuzz;
    FuzzInput input(data, size);
    const size_t piece = 1 + input.Below(16);
    const std::span<const uint8_t> bytes = input.Take(input.Below(64));
    static GuardedStreambuffer stream(nullptr);
    stream.Load(bytes, piece);
    StreamModel model(bytes, piece);
    Script(input, stream, model).Run();
    return 0;
}
