// Changes fuzzed lives by the meaning of their bits: takes an update apart, edits a field of it and
// packs it again. Built twice, as UpdateFuzz.cpp is.

#include "fuzz/UpdateFields.h"
#include "fuzz/UpdateInput.h"
#include "libimagedecoder/HuffmanYCbCrDcAc.h"
#include "libimagedecoder/UpdateSyntax.h"
#include "tests/model/ModelDecoder.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <span>

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);

namespace Vostrel::fuzz {
namespace {

using Kind = BitField::Kind;
using Codes = libimagedecoder::HuffmanYCbCrDcAc;

constexpr bool Lbe = model::ModelCodec::FUZZED_CODEC == model::ModelCodec::Lbe;

class Mutator {
public:
    explicit Mutator(unsigned seed) : m_Engine(seed) {}

    unsigned Below(size_t bound) { return static_cast<unsigned>(m_Engine() % bound); }

    void Change(FuzzedLife& life) {
        if (life.m_vUpdates.empty() || Below(6) == 0)
            ChangeUpdates(life);
        else
            ChangePayload(life, life.m_vUpdates[Below(life.m_vUpdates.size())]);
    }

private:
    void ChangeUpdates(FuzzedLife& life) {
        auto& updates = life.m_vUpdates;
        const auto place = updates.begin() + Below(updates.size() + 1);
        FuzzedUpdate good;
        good.m_uiKind = FuzzedUpdate::GoodUpdate;
        good.m_uiPiece = 255;
        if (updates.empty() || Below(3) == 0)
            updates.insert(place, good);
        else if (Below(2) == 0)
            updates.insert(place, FuzzedUpdate(updates[Below(updates.size())]));
        else
            updates.erase(updates.begin() + Below(updates.size()));
    }

    void ChangePayload(const FuzzedLife& life, FuzzedUpdate& update) {
        const UpdateCoding coding{Lbe, life.Version(), life.Chroma(), life.HasPool(),
                                  update.m_uiQuality};
        BitFields fields = ParseUpdate(update.m_Payload, coding);
        if (fields.empty())
            return;
        bool lengthsMatter = false;
        for (unsigned edits = 1 + Below(3); edits > 0 && !fields.empty(); --edits) {
            const size_t index = Below(fields.size());
            lengthsMatter |= fields[index].kind == Kind::Length;
            Below(8) == 0 ? ChangeRecords(fields, index) : Edit(fields, index, coding);
        }
        if (coding.pool && !lengthsMatter && Below(4) != 0)
            fields = WithLengthsRepaired(fields, coding);
        m_vPacked = PackFields(fields);
        update.m_Payload = m_vPacked;
    }

    /// Repeats or drops the record of a field.
    void ChangeRecords(BitFields& fields, size_t index) {
        const auto isSkip = [](const BitField& field) { return field.kind == Kind::Skip; };
        const auto at = fields.begin() + static_cast<long>(index);
        const auto end = std::find_if(at + 1, fields.end(), isSkip);
        auto begin = at;
        while (begin != fields.begin() && !isSkip(*begin))
            --begin;
        const BitFields record(begin, end);
        if (Below(2) == 0)
            fields.insert(end, record.begin(), record.end());
        else
            fields.erase(begin, end);
    }

    void Edit(BitFields& fields, size_t index, const UpdateCoding& coding) {
        switch (fields[index].kind) {
        case Kind::Skip:
            fields[index] = AnySkip(libimagedecoder::RulesOf(coding.version).m_uiLongSkipBits);
            break;
        case Kind::DcLuma:
            SetCode(fields, index, Codes::s_aDcLuminance);
            break;
        case Kind::AcLuma:
            SetCode(fields, index, Codes::s_aAcLuminance);
            break;
        case Kind::DcChroma:
            SetCode(fields, index, Codes::s_aDcChrominance);
            break;
        case Kind::AcChroma:
            SetCode(fields, index, Codes::s_aAcChrominance);
            break;
        default:
            fields[index].value = AnyValue(fields[index]);
        }
    }

    BitField AnySkip(unsigned longBits) {
        using namespace libimagedecoder;
        const uint32_t longPrefix = LongSkipPrefix << longBits;
        switch (Below(5)) {
        case 0:
            return {Kind::Skip, 0, 1};
        case 1:
            return {Kind::Skip, ShortSkipPrefix << ShortSkipBits | Below(1u << ShortSkipBits),
                    SkipPrefixBits + ShortSkipBits};
        case 2:
            return {Kind::Skip, longPrefix | Below(40), SkipPrefixBits + longBits};
        case 3:
            return {Kind::Skip, longPrefix | Below(size_t{1} << longBits),
                    SkipPrefixBits + longBits};
        default:
            return {Kind::Skip, (4u << longBits) - 1, SkipPrefixBits + longBits};
        }
    }

    /// Any other code of the table; the bits that follow it take the size that it announces.
    void SetCode(BitFields& fields, size_t index, std::span<const Codes::HuffCodeEntry> codes) {
        size_t symbol = Below(codes.size());
        while (codes[symbol].m_uiLength == 0)
            symbol = (symbol + 1) % codes.size();
        fields[index].value = codes[symbol].m_uiCode;
        fields[index].bits = codes[symbol].m_uiLength;
        const auto next = fields.begin() + static_cast<long>(index) + 1;
        const BitField value{Kind::Value, Below(2048), static_cast<unsigned>(symbol % 16)};
        if (next != fields.end() && next->kind == Kind::Value)
            *next = value;
        else
            fields.insert(next, value);
    }

    uint32_t AnyValue(const BitField& field) {
        const uint32_t largest = static_cast<uint32_t>((uint64_t{1} << field.bits) - 1);
        const uint32_t choices[] = {0,
                                    1,
                                    largest,
                                    largest - 1,
                                    field.value + 1,
                                    field.value - 1,
                                    field.value ^ 1u << Below(field.bits + 1),
                                    Below(size_t{largest} + 1)};
        return choices[Below(std::size(choices))] & largest;
    }

    std::minstd_rand m_Engine;
    std::vector<uint8_t> m_vPacked; ///< the payload that was changed
};

} // namespace
} // namespace Vostrel::fuzz

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize,
                                          unsigned int seed) {
    using namespace Vostrel::fuzz;
    Mutator mutator(seed);
    if (mutator.Below(3) != 0) {
        FuzzedLife life = ReadLife(data, size);
        mutator.Change(life);
        const std::vector<uint8_t> bytes = WriteLife(life);
        if (bytes.size() <= maxSize) {
            std::memcpy(data, bytes.data(), bytes.size());
            return bytes.size();
        }
    }
    return LLVMFuzzerMutate(data, size, maxSize);
}
