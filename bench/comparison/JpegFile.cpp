#include "bench/comparison/JpegFile.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <jpeglib.h>
#include <memory>

// Errors end the program: the default manager of libjpeg prints a line and exits, which suits a
// benchmark.

namespace Vostrel::bench {

using namespace streamencoder;

namespace {

constexpr int Components = 3;

class Compression {
public:
    Compression() {
        m_info.err = jpeg_std_error(&m_errors);
        jpeg_create_compress(&m_info);
        jpeg_mem_dest(&m_info, &m_puiFile, &m_uiSize);
    }
    ~Compression() {
        jpeg_destroy_compress(&m_info);
        std::free(m_puiFile);
    }
    Compression(const Compression&) = delete;
    Compression& operator=(const Compression&) = delete;

    jpeg_compress_struct& Info() { return m_info; }
    std::vector<uint8_t> Finish() {
        jpeg_finish_compress(&m_info);
        return {m_puiFile, m_puiFile + m_uiSize};
    }

private:
    jpeg_compress_struct m_info{};
    jpeg_error_mgr m_errors{};
    unsigned char* m_puiFile = nullptr;
    unsigned long m_uiSize = 0;
};

class Decompression {
public:
    explicit Decompression(const std::vector<uint8_t>& file) {
        m_info.err = jpeg_std_error(&m_errors);
        jpeg_create_decompress(&m_info);
        jpeg_mem_src(&m_info, file.data(), file.size());
        jpeg_read_header(&m_info, TRUE);
    }
    ~Decompression() { jpeg_destroy_decompress(&m_info); }
    Decompression(const Decompression&) = delete;
    Decompression& operator=(const Decompression&) = delete;

    jpeg_decompress_struct& Info() { return m_info; }

private:
    jpeg_decompress_struct m_info{};
    jpeg_error_mgr m_errors{};
};

void Describe(jpeg_compress_struct& info, const LevelPicture& picture, uint32_t quality) {
    info.image_width = static_cast<JDIMENSION>(picture.m_uiWidth);
    info.image_height = static_cast<JDIMENSION>(picture.m_uiHeight);
    info.input_components = Components;
    info.in_color_space = JCS_YCbCr;
    jpeg_set_defaults(&info);
    // The steps of a baseline file are whole numbers up to 255. Where the encoder's are not, the
    // picture comes out paler or stronger than it was, but no decoder works more or less for it.
    for (const bool luma : {true, false}) {
        const std::array<unsigned, 64> steps = QuantiserSteps(luma, quality);
        jpeg_add_quant_table(&info, luma ? 0 : 1, steps.data(), 100, TRUE);
    }
    info.comp_info[0].h_samp_factor = static_cast<int>(ChromaDivX(picture.m_chroma));
    info.comp_info[0].v_samp_factor = static_cast<int>(ChromaDivY(picture.m_chroma));
}

jvirt_barray_ptr RequestBlocks(jpeg_compress_struct& info, const LevelPlane& plane, int rows) {
    return info.mem->request_virt_barray(reinterpret_cast<j_common_ptr>(&info), JPOOL_IMAGE, TRUE,
                                         static_cast<JDIMENSION>(plane.m_uiColumns),
                                         static_cast<JDIMENSION>(plane.m_uiRows),
                                         static_cast<JDIMENSION>(rows));
}

/// Calls visit(JCOEF* block, tile index) for all blocks of a component.
template <class Info, class Visit>
void VisitBlocks(Info& info, jvirt_barray_ptr blocks, const LevelPlane& plane, Visit visit) {
    for (size_t row = 0; row < plane.m_uiRows; ++row) {
        const JBLOCKARRAY line = info.mem->access_virt_barray(
            reinterpret_cast<j_common_ptr>(&info), blocks, static_cast<JDIMENSION>(row), 1, TRUE);
        for (size_t column = 0; column < plane.m_uiColumns; ++column)
            visit(line[0][column], row * plane.m_uiColumns + column);
    }
}

ChromaSubsampling SubsamplingOf(const jpeg_decompress_struct& info) {
    if (info.comp_info[0].h_samp_factor == 1)
        return ChromaSubsampling::Yuv444;
    return info.comp_info[0].v_samp_factor == 1 ? ChromaSubsampling::Yuv422
                                                : ChromaSubsampling::Yuv420;
}

} // namespace

std::vector<uint8_t> WriteJpeg(const LevelPicture& picture, uint32_t quality) {
    Compression compression;
    jpeg_compress_struct& info = compression.Info();
    Describe(info, picture, quality);
    jvirt_barray_ptr blocks[Components];
    for (int i = 0; i < Components; ++i)
        blocks[i] = RequestBlocks(info, picture.m_aPlanes[static_cast<size_t>(i)],
                                  info.comp_info[i].v_samp_factor);
    jpeg_write_coefficients(&info, blocks);
    for (size_t i = 0; i < Components; ++i) {
        const LevelPlane& plane = picture.m_aPlanes[i];
        VisitBlocks(info, blocks[i], plane, [&](JCOEF* block, size_t tile) {
            std::transform(plane.m_vTiles[tile].begin(), plane.m_vTiles[tile].end(), block,
                           [](int level) { return static_cast<JCOEF>(level); });
        });
    }
    return compression.Finish();
}

LevelPicture ReadJpeg(const std::vector<uint8_t>& file) {
    Decompression decompression(file);
    jpeg_decompress_struct& info = decompression.Info();
    jvirt_barray_ptr* const blocks = jpeg_read_coefficients(&info);
    LevelPicture picture =
        EmptyLevelPicture(info.image_width, info.image_height, SubsamplingOf(info));
    for (size_t i = 0; i < Components; ++i) {
        LevelPlane& plane = picture.m_aPlanes[i];
        VisitBlocks(info, blocks[i], plane, [&](const JCOEF* block, size_t tile) {
            std::copy_n(block, DCTSIZE2, plane.m_vTiles[tile].begin());
        });
    }
    jpeg_finish_decompress(&info);
    return picture;
}

} // namespace Vostrel::bench
