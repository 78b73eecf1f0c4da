#pragma once

#include "libimagedecoder/BitStreamReader.h"
#include "libimagedecoder/StreamWindow.h"
#include "tests/support/PiecewiseStreambuffer.h"

#include <gtest/gtest.h>
#include <vector>

namespace Vostrel::libimagedecoder {

/// One reader over a stream in pieces. The tests of a cursor have two of them, for the plain
/// decoder and for the fast one.
struct CursorRoad {
    CursorRoad(const std::vector<uint8_t>& bytes, size_t capacity) {
        m_Stream.Load(bytes, capacity);
    }

    tests::PiecewiseStreambuffer m_Stream{nullptr};
    BitStreamReader m_Reader{&m_Stream, 0, 0, 0, 0};
};

/// The next 1 to 16 bits: from the window, or by its reader where the window declines.
inline uint32_t ReadBits(StreamWindow& window, BitStreamReader& reader, uint32_t count) {
    if (window.IsReady()) {
        BitRegister bits = window.GetBits();
        bits.Refill();
        const auto value = static_cast<uint32_t>(bits.Peek(count));
        bits.Skip(count);
        if (window.CommitRead(bits, count))
            return value;
    }
    window.GiveBack();
    return reader.ReadStreamBits(count);
}

inline void ExpectSameState(const CursorRoad& a, const CursorRoad& b) {
    const BitReaderState& stateA = a.m_Reader.GetState();
    const BitReaderState& stateB = b.m_Reader.GetState();
    EXPECT_EQ(stateA.m_uiWindow, stateB.m_uiWindow);
    EXPECT_EQ(stateA.m_uiWindowBits, stateB.m_uiWindowBits);
    EXPECT_EQ(stateA.m_uiReserve, stateB.m_uiReserve);
    EXPECT_EQ(stateA.m_uiReserveBits, stateB.m_uiReserveBits);
    EXPECT_EQ(a.m_Stream.GetPosition(), b.m_Stream.GetPosition());
    EXPECT_EQ(a.m_Stream.GetPaddingCount(), b.m_Stream.GetPaddingCount());
    EXPECT_EQ(a.m_Stream.GetConsumedBytes(), b.m_Stream.GetConsumedBytes());
    EXPECT_EQ(a.m_Stream.IsEndOfStream(), b.m_Stream.IsEndOfStream());
}

} // namespace Vostrel::libimagedecoder
