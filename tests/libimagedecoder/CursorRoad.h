#pragma once

#include "libimagedecoder/BitStreamReader.h"
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
