#pragma once

#include "tests/model/ModelStream.h"

#include <cstdint>

namespace Vostrel::model {

/// Reads a stream bit by bit, the most significant bit of a byte first. Bytes are fetched one at a
/// time and only when a read needs them.
class ModelBits {
public:
    explicit ModelBits(ModelStream& stream) : m_pStream(&stream) {}

    /// Continues with the bits that another reader holds and then with the bytes of a stream.
    ModelBits(ModelStream& stream, const ModelBits& heldBy)
        : m_pStream(&stream), m_uiHeld(heldBy.m_uiHeld), m_iHeldBits(heldBy.m_iHeldBits) {}

    /// The next count (1..16) bits as a number.
    int Read(int count);

    /// The next 16 bits, which stay in the reader.
    int Peek16();

    /// Drops bits that the reader holds.
    void Drop(int count);

    void Clear() { m_iHeldBits = 0; }
    int HeldBits() const { return m_iHeldBits; }
    ModelStream& Stream() { return *m_pStream; }

private:
    int Peek(int count);

    ModelStream* m_pStream;
    uint32_t m_uiHeld = 0; ///< its lowest m_iHeldBits bits, the next one on top
    int m_iHeldBits = 0;
};

} // namespace Vostrel::model
