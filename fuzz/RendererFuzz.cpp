// The renderer with planes of any samples, rectangles of any place and size that a decoder can have
// decoded, and any mask, at full and at reduced depth.

#include "fuzz/FuzzInput.h"
#include "fuzz/GuardedFramebuffer.h"
#include "fuzz/Kernels.h"
#include "fuzz/SilentLogger.h"
#include "libimagedecoder/ImageDecoderException.h"
#include "tests/model/ModelLbe.h"

#include <memory>
#include <string>
#include <vector>

namespace Vostrel::fuzz {
namespace {

using namespace libimagedecoder;
using model::ModelSink;

constexpr int MaxWidth = 56;
constexpr int MaxHeight = 40;
constexpr size_t MaxSamples = size_t{64} * 48;

struct Subject {
    explicit Subject(unsigned variant) : renderer(MakeConverter(variant, &logger)) {}

    static ImageDecoderRenderer& Of(unsigned variant) {
        static std::vector<std::unique_ptr<Subject>> subjects(KernelVariants());
        if (!subjects[variant])
            subjects[variant] = std::make_unique<Subject>(variant);
        return subjects[variant]->renderer;
    }

    SilentLogger logger;
    ImageDecoderRenderer renderer;
};

/// What one input asks for, in the order of its bytes.
struct Scene {
    explicit Scene(FuzzInput& input)
        : variant(input.Below(KernelVariants())), subsampling(input.Below(3)),
          sink(input.Coin() ? ModelSink::Planes : ModelSink::Argb), reducedDepth(input.Coin()),
          relative(input.Below(4) == 0), postProcessing(input.Coin()),
          contrast(static_cast<int8_t>(input.Byte())), flush(FlushOf(input.Coin())),
          width(input.Between(1, MaxWidth)), height(input.Between(1, MaxHeight)),
          lumaBits(input.Below(8)), chromaBits(input.Below(8)) {
        const bool far = input.Below(8) == 0;
        area.x = far ? input.Word() : static_cast<int>(input.Below(MaxWidth + 8));
        area.y = far ? input.Word() : static_cast<int>(input.Below(MaxHeight + 8));
        area.width = input.Between(0, model::RoundUpToBlock(width));
        area.height = input.Between(0, model::RoundUpToBlock(height));
        maskBits = input.Word();
    }

    size_t LumaStride() const { return static_cast<size_t>(model::RoundUpToBlock(area.width)); }

    /// What a framebuffer for the rectangle alone amounts to: rows of the rectangle's width, as
    /// many as there is memory.
    model::ModelRectangle Framebuffer() const {
        if (!relative || area.width == 0)
            return {0, 0, width, height};
        return {0, 0, area.width, width * height / area.width};
    }

    unsigned variant;
    unsigned subsampling;
    ModelSink sink;
    bool reducedDepth;
    bool relative;
    bool postProcessing;
    int contrast;
    GuardedPages::Flush flush;
    int width;
    int height;
    unsigned lumaBits;
    unsigned chromaBits;
    model::ModelRectangle area{};
    unsigned maskBits;
};

/// A decoder's planes between guard pages, with a copy for the model. Chroma values of reduced
/// depth take two bytes each.
class Planes {
public:
    Planes(const Scene& scene, Spread& content) {
        const model::ModelChroma chroma = model::ChromaOf(scene.subsampling);
        const auto samples = static_cast<size_t>(model::RoundUpToBlock(scene.width)) *
                             static_cast<size_t>(model::RoundUpToBlock(scene.height));
        const size_t packed =
            samples / static_cast<size_t>(chroma.divX) / static_cast<size_t>(chroma.divY);
        const size_t separate = samples / static_cast<size_t>(chroma.divX);
        y = Place(0, samples, scene.flush, content);
        cb = Place(1, scene.reducedDepth ? 2 * packed : separate, scene.flush, content);
        cr = Place(2, scene.reducedDepth ? 0 : separate, scene.flush, content);
        values.Clear(scene.width, scene.height);
        for (size_t i = 0; i < y.size(); ++i)
            values.y.Set(i, y[i]);
        for (size_t i = 0; scene.reducedDepth && i < packed; ++i)
            values.cb.Set(i, PackedChroma()[i]);
        for (size_t i = 0; i < cr.size(); ++i) {
            values.cb.Set(i, cb[i]);
            values.cr.Set(i, cr[i]);
        }
    }

    unsigned short* PackedChroma() const { return reinterpret_cast<unsigned short*>(cb.data()); }

    std::span<uint8_t> y, cb, cr;
    model::ModelPlanes values;

private:
    static std::span<uint8_t> Place(size_t index, size_t bytes, GuardedPages::Flush flush,
                                    Spread& content) {
        static GuardedPages pages[3]{GuardedPages(MaxSamples), GuardedPages(2 * MaxSamples),
                                     GuardedPages(MaxSamples)};
        const auto memory = pages[index].Place(bytes, flush);
        content.Fill(memory);
        return memory;
    }
};

/// Which of the rectangle's macroblocks are left alone.
struct Mask {
    explicit Mask(const Scene& scene) : model(scene.area) {
        const int columns = model::RoundUpToBlock(scene.area.width) / 16;
        const int rows = model::RoundUpToBlock(scene.area.height) / 16;
        const int blocks = columns * rows;
        static GuardedPages pages(64);
        const auto bytes = pages.Place(static_cast<size_t>(blocks), scene.flush);
        for (int block = 0; block < blocks; ++block) {
            const bool skipped = (scene.maskBits >> block % 16 & 1) != 0;
            bytes[static_cast<size_t>(block)] = skipped;
            if (!skipped)
                model.MarkCoded(block % columns * 16, block / columns * 16);
        }
        entries = reinterpret_cast<const bool*>(bytes.data());
    }

