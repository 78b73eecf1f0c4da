#pragma once

#include "libimagedecoder/LbePlaneDecoder.h"

#include <cstddef>
#include <cstdint>

namespace Vostrel::libimagedecoder {

/// Samples of one plane of a block as the fast kernels write them: their low bytes, and their high
/// bytes apart. Only literals of more than eight bits have the latter.
///
/// Zeros precede either, which is what a run copies from before the first sample, and a kernel may
/// write whole vectors across the plane's end.
class LbePlaneBytes {
public:
    static constexpr size_t VectorBytes = 16;

    LbePlaneBytes();

    uint8_t* Low() { return m_auiStorage + VectorBytes; }
    uint8_t* High() { return Low() + HighOffset; }
    const uint8_t* Low() const { return m_auiStorage + VectorBytes; }
    const uint8_t* High() const { return Low() + HighOffset; }

    /// From a sample's low byte to its high byte.
    static constexpr size_t HighOffset = LbePlaneBuffer::MaxSamples + 2 * VectorBytes;

    static constexpr bool HasHigh(const LbePlaneFormat& format) {
        return format.m_uiLiteralBits > 8;
    }

    /// Takes over the samples of a plane that was decoded otherwise.
    void Assign(const uint16_t* samples, size_t count);

private:
    alignas(VectorBytes) uint8_t m_auiStorage[2 * HighOffset];
};

/// Decodes a plane like DecodeLbePlane from memory, and returns the position behind it. Any bits
/// are a plane; whether they all belong to the stream is for the caller to find out.
/// position: of the plane's first bit, counted from bytes. LbePlaneRoom bytes from that bit's on
/// are readable. format: literals of 2..10 bits, counts of 6 or 8, rows of 8 or 16 samples.
using LbePlaneKernel = size_t (*)(const uint8_t* bytes, size_t position,
                                  const LbePlaneFormat& format, LbePlaneBytes& plane);

/// For every processor.
size_t DecodeLbePlaneNative(const uint8_t* bytes, size_t position, const LbePlaneFormat& format,
                            LbePlaneBytes& plane);

/// For processors with SSSE3.
size_t DecodeLbePlaneSsse3(const uint8_t* bytes, size_t position, const LbePlaneFormat& format,
                           LbePlaneBytes& plane);

/// Bytes that a kernel may touch from the one with the plane's first bit on. No code takes more
/// bits a sample than a literal or, where literals are short, a count of the shortest run; the last
/// code may be cut off by the plane's end. Behind it the bit register reads ahead.
constexpr size_t LbePlaneRoom(const LbePlaneFormat& format) {
    constexpr size_t CountedRunBits = 7 + 8;
    constexpr size_t ReadAhead = 16;
    const size_t literalBits = 1 + format.m_uiLiteralBits;
    const size_t sampleBits = literalBits > CountedRunBits / 3 ? literalBits : CountedRunBits / 3;
    const size_t bits = 7 + format.m_uiSamples * sampleBits + CountedRunBits;
    return bits / 8 + 1 + ReadAhead;
}

} // namespace Vostrel::libimagedecoder
