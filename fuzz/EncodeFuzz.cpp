// Pictures of any content, encoded with any options and decoded again: an LBE viewer shows the
// nearest levels, an ICT viewer what the model reconstructs.

#include "fuzz/FuzzInput.h"
#include "fuzz/FuzzedDecoder.h"
#include "tests/model/ModelColour.h"
#include "tests/model/ModelLbe.h"
#include "tools/IctEncoder.h"
#include "tools/LbeEncoder.h"
#include "tools/NearestLevels.h"
#include "tools/YCbCrPlanes.h"

#include <algorithm>
#include <map>
#include <memory>

namespace Vostrel::fuzz {
namespace {

using namespace streamencoder;
using model::ModelCodec;

constexpr unsigned MaxEdge = 40;

struct Options {
    explicit Options(FuzzInput& input)
        : chroma(static_cast<ChromaSubsampling>(input.Below(3))),
          kernel(input.Below(KernelVariants())), width(Edge(input)), height(Edge(input)),
          contentScale(1 + input.Below(24)) {
        format.m_codec = input.Coin() ? Codec::Lbe : Codec::Ict;
        format.m_uiProtocolVersion = input.Below(3);
        format.m_layout = static_cast<RecordLayout>(input.Below(3));
        format.m_minSkipForm = static_cast<SkipForm>(input.Below(3));
        format.m_bLongLengthPrefix = input.Coin();
        format.m_uiRecordPadding = input.Below(5);
        const unsigned value = input.Byte();
        quality = IsLbe() ? 2 + value % (format.m_uiProtocolVersion == 0 ? 6 : 10) : value % 16;
        threads = input.Below(4);
        if (format.m_uiProtocolVersion == 2 && format.m_layout == RecordLayout::Continuous)
            threads = 0;
        if (format.m_uiProtocolVersion == 2 && format.m_layout == RecordLayout::Pool)
            threads = std::max(threads, 1u);
    }

    /// One or two macroblocks, sometimes three.
    static int Edge(FuzzInput& input) {
        const unsigned byte = input.Byte();
        return 1 + static_cast<int>(byte % (byte < 192 ? MaxEdge / 2 : MaxEdge));
    }

    bool IsLbe() const { return format.m_codec == Codec::Lbe; }

    DecoderChoice Choice() const {
        return {{IsLbe() ? ModelCodec::Lbe : ModelCodec::Ict, format.m_uiProtocolVersion,
                 static_cast<unsigned>(chroma), threads, RuleOf(kernel)},
                kernel};
    }

