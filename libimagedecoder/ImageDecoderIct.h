#pragma once

#include "libimagedecoder/AlignedMemory.h"
#include "libimagedecoder/HuffmanYCbCrDcAc.h"
#include "libimagedecoder/IctFastTables.h"
#include "libimagedecoder/IctHuffEntry.h"
#include "libimagedecoder/IctTiles.h"
#include "libimagedecoder/InverseTransform/IInverseIct.h"
#include "libimagedecoder/MacroblockDecoder.h"

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace Vostrel::libimagedecoder {

struct IctTileTables;

/// Decoder of the ICT encoding: macroblocks of 8x8 tiles, each tile coded like a block of a
/// baseline JPEG picture, but over an integer cosine transform.
///
/// The code tables stay as they are from construction on; the dequantisation tables change with the
/// quality level of an update, before its first macroblock. Jobs only read them.
class ImageDecoderIct : public MacroblockDecoder {
public:
    using huff_entry_t = libimagedecoder::huff_entry_t;

    /// Renderer, stream and logger are not owned and must outlive the decoder.
    /// threads: workers of the pool, 0..1024; only protocol version 2 can use them.
    /// Throws std::invalid_argument for arguments out of range, std::bad_alloc.
    ImageDecoderIct(ImageDecoderRenderer* renderer, IStreambuffer* stream, ILogger* logger,
                    unsigned long threads, unsigned int protocolVersion,
                    unsigned int chromaSubsampling);

    /// The same with a given transform instead of the fastest one.
    ImageDecoderIct(ImageDecoderRenderer* renderer, IStreambuffer* stream, ILogger* logger,
                    unsigned long threads, unsigned int protocolVersion,
                    unsigned int chromaSubsampling,
                    std::shared_ptr<InverseTransform::InverseIct::IInverseIct> inverseIct);

    void SetResolution(unsigned short width, unsigned short height) override;

    /// Decodes the bits of one tile into 64 dequantised coefficients in the transform's order.
    /// coefficients: 64 values, aligned as the transform wants them, all overwritten.
    /// dcPredictor: the component's running DC level, updated.
    /// dequant: the component's table, indexed by coefficient slot.
    /// Returns false, with nothing changed, for the marker by which an encoder aborts an update.
    /// Throws ImageDecoderException "StreamError" for a coefficient past the 64th, and what the
    /// reader throws.
    bool HuffmannDecodeReorderDequantTile(BitStreamReader* reader, short* coefficients,
                                          int* dcPredictor, const int* dequant,
                                          const huff_entry_t* dcTable,
                                          const huff_entry_t* acTable) const;

    /// Fills a table of 65536 entries, all bytes 0xFF on entry, so that every 16-bit index leads to
    /// the code that it starts with; indexes above the last code lead to the last code.
    static void
    CreateHuffDecodeTableFromEncodeTable(std::vector<huff_entry_t>& decodeTable,
                                         const HuffmanYCbCrDcAc::HuffCodeEntry* encodeTable,
                                         size_t symbols);

    /// One dequantisation multiplier: the step of a coefficient times norm, as a fixed-point number
    /// with fracBits fractional bits.
    static int64_t CalcDequantDenormDescaleTableValue(unsigned int quant, double scale,
                                                      unsigned char shift, unsigned char fracBits,
                                                      double norm);

    /// The tables that updates decode with, for whoever wants to look at them.
    const std::array<uint8_t, TileCoefficients>& GetReorderTable() const { return m_auiReorder; }
    const std::array<int32_t, TileCoefficients>& GetDequantTable(IctComponent component) const {
        return component == ComponentY ? m_aiLumDequant : m_aiChromaDequant;
    }
    const std::vector<huff_entry_t>& GetDcTable(IctComponent component) const {
        return component == ComponentY ? m_vDcLuminance : m_vDcChrominance;
    }
    const std::vector<huff_entry_t>& GetAcTable(IctComponent component) const {
        return component == ComponentY ? m_vAcLuminance : m_vAcChrominance;
    }
    IctTileTables GetTileTables(IctComponent component) const;

protected:
    uint64_t HandleUpdateImplementation(unsigned int quality, unsigned short reserved,
                                        unsigned short x, unsigned short y, unsigned short width,
                                        unsigned short height) override;

private:
    template <class Chroma>
    class Update;

    uint64_t HandleUpdateImplementation420(const UpdateRectangle& rectangle);
    uint64_t HandleUpdateImplementation422(const UpdateRectangle& rectangle);
    uint64_t HandleUpdateImplementation444(const UpdateRectangle& rectangle);
    UpdateJobs::DecodeRecord ScheduleDecodeTile420(Update<IctChroma420>& update) const;
    UpdateJobs::DecodeRecord ScheduleDecodeTile422(Update<IctChroma422>& update) const;
    UpdateJobs::DecodeRecord ScheduleDecodeTile444(Update<IctChroma444>& update) const;

    void SetQuality(unsigned int quality);
    void HookUpTileIndexZigZagAndReorderTable();
    void HookUpHuffDecodeTables();
    void HookUpDequantDenormDescaleTiles();
    void HookUpRepeatedTiles();

    std::shared_ptr<InverseTransform::InverseIct::IInverseIct> m_pInverseIct;
    AlignedArray<int16_t> m_piCoefficients; ///< one block of 64 per worker
    std::array<AlignedArray<uint8_t>, ComponentCount> m_apuiPlanes;

    std::array<uint8_t, TileCoefficients> m_auiReorder{}; ///< scan position -> coefficient slot
    uint8_t m_uiQualityLevel = 0xFF;                      ///< 0xFF: no dequantisation tables yet
    std::array<int32_t, TileCoefficients> m_aiLumDequant{};
    std::array<int32_t, TileCoefficients> m_aiChromaDequant{};
    std::vector<huff_entry_t> m_vDcLuminance;
    std::vector<huff_entry_t> m_vAcLuminance;
    std::vector<huff_entry_t> m_vDcChrominance;
    std::vector<huff_entry_t> m_vAcChrominance;
    IctFastTables m_LumaFastTables{HuffmanYCbCrDcAc::s_aDcLuminance,
                                   HuffmanYCbCrDcAc::s_aAcLuminance};
    IctFastTables m_ChromaFastTables{HuffmanYCbCrDcAc::s_aDcChrominance,
                                     HuffmanYCbCrDcAc::s_aAcChrominance};
    RepeatedTiles m_RepeatedMacroblock;
    /// The tiles after the first one of a macroblock's area.
    std::array<RepeatedTiles, ComponentCount> m_aRepeatedRests;
    UpdateJobs m_Jobs; ///< last: its end waits for the jobs
};

} // namespace Vostrel::libimagedecoder
