#pragma once

#include "libimagedecoder/YCbCr4xxToArgb32/IYCbCr4xxToArgb32.h"

#include <array>
#include <cstddef>
#include <mutex>
#include <vector>

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

/// Portable variant: what chroma adds to each channel is computed, added and clamped in a form that
/// compilers turn into vector instructions. The result is that of ArgbWord: three table reads and
/// one subtraction per pixel.
///
/// Thread safety: Convert420 writes the object's work lines, so one object must not run two of them
/// at once. Everything else only reads the class-wide tables, which are built once under a mutex.
class YCbCr4xxToArgb32Native : public IYCbCr4xxToArgb32 {
public:
    /// Builds the tables if they are not there yet and announces the variant in the log.
    explicit YCbCr4xxToArgb32Native(ILogger* logger);
    ~YCbCr4xxToArgb32Native() override;

    std::uint16_t GetDataAlignmentBytes() const override;
    /// Throws std::bad_alloc if the work lines cannot grow.
    void Convert420(std::uint32_t* destination, const std::uint8_t* luma, const std::uint8_t* cb,
                    const std::uint8_t* cr, unsigned short width, unsigned short height,
                    unsigned long destinationStride, unsigned long lumaStride,
                    unsigned long chromaStride, const bool* skipMask) const override;
    void Convert422(std::uint32_t* destination, const std::uint8_t* luma, const std::uint8_t* cb,
                    const std::uint8_t* cr, unsigned short width, unsigned short height,
                    unsigned long destinationStride, unsigned long lumaStride,
                    unsigned long chromaStride, const bool* skipMask) const override;
    void Convert444(std::uint32_t* destination, const std::uint8_t* luma, const std::uint8_t* cb,
                    const std::uint8_t* cr, unsigned short width, unsigned short height,
                    unsigned long destinationStride, unsigned long lumaStride,
                    unsigned long chromaStride, const bool* skipMask) const override;

    /// Builds the class-wide tables; every call after the first finds them built. Throws
    /// std::system_error if the mutex cannot be locked.
    static void HookUpColorTransLuts();

    /// The ARGB32 word of one sample triple by the table rule. The tables must have been built.
    static std::uint32_t ArgbWord(unsigned int luma, unsigned int cb, unsigned int cr) {
        return ArgbWord(luma, cb, cr, GreenOffset(cb, cr));
    }

protected:
    /// What a chroma pair takes away from luma to give green: -135 to 135.
    static int GreenOffset(unsigned int cb, unsigned int cr) {
        return s_viCbToGLut[cb] + s_viCrToGLut[cr];
    }

    static std::uint32_t ArgbWord(unsigned int luma, unsigned int cb, unsigned int cr,
                                  int greenOffset) {
        const std::uint32_t red = s_vuiYCrToRLut[(luma << 8) | cr];
        const std::uint32_t green = s_puiClampLut[static_cast<int>(luma) - greenOffset];
        const std::uint32_t blue = s_vuiYCbToBLut[(luma << 8) | cb];
        return 0xFF000000U | (red << 16) | (green << 8) | blue;
    }

    // Plain arrays without a destructor: a viewer's threads may still convert while the process
    // runs its exit handlers.
    static std::array<std::uint8_t, 768> s_vuiClampLut;
    /// Element 256 of s_vuiClampLut: entry k is k clamped to a byte, for k from -256 to 511.
    static const std::uint8_t* s_puiClampLut;
    static std::array<std::uint8_t, 65536> s_vuiYCrToRLut; ///< [(Y << 8) | Cr]
    static std::array<std::uint8_t, 65536> s_vuiYCbToBLut; ///< [(Y << 8) | Cb]
    static std::array<std::int16_t, 256> s_viCbToGLut;
    static std::array<std::int16_t, 256> s_viCrToGLut;
    static std::mutex s_Mutex;

    /// Work lines of Convert420, one entry per chroma column. They grow with the widest rectangle
    /// converted so far and never shrink.
    mutable std::vector<std::int16_t> m_viCrLine;
    mutable std::vector<std::int16_t> m_viGLine;
    mutable std::vector<std::int16_t> m_viCbLine;

private:
    void GrowWorkLines(std::size_t chromaColumns) const;
};

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
