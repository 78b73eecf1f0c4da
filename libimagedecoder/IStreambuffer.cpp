#include "libimagedecoder/IStreambuffer.h"

#include "libimagedecoder/ImageDecoderException.h"

#include <algorithm>
#include <cstring>

namespace Vostrel::libimagedecoder {
namespace {

constexpr size_t MaxPaddingBytes = 2;

[[noreturn]] void ThrowOutOfBytes() {
    throw ImageDecoderException("Stream has no more bytes!");
}

} // namespace

void IStreambuffer::ResetBufferState() {
    m_puiData = nullptr;
    m_uiCapacity = 0;
    m_uiSize = 0;
    m_uiPosition = 0;
    m_uiPaddingCount = 0;
}

uint8_t IStreambuffer::ReadPadding() {
    if (m_uiPaddingCount >= MaxPaddingBytes)
        ThrowOutOfBytes();
    ++m_uiPaddingCount;
    return 0;
}

void IStreambuffer::CopyBytes(uint8_t* destination, size_t count) {
    while (count > 0) {
        if (m_uiPosition >= m_uiSize && !Refill())
            ThrowOutOfBytes();
        const size_t piece = std::min(count, m_uiSize - m_uiPosition);
        std::memcpy(destination, m_puiData + m_uiPosition, piece);
        m_uiPosition += piece;
        destination += piece;
        count -= piece;
    }
}

void IStreambuffer::GiveBackBytes(size_t count) {
    if (count <= m_uiPaddingCount)
        return;
    m_uiPosition -= std::min(m_uiPosition, count - m_uiPaddingCount);
}

uint8_t IStreambuffer::FetchByteBeyondWindow() {
    if (!Refill())
        return ReadPadding();
    return m_puiData[m_uiPosition++];
}

/// Fetches the next window; false, with size and position untouched, when the stream has ended.
bool IStreambuffer::Refill() {
    if (m_bEndOfStream)
        return false;
    const size_t size = ReadFromBuffer();
    if (size == 0) {
        m_bEndOfStream = true;
        return false;
    }
    m_uiSize = size;
    m_uiPosition = 0;
    return true;
}

} // namespace Vostrel::libimagedecoder
