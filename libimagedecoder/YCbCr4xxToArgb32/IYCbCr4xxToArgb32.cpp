#include "libimagedecoder/YCbCr4xxToArgb32/IYCbCr4xxToArgb32.h"

#include "libimagedecoder/YCbCr4xxToArgb32/QuantizedLevelPlanes.h"

namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32 {

namespace {

template <std::size_t ChromaDivX, std::size_t ChromaDivY>
void ConvertByTable(const QuantizedRectangle& area, const QuantizedColours& colours) {
    WalkRuns<ChromaDivX, ChromaDivY>(area, [colours](const QuantizedRun& run) {
        ReadTable<ChromaDivX, ChromaDivY>(run, 0, colours);
    });
}

} // namespace

IYCbCr4xxToArgb32::IYCbCr4xxToArgb32(ILogger* logger) : m_pLogger(logger) {}

IYCbCr4xxToArgb32::~IYCbCr4xxToArgb32() = default;

bool IYCbCr4xxToArgb32::IsReentrant() const {
    return false;
}

void IYCbCr4xxToArgb32::ConvertQuantized420(const QuantizedRectangle& area,
                                            QuantizedColours colours) const {
    ConvertByTable<2, 2>(area, colours);
}

void IYCbCr4xxToArgb32::ConvertQuantized422(const QuantizedRectangle& area,
                                            QuantizedColours colours) const {
    ConvertByTable<2, 1>(area, colours);
}

void IYCbCr4xxToArgb32::ConvertQuantized444(const QuantizedRectangle& area,
                                            QuantizedColours colours) const {
    ConvertByTable<1, 1>(area, colours);
}

} // namespace Vostrel::libimagedecoder::YCbCr4xxToArgb32
