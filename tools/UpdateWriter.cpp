#include "tools/UpdateWriter.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace Vostrel::streamencoder {

namespace {

constexpr size_t BytesTouched(size_t bits) {
    return (bits + 7) / 8;
}

SkipForm ShortestSkipForm(size_t skipped) {
    if (skipped == 0)
        return SkipForm::OneBit;
    return skipped < 64 ? SkipForm::SixBits : SkipForm::Long;
}

} // namespace

UpdateWriter::UpdateWriter(const UpdateFormat& format)
    : m_format(format), m_uiLongCountBits(format.m_uiProtocolVersion == 0 ? 14 : 16),
      m_uiEndMarker((1U << m_uiLongCountBits) - 1) {
    if (format.m_uiProtocolVersion > 2)
        throw std::invalid_argument("The protocol version must be 0, 1 or 2");
    if (format.m_codec == Codec::Ict) {
        m_vLengthForms = {{0, 0, 8}};
    } else {
        m_vLengthForms = {{0, 1, 7}, {1, 1, 10}};
        if (format.m_bLongLengthPrefix)
            m_vLengthForms.erase(m_vLengthForms.begin());
    }
}

void UpdateWriter::WriteSkip(size_t skipped) {
    const auto count = static_cast<uint32_t>(skipped);
    switch (std::max(ShortestSkipForm(skipped), m_format.m_minSkipForm)) {
    case SkipForm::OneBit:
        m_bits.Write(0b0, 1);
        break;
    case SkipForm::SixBits:
        m_bits.Write(0b10, 2);
        m_bits.Write(count, 6);
        break;
    case SkipForm::Long:
        m_bits.Write(0b11, 2);
        m_bits.Write(count, m_uiLongCountBits);
        break;
    }
}

// A length counts the bytes of a record from the start of its skip code. Behind a block that was
// decoded in place a record starts amid a byte, which the decoder holds in its bit reader and does
// not count among the bytes to fetch: then the length counts from the first whole byte.
UpdateWriter::LengthField UpdateWriter::ChooseLength(size_t recordStart, size_t blockBits) const {
    if (m_format.m_layout != RecordLayout::InPlace) {
        for (const LengthForm& form : m_vLengthForms) {
            const size_t recordEnd =
                m_bits.GetBitCount() + form.m_uiPrefixBits + form.m_uiNumberBits + blockBits;
            const size_t length =
                BytesTouched(recordEnd) - BytesTouched(recordStart) + m_format.m_uiRecordPadding;
            if (length < size_t{1} << form.m_uiNumberBits)
                return {form, static_cast<uint32_t>(length)};
        }
    }
    return {m_vLengthForms.front(), 0};
}

void UpdateWriter::WriteLength(const LengthField& field) {
    m_bits.Write(field.m_form.m_uiPrefix, field.m_form.m_uiPrefixBits);
    m_bits.Write(field.m_uiNumber, field.m_form.m_uiNumberBits);
}

void UpdateWriter::WriteBlock(size_t skipped, const BitWriter& block) {
    if (skipped > GetMaxSkip())
        throw std::invalid_argument("A skip code cannot pass over so many blocks");

    const size_t recordStart = m_bits.GetBitCount();
    WriteSkip(skipped);
    if (m_format.m_uiProtocolVersion < 2) {
        m_bits.Append(block);
        return;
    }

    const LengthField length = ChooseLength(recordStart, block.GetBitCount());
    WriteLength(length);
    m_bits.Append(block);
    if (m_format.m_layout == RecordLayout::Pool && length.m_uiNumber != 0) {
        m_bits.AlignToByte();
        for (unsigned i = 0; i < m_format.m_uiRecordPadding; ++i) {
            m_bits.Write(0, 8);
        }
    }
}

std::vector<uint8_t> UpdateWriter::Finish() {
    m_bits.Write(0b11, 2);
    m_bits.Write(m_uiEndMarker, m_uiLongCountBits);
    return std::exchange(m_bits, BitWriter()).GetBytes();
}

} // namespace Vostrel::streamencoder
