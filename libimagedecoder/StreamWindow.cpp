#include "libimagedecoder/StreamWindow.h"

#include <algorithm>
#include <cstring>

namespace Vostrel::libimagedecoder {
namespace {

/// What a reader holds at a position of its window, of whose last peek windowBits are stalled.
BitReaderState StateAt(const uint8_t* bytes, size_t position, unsigned int windowBits) {
    const size_t windowEnd = position + windowBits;
    const size_t fetchedBytes = (windowEnd + 7) / 8;
    uint32_t held = 0;
    for (size_t byte = position / 8; byte < fetchedBytes; ++byte)
        held = held << 8 | bytes[byte];
    BitReaderState state;
    state.m_uiWindowBits = windowBits;
    state.m_uiReserveBits = static_cast<uint32_t>(fetchedBytes * 8 - windowEnd);
    state.m_uiReserve = held & ((1u << state.m_uiReserveBits) - 1);
    state.m_uiWindow = held >> state.m_uiReserveBits & ((1u << windowBits) - 1);
    return state;
}

} // namespace

/// Takes the reader's position, if all bits that the reader holds come from the current window.
/// After a refill, and for a reader that was made with bits from elsewhere, they may be others.
bool StreamWindow::Borrow() {
    const IStreambuffer& stream = m_Reader.GetStream();
    const BitReaderState& state = m_Reader.GetState();
    const size_t fetchedBits = stream.GetPosition() * 8;
    if (stream.GetSize() == 0 || stream.GetPaddingCount() != 0 || fetchedBits < state.HeldBits() ||
        state.m_uiReserveBits >= 8 || state.m_uiWindowBits > PeekBits)
        return false;
    const size_t position = fetchedBits - state.HeldBits();
    if (state != StateAt(stream.GetWindow(), position, state.m_uiWindowBits))
        return false;
    m_bBorrowed = true;
    SetBytes(stream.GetWindow(), stream.GetSize());
    m_uiBase = 0;
    m_uiWindowBits = state.m_uiWindowBits;
    if (m_bReadableAfter) {
        m_puiRoomEnd = m_puiBytes + m_uiSize + ReadAhead;
        m_Bits = BitRegister(m_puiBytes, position);
    } else if (position / 8 + m_uiRoom + ReadAhead <= m_uiSize) {
        m_puiRoomEnd = m_puiBytes + m_uiSize - m_uiRoom;
        m_Bits = BitRegister(m_puiBytes, position);
    } else {
        CopyTail(position);
    }
    return true;
}

void StreamWindow::SetBytes(const uint8_t* bytes, size_t size) {
    constexpr size_t WindowBytes = PeekBits / 8;
    m_puiBytes = bytes;
    m_uiSize = size;
    m_puiSurelyInside = bytes + size - std::min(size, WindowBytes);
}

/// Goes on in a copy of the window's bytes from a position on.
void StreamWindow::CopyTail(size_t position) {
    const size_t firstByte = position / 8;
    const size_t tailBytes = m_uiSize - firstByte;
    std::memcpy(m_auiTail.data(), m_puiBytes + firstByte, tailBytes);
    std::memset(m_auiTail.data() + tailBytes, 0, m_uiRoom + ReadAhead);
    SetBytes(m_auiTail.data(), tailBytes);
    m_puiRoomEnd = m_puiBytes + tailBytes + ReadAhead;
    m_uiBase += firstByte;
    m_Bits = BitRegister(m_puiBytes, position % 8);
}

void StreamWindow::MoveToByte(size_t byte) {
    m_uiWindowBits = 0;
    if (m_puiBytes + byte + ReadAhead > m_puiRoomEnd)
        CopyTail(8 * byte);
    else
        m_Bits = BitRegister(m_puiBytes, 8 * byte);
}

void StreamWindow::GiveBack() {
    if (!m_bBorrowed)
        return;
    m_bBorrowed = false;
    m_Reader.SetState(StateAt(m_puiBytes, GetPosition(), m_uiWindowBits));
    m_Reader.GetStream().SetPosition(m_uiBase + GetFetchedBytes());
}

} // namespace Vostrel::libimagedecoder
