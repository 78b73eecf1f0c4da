#pragma once

#include "fuzz/FuzzCheck.h"
#include "libimagedecoder/IctCodingTables.h"
#include "libimagedecoder/IctFastTables.h"
#include "libimagedecoder/IctTileCursor.h"
#include "libimagedecoder/ImageDecoderIct.h"

#include <array>
#include <cstdint>

namespace Vostrel::fuzz {

/// The fast road through tiles as the tile harness drives it: the one place that knows the cursor's
/// interface.
class TileCursorUnderTest {
public:
    enum class Outcome { Declined, Flat, Full };

    explicit TileCursorUnderTest(libimagedecoder::BitStreamReader& reader) : m_Cursor(reader) {}

    /// The tables of a component with any multipliers, which are indexed by slot.
    static libimagedecoder::IctTileTables
    Tables(const libimagedecoder::ImageDecoderIct& decoder, bool luma,
           const std::array<uint8_t, libimagedecoder::TileCoefficients>& slots,
           const std::array<int32_t, libimagedecoder::TileCoefficients>& multipliers) {
        using namespace libimagedecoder;
        using Codes = HuffmanYCbCrDcAc;
        static IctFastTables lumaTables(Codes::s_aDcLuminance, Codes::s_aAcLuminance);
        static IctFastTables chromaTables(Codes::s_aDcChrominance, Codes::s_aAcChrominance);
        const IctComponent component = luma ? ComponentY : ComponentCb;
        IctFastTables& fast = luma ? lumaTables : chromaTables;
        fast.SetDequantisation(slots, multipliers);
        return {&fast, decoder.GetDcTable(component).data(), decoder.GetAcTable(component).data()};
    }

    Outcome Decode(const libimagedecoder::IctTileTables& tables, int& predictor,
                   int16_t* coefficients) {
        using Its = libimagedecoder::IctTileCursor::Outcome;
        switch (m_Cursor.DecodeTile(tables, predictor, coefficients)) {
        case Its::Flat:
            return Outcome::Flat;
        case Its::Low:
            CheckLow(tables, coefficients);
            return Outcome::Full;
        case Its::Full:
            return Outcome::Full;
        default:
            return Outcome::Declined;
        }
    }

    /// Brings the reader to where the last tile ended.
    void GiveBack() { m_Cursor.GiveBack(); }

private:
    /// Nothing from LowPositions on. Slot 0 is the DC value's, wherever else it appears.
    static void CheckLow(const libimagedecoder::IctTileTables& tables,
                         const int16_t* coefficients) {
        using namespace libimagedecoder;
        for (size_t position = IctTileCursor::LowPositions; position < TileCoefficients;
             ++position) {
            const uint32_t slot = tables.m_pFast->Scan(position).m_uiSlot;
            Check(slot == 0 || coefficients[slot] == 0, "a low tile has a high coefficient");
        }
    }

    libimagedecoder::IctTileCursor m_Cursor;
};

} // namespace Vostrel::fuzz
