#pragma once

#include "libimagedecoder/BitRegister.h"
#include "libimagedecoder/BitStreamReader.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace Vostrel::libimagedecoder {

/// The bytes that a fast decoder works on: the stream's current window, with a register over them,
/// borrowed from a bit reader.
///
/// A fast decoder takes the register, decodes with it, and commits it. It need not look where the
/// window ends: a commit that goes past the end is refused, and the decoder gives the window back
/// and leaves the work to the plain decoder. So errors, refills and padding happen in the bit
/// reader only.
///
/// While the window is borrowed the reader is stale. GiveBack makes it what it would be had it read
/// everything itself. That is possible because its state follows from the position and from what
/// is left of its last 16-bit peek, of which it stalls what it does not use.
class StreamWindow {
public:
    /// Bytes that a decoder may touch between two checks for room, from the register's next load
    /// on; no decoder may ask for more.
    static constexpr size_t MaxRoom = 384;

    /// Bits that the plain decoders look at for a code; they stall what is not part of it.
    static constexpr unsigned int PeekBits = 16;

    /// Bytes that the register may be ahead of the position.
    static constexpr size_t ReadAhead = 8;

    /// Bytes after a stream's window that save copying the window's end.
    static constexpr size_t SlackBytes = MaxRoom + ReadAhead;

    /// room: 16..MaxRoom, what the decoder needs.
    /// readableAfter: bytes of memory after the stream's window that may be read, whatever they
    /// hold.
    StreamWindow(BitStreamReader& reader, size_t room, size_t readableAfter)
        : m_Reader(reader), m_uiRoom(room), m_bReadableAfter(readableAfter >= SlackBytes) {}

    StreamWindow(const StreamWindow&) = delete;
    StreamWindow& operator=(const StreamWindow&) = delete;

    /// Makes sure that the window is borrowed and has room. False: the reader cannot lend it now,
    /// since it holds bits of an earlier window or padding.
    bool IsReady() {
        if (!m_bBorrowed && !Borrow()) [[unlikely]]
            return false;
        MakeRoom();
        return true;
    }

    bool IsBorrowed() const { return m_bBorrowed; }

    // Of a borrowed window:

    const BitRegister& GetBits() const { return m_Bits; }

    /// The window's bytes, or its last ones.
    const uint8_t* GetBytes() const { return m_puiBytes; }
    size_t GetSize() const { return m_uiSize; }

    /// Of the next bit, counted from GetBytes().
    size_t GetPosition() const { return m_Bits.Position(m_puiBytes); }

    /// Bits of its last peek that the reader would have stalled, 0..16.
    unsigned int GetWindowBits() const { return m_uiWindowBits; }

    /// Bytes up to which the reader would have fetched, counted from GetBytes().
    size_t GetFetchedBytes() const { return BytesUpTo(GetPosition() + m_uiWindowBits); }

    /// Moves to where a register stands, unless the reader would have needed a byte past the
    /// window's end; windowBits: what it would have stalled.
    bool Commit(const BitRegister& bits, unsigned int windowBits) {
        if (bits.Next() > m_puiSurelyInside &&
            BytesUpTo(bits.Position(m_puiBytes) + windowBits) > m_uiSize) [[unlikely]]
            return false;
        m_Bits = bits;
        m_uiWindowBits = windowBits;
        return true;
    }

    /// The same for bits that were read without a peek: what was stalled is used up first.
    bool CommitRead(const BitRegister& bits, unsigned int count) {
        return Commit(bits, m_uiWindowBits > count ? m_uiWindowBits - count : 0);
    }

    /// Moves to the start of a byte, at most GetSize(); the reader would hold nothing there.
    void MoveToByte(size_t byte);

    /// Makes the reader current.
    void GiveBack();

private:
    static constexpr size_t BytesUpTo(size_t bitPosition) { return (bitPosition + 7) / 8; }

    void MakeRoom() {
        if (m_Bits.Next() > m_puiRoomEnd) [[unlikely]]
            CopyTail(GetPosition());
    }

    bool Borrow();
    void SetBytes(const uint8_t* bytes, size_t size);
    void CopyTail(size_t position);

    BitStreamReader& m_Reader;
    size_t m_uiRoom;
    bool m_bReadableAfter;
    bool m_bBorrowed = false;
    BitRegister m_Bits;
    const uint8_t* m_puiBytes = nullptr;        ///< the window, or its tail
    const uint8_t* m_puiRoomEnd = nullptr;      ///< up to here the register has room
    size_t m_uiBase = 0;                        ///< byte of the window where m_puiBytes starts
    size_t m_uiSize = 0;                        ///< bytes of the window from there on
    const uint8_t* m_puiSurelyInside = nullptr; ///< up to here the register needs no closer look
    unsigned int m_uiWindowBits = 0;
    /// The window's last bytes, and zeros after them.
    std::array<uint8_t, 2 * SlackBytes> m_auiTail;
};

} // namespace Vostrel::libimagedecoder
