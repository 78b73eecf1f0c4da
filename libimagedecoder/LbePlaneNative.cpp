#include "libimagedecoder/BitRegister.h"
#include "libimagedecoder/LbePlaneKernel.h"
#include "libimagedecoder/LbeTokens.h"

#include <algorithm>
#include <cstring>

namespace Vostrel::libimagedecoder {
namespace {

/// Sixteen bytes to write again and again: one value, or the last row or two.
struct Pattern {
    uint64_t m_uiFirst;
    uint64_t m_uiSecond;

    static Pattern OfValue(size_t value) {
        const uint64_t bytes = value * 0x0101010101010101;
        return {bytes, bytes};
    }

    static Pattern OfRowsAbove(const uint8_t* out, size_t rowWidth) {
        Pattern pattern;
        std::memcpy(&pattern.m_uiFirst, out - rowWidth, sizeof pattern.m_uiFirst);
        std::memcpy(&pattern.m_uiSecond, out - sizeof pattern.m_uiSecond,
                    sizeof pattern.m_uiSecond);
        return pattern;
    }

    void Write(uint8_t* out) const { std::memcpy(out, this, sizeof *this); }

    void Write(uint8_t* out, size_t count) const {
        for (size_t i = 0; i < count; i += sizeof *this)
            Write(out + i);
    }
};

/// One plane on its way. Runs of up to 16 samples write 16 without asking how many are wanted. A
/// literal is a run from the left of a new value, so that the two need no branch between them:
/// where they alternate is what a processor cannot foresee.
template <bool HasHigh>
class PlaneDecoder {
public:
    PlaneDecoder(const uint8_t* bytes, size_t position, const LbePlaneFormat& format,
                 LbePlaneBytes& plane)
        : m_puiBytes(bytes), m_Bits(bytes, position), m_Format(format),
          m_pTokens(LbeTokens::Of(format.m_uiLiteralBits).m_aTokens), m_puiOut(plane.Low()),
          m_puiEnd(m_puiOut + format.m_uiSamples) {}

    /// A refill is enough for four codes, or fewer and one with a count.
    size_t Decode() {
        for (;;) {
            m_Bits.Refill();
            for (int code = 0; code < 4; ++code) {
                const size_t index = m_Bits.Peek(LbeTokens::IndexBits);
                const LbeToken token = m_pTokens[index];
                if (token.m_uiRun != 0) [[likely]]
                    WriteShortRun(index, token);
                else
                    WriteLongRun(index);
                m_Bits.Skip(token.m_uiBits);
                if (m_puiOut >= m_puiEnd)
                    return m_Bits.Position(m_puiBytes);
                if (token.m_uiRun == 0)
                    break;
            }
        }
    }

private:
    /// A literal, or a run of up to sixteen samples. May pass the plane's end.
    void WriteShortRun(size_t index, const LbeToken& token) {
        if (LbeTokens::IsFromAbove(index)) {
            WriteFromAbove(LbePlaneBytes::VectorBytes);
            Advance(token.m_uiRun);
            return;
        }
        const size_t literal = m_Bits.Peek(1 + m_Format.m_uiLiteralBits);
        m_uiLast = token.m_uiLiteralMask != 0 ? literal : m_uiLast;
        WriteLast(LbePlaneBytes::VectorBytes);
        m_puiOut += token.m_uiRun;
    }

    /// A run with a count, or to the plane's end. The count follows the bits of the token.
    void WriteLongRun(size_t index) {
        size_t run = static_cast<size_t>(m_puiEnd - m_puiOut);
        if ((index & LbeTokens::ToPlaneEnd) == 0) {
            const uint32_t countBits = m_Format.m_uiLongRunBits;
            const size_t count =
                m_Bits.Peek(LbeTokens::IndexBits + countBits) & ((1u << countBits) - 1);
            run = std::min(run, count + LbeShortestLongRun);
            m_Bits.Skip(countBits);
        }
        if ((index & LbeTokens::FromLeft) != 0)
            WriteLast(run);
        else
            WriteFromAbove(run);
        Advance(run);
    }

    void WriteLast(size_t run) {
        Pattern::OfValue(m_uiLast & 0xFF).Write(m_puiOut, run);
        if (HasHigh)
            Pattern::OfValue(m_uiLast >> 8).Write(m_puiOut + LbePlaneBytes::HighOffset, run);
    }

    void WriteFromAbove(size_t run) {
        const size_t rowWidth = m_Format.m_uiRowWidth;
        Pattern::OfRowsAbove(m_puiOut, rowWidth).Write(m_puiOut, run);
        if (HasHigh) {
            uint8_t* const high = m_puiOut + LbePlaneBytes::HighOffset;
            Pattern::OfRowsAbove(high, rowWidth).Write(high, run);
        }
    }

    /// Moves behind samples that were copied.
    void Advance(size_t run) {
        m_puiOut += run;
        m_uiLast = m_puiOut[-1];
        if (HasHigh)
            m_uiLast |= size_t{m_puiOut[LbePlaneBytes::HighOffset - 1]} << 8;
    }

    const uint8_t* m_puiBytes;
    BitRegister m_Bits;
    const LbePlaneFormat& m_Format;
    const LbeToken* m_pTokens;
    uint8_t* m_puiOut; ///< low byte of the next sample
    uint8_t* m_puiEnd;
    size_t m_uiLast = 0; ///< sample before the next one
};

} // namespace

size_t DecodeLbePlaneNative(const uint8_t* bytes, size_t position, const LbePlaneFormat& format,
                            LbePlaneBytes& plane) {
    if (LbePlaneBytes::HasHigh(format))
        return PlaneDecoder<true>(bytes, position, format, plane).Decode();
    return PlaneDecoder<false>(bytes, position, format, plane).Decode();
}

} // namespace Vostrel::libimagedecoder