    UpdateFormat format;
    ChromaSubsampling chroma;
    unsigned kernel;
    int width;
    int height;
    size_t contentScale; ///< pixels with the same colour, as a scaled picture has them
    unsigned quality;
    unsigned threads;
};

std::unique_ptr<UpdateEncoder> MakeEncoder(const Options& options) {
    if (options.IsLbe())
        return std::make_unique<LbeEncoder>(options.format, options.chroma, options.quality);
    return std::make_unique<IctEncoder>(options.format, options.chroma, options.quality);
}

Picture MakePicture(const Options& options, Spread& content) {
    Picture picture(static_cast<size_t>(options.width), static_cast<size_t>(options.height));
    const size_t scale = options.contentScale;
    for (size_t y = 0; y < picture.m_uiHeight; ++y) {
        for (size_t x = 0; x < picture.m_uiWidth; ++x) {
            if (y % scale != 0)
                picture.At(x, y) = picture.At(x, y - 1);
            else if (x % scale != 0)
                picture.At(x, y) = picture.At(x - 1, y);
            else
                picture.At(x, y) = {content.Next(), content.Next(), content.Next()};
        }
    }
    return picture;
}

/// The second picture of a sequence: the first with some pixels changed.
Picture ChangePicture(Picture picture, FuzzInput& input) {
    for (unsigned changes = input.Below(6); changes > 0; --changes) {
        const size_t x = input.Byte() % picture.m_uiWidth;
        const size_t y = input.Byte() % picture.m_uiHeight;
        picture.At(x, y) = {input.Byte(), input.Byte(), input.Byte()};
    }
    return picture;
}

const LevelMap& LumaMap(unsigned bits) {
    static std::map<unsigned, LevelMap> maps;
    if (!maps.contains(bits))
        maps[bits] = NearestLumaLevels(bits);
    return maps[bits];
}

const LevelMap& ChromaMap(unsigned bits) {
    static std::map<unsigned, LevelMap> maps;
    if (!maps.contains(bits))
        maps[bits] = NearestChromaLevels(bits);
    return maps[bits];
}

/// The ARGB memory of a picture whose every sample is the nearest level.
std::vector<uint8_t> NearestPicture(const Picture& picture, const Options& options) {
    const auto depths = *model::LbeDepths(options.quality, options.format.m_uiProtocolVersion);
    const LevelMap& luma = LumaMap(static_cast<unsigned>(depths.lumaBits));
    const LevelMap& chroma = ChromaMap(static_cast<unsigned>(depths.chromaBits));
    const YCbCrPlanes planes = ConvertToYCbCr(
        picture,
        {0, 0, static_cast<uint16_t>(picture.m_uiWidth), static_cast<uint16_t>(picture.m_uiHeight)},
        options.chroma);
    std::vector<uint8_t> memory;
    memory.reserve(picture.m_vPixels.size() * 4);
    for (size_t y = 0; y < picture.m_uiHeight; ++y) {
        for (size_t x = 0; x < picture.m_uiWidth; ++x) {
            const size_t column = x / ChromaDivX(options.chroma);
            const size_t row = y / ChromaDivY(options.chroma);
            const int packed = chroma[*planes.m_cb.At(column, row)] << depths.chromaBits |
                               chroma[*planes.m_cr.At(column, row)];
            const uint32_t argb = model::ReducedDepthToArgb(luma[*planes.m_y.At(x, y)], packed,
                                                            depths.lumaBits, depths.chromaBits);
            for (int shift = 0; shift < 32; shift += 8)
                memory.push_back(static_cast<uint8_t>(argb >> shift));
        }
    }
    return memory;
}

class Viewers {
public:
    explicit Viewers(const Options& options)
        : m_Options(options), m_Subject(FuzzedDecoder::For(options.Choice())) {
        m_Subject.Reset(model::ModelSink::Argb, options.width, options.height);
        Framebuffer().Place(model::ModelSink::Argb, model::ChromaOf(0), options.width,
                            options.height, GuardedPages::Flush::WithTheEnd);
        Framebuffer().AttachTo(m_Subject.Renderer(), true);
    }

    void Show(const Picture& picture, const EncodedUpdate& update) {
        const auto& area = update.m_rectangle;
        const model::ModelRectangle rectangle{area.m_uiX, area.m_uiY, area.m_uiWidth,
                                              area.m_uiHeight};
        model::ModelStream stream(update.m_vuiPayload, 4096);
        const auto expected = m_Subject.Model().Update(update.m_uiQuality, rectangle, stream);
        const auto actual =
            m_Subject.Update(update.m_uiQuality, rectangle, update.m_vuiPayload, 4096);
        Check(expected.error.empty() && actual.error.empty(), "an encoded update fails");
        Check(actual.result == expected.result, "another result than the model's");
        Check(actual.consumedBytes == update.m_vuiPayload.size() &&
                  expected.consumedBytes == update.m_vuiPayload.size(),
              "an encoded update leaves bytes");
        Check(Framebuffer().Holds(m_Subject.Model().Renderer().Memory()),
              "another picture than the model's");
        if (m_Options.IsLbe())
            Check(Framebuffer().Holds(NearestPicture(picture, m_Options)),
                  "another picture than the nearest levels");
    }

private:
    static GuardedFramebuffer& Framebuffer() {
        static GuardedFramebuffer framebuffer(MaxEdge, MaxEdge);
        return framebuffer;
    }

    const Options& m_Options;
    FuzzedDecoder& m_Subject;
};

} // namespace
} // namespace Vostrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace Vostrel::fuzz;
    FuzzInput input(data, size);
    const Options options(input);
    Spread content(input.Take(48));
    const Picture first = MakePicture(options, content);
    const Picture second = ChangePicture(first, input);
    const auto encoder = MakeEncoder(options);
    Viewers viewers(options);
    viewers.Show(first, encoder->EncodeUpdate(first, nullptr));
    viewers.Show(second, encoder->EncodeUpdate(second, &first));
    return 0;
}
