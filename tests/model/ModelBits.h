#pragma once

#include "tests/model/ModelStream.h"

#include <deque>

namespace Vostrel::model {

/// Reads a stream bit by bit, the most significant bit of a byte first. Bytes are fetched one at a
/// time and only when a read needs them.
class ModelBits {
public:
    explicit ModelBits(ModelStream& stream) : m_pStream(&stream) {}

    /// Continues with the bits that another reader holds and then with the bytes of a stream.
    ModelBits(ModelStream& stream, const ModelBits& heldBy)
        : m_pStream(&stream), m_Held(heldBy.m_Held) {}

    /// The next count (1..16) bits as a number.
    int Read(int count);

    /// The next 16 bits, which stay in the reader.
    int Peek16();

    /// Drops bits that the reader holds.
    void Drop(int count);

    void Clear() { m_Held.clear(); }
    int HeldBits() const { return static_cast<int>(m_Held.size()); }
    ModelStream& Stream() { return *m_pStream; }

private:
    void Hold(int count);

    ModelStream* m_pStream;
    std::deque<bool> m_Held;
};

} // namespace Vostrel::model
