#include "tools/UpdateWriter.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace Vostrel::streamencoder {

using namespace libimagedecoder;

namespace {

constexpr size_t BytesTouched(size_t bits) {
    return (bits + 7) / 8;
}

SkipForm ShortestSkipForm(size_t skipped) {
    if (skipped == 0)
        return SkipForm::OneBit;
    return skipped < size_t{1} << ShortSkipBits ? SkipForm::SixBits : SkipForm::Long;
}

/// Throws std::invalid_argument for a version that does not exist.
const UpdateRules& CheckedRules(unsigned protocolVersion) {
    if (protocolVersion >= s_aUpdateRules.size())
        throw std::invalid_argument("The protocol version must be 0, 1 or 2");
    return RulesOf(protocolVersion);
}

} // namespace

UpdateWriter::UpdateWriter(const UpdateFormat& format)
    : m_format(format), m_rules(CheckedRules(format.m_uiProtocolVersion)) {
    const RecordLengthCode& code = LengthCodeOf(format.m_codec, m_rules);
    if (!code.HasTwoForms() || !format.m_bLongLengthPrefix)
        m_vLengthForms.push_back({0, code.PrefixBits(), code.m_uiShortBits});
    if (code.HasTwoForms())
        m_vLengthForms.push_back({1, code.PrefixBits(), code.m_uiLongBits});
}

void UpdateWriter::WriteSkip(size_t skipped) {
    const auto count = static_cast<uint32_t>(skipped);
    switch (std::max(ShortestSkipForm(skipped), m_format.m_minSkipForm)) {
    case SkipForm::OneBit:
        m_bits.Write(0b0, 1);
        break;
    case SkipForm::SixBits:
        m_bits.Write(ShortSkipPrefix, SkipPrefixBits);
        m_bits.Write(count, ShortSkipBits);
        break;
    case SkipForm::Long:
        m_bits.Write(LongSkipPrefix, SkipPrefixBits);
        m_bits.Write(count, m_rules.m_uiLongSkipBits);
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
    if (!LengthCodeOf(m_format.m_codec, m_rules).IsThere()) {
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
    m_bits.Write(LongSkipPrefix, SkipPrefixBits);
    m_bits.Write(m_rules.LongSkipEscape(), m_rules.m_uiLongSkipBits);
    return std::exchange(m_bits, BitWriter()).GetBytes();
}

} // namespace Vostrel::streamencoder