    model::ModelMask model;
    const bool* entries;
};

void DrawFullDepth(ImageDecoderRenderer& renderer, const Scene& scene, const Planes& planes,
                   const Mask& mask) {
    constexpr decltype(&ImageDecoderRenderer::DrawDataYCbCr420) Draw[] = {
        &ImageDecoderRenderer::DrawDataYCbCr420, &ImageDecoderRenderer::DrawDataYCbCr422,
        &ImageDecoderRenderer::DrawDataYCbCr444};
    const auto divX = static_cast<size_t>(model::ChromaOf(scene.subsampling).divX);
    (renderer.*Draw[scene.subsampling])(
        static_cast<unsigned short>(scene.area.x), static_cast<unsigned short>(scene.area.y),
        static_cast<unsigned short>(scene.area.width),
        static_cast<unsigned short>(scene.area.height), scene.LumaStride(),
        scene.LumaStride() / divX, planes.y.data(), planes.cb.data(), planes.cr.data(),
        mask.entries);
}

void DrawReducedDepth(ImageDecoderRenderer& renderer, const Scene& scene, const Planes& planes,
                      const Mask& mask) {
    constexpr decltype(&ImageDecoderRenderer::DrawDataYCbCr420Quantized) Draw[] = {
        &ImageDecoderRenderer::DrawDataYCbCr420Quantized,
        &ImageDecoderRenderer::DrawDataYCbCr422Quantized,
        &ImageDecoderRenderer::DrawDataYCbCr444Quantized};
    const auto divX = static_cast<size_t>(model::ChromaOf(scene.subsampling).divX);
    (renderer.*Draw[scene.subsampling])(
        static_cast<unsigned char>(scene.lumaBits), static_cast<unsigned char>(scene.chromaBits),
        static_cast<unsigned short>(scene.area.x), static_cast<unsigned short>(scene.area.y),
        static_cast<unsigned short>(scene.area.width),
        static_cast<unsigned short>(scene.area.height), scene.LumaStride(),
        scene.LumaStride() / divX, planes.y.data(), planes.PackedChroma(), mask.entries);
}

bool HasTable(const Scene& scene) {
    for (unsigned quality = 2; quality <= 11; ++quality) {
        const auto depths = model::LbeDepths(quality, 1);
        if (depths->lumaBits == static_cast<int>(scene.lumaBits) &&
            depths->chromaBits == static_cast<int>(scene.chromaBits))
            return true;
    }
    return false;
}

/// What the model makes of it.
std::vector<uint8_t> ExpectedMemory(const Scene& scene, Planes& planes, const Mask& mask) {
    const model::ModelRectangle framebuffer = scene.Framebuffer();
    model::ModelRenderer renderer(model::ChromaOf(scene.subsampling), RuleOf(scene.variant));
    renderer.SetFramebuffer(scene.sink, framebuffer.width, framebuffer.height);
    renderer.SetContrast(scene.contrast);
    renderer.SetPostProcessing(scene.postProcessing);
    model::ModelRectangle area = scene.area;
    if (scene.relative)
        area.x = area.y = 0;
    if (!scene.reducedDepth)
        renderer.DrawFullDepth(area, mask.model, planes.values);
    else if (HasTable(scene))
        renderer.DrawReducedDepth(area, mask.model, planes.values, static_cast<int>(scene.lumaBits),
                                  static_cast<int>(scene.chromaBits));
    std::vector<uint8_t> memory = renderer.Memory();
    if (scene.sink == ModelSink::Argb)
        memory.resize(static_cast<size_t>(scene.width * scene.height) * 4);
    return memory;
}

/// The failure's text.
std::string Draw(ImageDecoderRenderer& renderer, const Scene& scene, const Planes& planes,
                 const Mask& mask) {
    try {
        (scene.reducedDepth ? DrawReducedDepth : DrawFullDepth)(renderer, scene, planes, mask);
        return "";
    } catch (const ImageDecoderException& exception) {
        return exception.what();
    }
}

void FuzzRenderer(const Scene& scene, Spread& content) {
    static GuardedFramebuffer framebuffer(MaxWidth, MaxHeight);
    ImageDecoderRenderer& renderer = Subject::Of(scene.variant);
    framebuffer.Place(scene.sink, model::ChromaOf(scene.subsampling), scene.width, scene.height,
                      scene.flush);
    framebuffer.AttachTo(renderer, true);
    renderer.SetFramebufferSize(static_cast<unsigned short>(scene.width),
                                static_cast<unsigned short>(scene.height), scene.relative);
    renderer.SetContrastEnhance(0);
    renderer.SetContrastEnhance(scene.contrast);
    renderer.SetClientPostprocessingEnabled(scene.postProcessing);
    Planes planes(scene, content);
    const Mask mask(scene);

    const std::string failure = Draw(renderer, scene, planes, mask);
    Check(failure.empty() == (!scene.reducedDepth || HasTable(scene)),
          "drawing fails, or does not");
    Check(framebuffer.GuardsIntact(), "bytes beside the framebuffer are overwritten");
    // The planes of a packed rectangle have no model: what matters is that they stay in bounds.
    if (!scene.relative || scene.sink == ModelSink::Argb)
        Check(framebuffer.Holds(ExpectedMemory(scene, planes, mask)), "another picture");
}

} // namespace
} // namespace Vostrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace Vostrel::fuzz;
    FuzzInput input(data, size);
    const Scene scene(input);
    Spread content(input.Rest());
    FuzzRenderer(scene, content);
    return 0;
}
