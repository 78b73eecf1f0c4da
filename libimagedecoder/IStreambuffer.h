#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace Vostrel::libimagedecoder {

class ILogger;

/// Pull-model byte source: a window of bytes that a subclass refills on demand, followed by at most
/// two zero bytes of padding, so that a bit reader may look past the true end of the data.
///
/// Thread safety: one thread at a time.
class IStreambuffer {
public:
    /// The logger is not owned and must outlive the stream; it may be null.
    explicit IStreambuffer(ILogger* logger) : m_pLogger(logger) {}
    virtual ~IStreambuffer() = default;

    IStreambuffer(const IStreambuffer&) = delete;
    IStreambuffer& operator=(const IStreambuffer&) = delete;

    /// Places the next bytes of the stream at the start of the window, at most the capacity, and
    /// returns how many there are; 0 means that the stream has no more bytes. May replace the
    /// window, but leaves size and position to the caller.
    virtual size_t ReadFromBuffer() = 0;

    /// Empties the window and restores the padding allowance. A set end-of-stream flag stays set.
    void ResetBufferState();

    /// The next byte, refilling the window or falling back to padding where needed.
    /// Throws ImageDecoderException "Stream has no more bytes!" for the third byte past the end.
    uint8_t FetchByte() {
        if (m_uiPosition < m_uiSize) [[likely]]
            return m_puiData[m_uiPosition++];
        return FetchByteBeyondWindow();
    }

    /// Hands out one zero byte past the end; at most two between two resets, then throws
    /// ImageDecoderException "Stream has no more bytes!".
    uint8_t ReadPadding();

    /// Copies the next count bytes to destination. Padding is never copied: throws
    /// ImageDecoderException "Stream has no more bytes!" when the stream runs dry.
    void CopyBytes(uint8_t* destination, size_t count);

    /// Takes back count whole bytes that a bit reader fetched but did not use. Bytes that came from
    /// padding are not given back, and the position never moves before the start of the window.
    void GiveBackBytes(size_t count);

    /// The current window, for whoever reads ahead in it and then tells how far: GetSize() bytes.
    const uint8_t* GetWindow() const { return m_puiData; }

    /// What the window holds from the position on.
    std::span<const uint8_t> GetUnread() const {
        return {m_puiData + m_uiPosition, m_uiSize - m_uiPosition};
    }

    /// Moves within the current window; position is at most GetSize().
    void SetPosition(size_t position) { m_uiPosition = position; }

    size_t GetSize() const { return m_uiSize; }
    size_t GetPosition() const { return m_uiPosition; }
    size_t GetPaddingCount() const { return m_uiPaddingCount; }
    bool IsEndOfStream() const { return m_bEndOfStream; }

protected:
    uint8_t* m_puiData = nullptr; ///< the window; who owns it is the subclass's business
    size_t m_uiCapacity = 0;      ///< the most that one refill may place, 0 without refills
    size_t m_uiSize = 0;          ///< valid bytes in the window
    size_t m_uiPosition = 0;      ///< next byte to read
    size_t m_uiPaddingCount = 0;  ///< zero bytes handed out past the end, 0..2
    bool m_bEndOfStream = false;  ///< a refill has yielded nothing
    ILogger* m_pLogger;

private:
    uint8_t FetchByteBeyondWindow();
    bool Refill();
};

} // namespace Vostrel::libimagedecoder
