#pragma once

#include "tools/IctQuantiser.h"
#include "tools/IctTileWriter.h"
#include "tools/UpdateEncoder.h"

namespace Vostrel::streamencoder {

/// Encodes pictures as ICT updates.
class IctEncoder : public UpdateEncoder {
public:
    /// quality: 0 (coarsest) to 15 (finest). The format's codec is not looked at. Throws
    /// std::invalid_argument for a quality or a protocol version out of range.
    IctEncoder(const UpdateFormat& format, ChromaSubsampling chroma, uint32_t quality);

private:
    /// What the tiles of one component share; the predictor is the last DC level coded.
    struct Component {
        IctQuantiser m_quantiser;
        IctComponentCode m_code;
        int m_iDcPredictor = 0;
    };

    void BeginUpdate() override { ResetPredictors(); }
    void EncodeBlock(const YCbCrPlanes& planes, size_t column, size_t row,
                     BitWriter& bits) override;

    void ResetPredictors();
    static void EncodeTiles(const Plane& plane, size_t left, size_t top, size_t width,
                            size_t height, Component& component, BitWriter& bits);

    Component m_y;
    Component m_cb;
    Component m_cr;
};

} // namespace Vostrel::streamencoder
