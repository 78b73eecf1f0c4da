// A script of reads, peeks, stalls and saved and continued readers over a stream that arrives in
// pieces, against a model that holds single bits.

#include "fuzz/FuzzCheck.h"
#include "fuzz/FuzzInput.h"
#include "libimagedecoder/BitStreamReader.h"
#include "libimagedecoder/ImageDecoderException.h"
#include "libimagedecoder/StreambufferArray.h"
#include "tests/support/PiecewiseStreambuffer.h"

#include <deque>
#include <optional>
#include <stdexcept>
#include <string>

namespace Vostrel::fuzz {
namespace {

using libimagedecoder::BitReaderState;
using libimagedecoder::BitStreamReader;
using libimagedecoder::ImageDecoderException;
using libimagedecoder::IStreambuffer;

constexpr const char* OutOfBytes = "Stream has no more bytes!";

/// The bytes of a stream, with its position counted from the start of the last piece.
class StreamModel {
public:
    StreamModel(std::vector<uint8_t> bytes, size_t piece)
        : m_vBytes(std::move(bytes)), m_uiPiece(piece) {}

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
            if (m_uiEnd == m_vBytes.size())
                return std::nullopt;
            m_uiBegin = m_uiEnd;
            m_uiEnd = std::min(m_vBytes.size(), m_uiEnd + m_uiPiece);
            m_uiPosition = 0;
        }
        return m_vBytes[m_uiBegin + m_uiPosition++];
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
    std::vector<uint8_t> m_vBytes;
    size_t m_uiPiece;
    size_t m_uiBegin = 0; ///< of the current piece
    size_t m_uiEnd = 0;
    size_t m_uiPosition = 0; ///< within it
    size_t m_uiPadding = 0;
};

/// A reader that keeps every bit by itself. Those in front, up to the window's size, are the
/// window: only their number matters, since a stall must not exceed it.
struct ReaderModel {
    std::deque<bool> bits;
    size_t windowBits = 0;

    /// Nothing when the stream has no more bytes; what it gave until then stays.
    std::optional<uint32_t> Read(StreamModel& stream, size_t count) {
        while (bits.size() < count) {
            const auto byte = stream.Next();
            if (!byte)
                return std::nullopt;
            for (int bit = 7; bit >= 0; --bit)
                bits.push_back((*byte >> bit & 1) != 0);
        }
        uint32_t value = 0;
        for (size_t i = 0; i < count; ++i) {
            value = value * 2 + (bits.front() ? 1 : 0);
            bits.pop_front();
        }
        windowBits = windowBits >= count ? windowBits - count : 0;
        return value;
    }

    /// Stalled bits go behind those of the window, which a proper user has emptied before.
    bool Stall(size_t count, uint32_t value) {
        if (windowBits + count > 16)
            return false;
        for (size_t i = 0; i < count; ++i)
            bits.insert(bits.begin() + static_cast<long>(windowBits), (value >> i & 1) != 0);
        windowBits += count;
        return true;
    }

    uint32_t Value(size_t from, size_t to) const {
        uint32_t value = 0;
        for (size_t i = from; i < to; ++i)
            value = value * 2 + (bits[i] ? 1 : 0);
        return value;
    }
};

class Script {
public:
    Script(FuzzInput& input, tests::PiecewiseStreambuffer& stream, StreamModel& model)
        : m_Input(input), m_Stream(stream), m_StreamModel(model) {}

    void Run() {
        // Behind the end everything fails, and exceptions are slow.
        for (int steps = 0; steps < 200 && m_iFailures < 3 && !m_Input.IsEmpty(); ++steps) {
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
                      std::string("The given arguments to StallStreamBits would overflow the "
                                  "internal buffer!"),
                  "another text for a stall");
        }
    }

    /// The bits in hand, followed by bytes of a job's own, are read by a reader of their own.
    void ReadSegment() {
        std::vector<uint8_t> bytes = m_Input.Take(m_Input.Below(8));
        StreamModel segmentModel(bytes, 8);
        ReaderModel reader = m_Model;
        libimagedecoder::StreambufferArray segment(nullptr, bytes.data(), bytes.size());
        BitStreamReader continued = Continued(&segment);
        for (;;) {
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

    void CopyBytes(size_t count) {
        std::vector<uint8_t> expected;
        bool dry = false;
        while (expected.size() < count && !dry) {
            const auto byte = m_StreamModel.NextOfStream();
            dry = !byte;
            if (byte)
                expected.push_back(*byte);
        }
        std::vector<uint8_t> actual(count);
        try {
            m_Stream.CopyBytes(actual.data(), count);
            Check(!dry, "bytes are copied that are not there");
            Check(actual == expected, "other bytes are copied");
        } catch (const ImageDecoderException& exception) {
            Check(dry && exception.what() == std::string(OutOfBytes), "a copy fails");
        }
    }

    void GiveBack() {
        const size_t count = m_Model.bits.size() / 8;
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
            Check(exception.what() == std::string(OutOfBytes), "another text for the end");
            ++m_iFailures;
            return std::nullopt;
        }
    }

    void CompareState() const {
        const BitReaderState& state = m_Reader.GetState();
        const size_t held = m_Model.bits.size();
        Check(state.HeldBits() == held, "another number of bits in hand");
        Check(state.m_uiWindowBits == m_Model.windowBits, "another number of bits in the window");
        Check(state.m_uiWindow == m_Model.Value(0, m_Model.windowBits), "another window");
        Check(state.m_uiReserve == m_Model.Value(m_Model.windowBits, held), "another reserve");
        Check(m_Stream.GetPosition() == m_StreamModel.Position(), "another position");
        Check(m_Stream.GetPaddingCount() == m_StreamModel.Padding(), "another padding count");
    }

    FuzzInput& m_Input;
    tests::PiecewiseStreambuffer& m_Stream;
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
    const std::vector<uint8_t> bytes = input.Take(input.Below(64));
    Vostrel::tests::PiecewiseStreambuffer stream(nullptr);
    stream.Load(bytes, piece);
    StreamModel model(bytes, piece);
    Script(input, stream, model).Run();
    return 0;
}
