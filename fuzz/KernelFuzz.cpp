// Every variant of the transform and of the colour conversion against the model of its own rule:
// tiles of any coefficients, and conversions of any geometry, strides and masks.

#include "fuzz/FuzzInput.h"
#include "fuzz/GuardedPages.h"
#include "fuzz/Kernels.h"
#include "fuzz/SilentLogger.h"
#include "tests/model/KernelModels.h"
#include "tests/model/ModelTransform.h"

#include <memory>
#include <vector>

namespace Vostrel::fuzz {
namespace {

using libimagedecoder::InverseTransform::InverseIct::IInverseIct;
using libimagedecoder::YCbCr4xxToArgb32::IYCbCr4xxToArgb32;

constexpr int MaxWidth = 70;
constexpr int MaxHeight = 36;
constexpr size_t MaxStride = 128;

struct Kernels {
    explicit Kernels(unsigned variant)
        : transform(MakeTransform(variant, &logger)), converter(MakeConverter(variant, &logger)) {}

    static Kernels& Of(unsigned variant) {
        static std::vector<std::unique_ptr<Kernels>> kernels(KernelVariants());
        if (!kernels[variant])
            kernels[variant] = std::make_unique<Kernels>(variant);
        return *kernels[variant];
    }

    SilentLogger logger;
    std::shared_ptr<IInverseIct> transform;
    std::shared_ptr<IYCbCr4xxToArgb32> converter;
};

void FuzzTransform(FuzzInput& input, unsigned variant) {
    IInverseIct& kernel = *Kernels::Of(variant).transform;
    const auto flush = FlushOf(input.Coin());
    const size_t stride = 8 + input.Below(33);
    static GuardedPages blockPages(64 * sizeof(short));
    static GuardedPages samplePages(8 * MaxStride);
    // Pages end where every alignment holds.
    const auto block = reinterpret_cast<short*>(blockPages.Place(64 * sizeof(short), flush).data());
    const auto samples = samplePages.Place(7 * stride + 8, flush, 0xC3);

    const bool bytes = input.Coin();
    model::TileTable coefficients;
    for (size_t i = 0; i < 64; ++i) {
        const auto value = static_cast<int16_t>(bytes ? int{static_cast<int8_t>(input.Byte())} * 64
                                                      : input.Word());
        coefficients[i] = value;
        block[kernel.GetTileIndexPermutation()[i]] = value;
    }
    kernel.TransformTile(block, samples.data(), stride);

    const model::TileTable expected = model::InverseTransform(coefficients, RuleOf(variant));
    for (size_t i = 0; i < samples.size(); ++i) {
        const size_t column = i % stride;
        const int64_t wanted = column < 8 ? expected[i / stride * 8 + column] : 0xC3;
        Check(samples[i] == wanted, "a transform gives other samples");
    }
    Check(samplePages.Intact() && blockPages.Intact(), "a transform writes beside its memory");
}

/// A plane that ends with its last sample, in rows of any stride.
struct FuzzedPlane {
    FuzzedPlane(size_t width, size_t height, size_t rowStride, GuardedPages& pages,
                GuardedPages::Flush flush, Spread& content)
        : stride(rowStride),
          samples(pages.Place(width * height == 0 ? 0 : (height - 1) * rowStride + width, flush)) {
        content.Fill(samples);
    }

    size_t stride;
    std::span<uint8_t> samples;
};

/// Entries of the mask that pixels of the rectangle have.
size_t MaskEntries(size_t width, size_t height) {
    size_t entries = 0;
    for (size_t y = 0; y < height; ++y)
        entries = std::max(entries, ((y >> 4) * width >> 4) + ((width - 1) >> 4) + 1);
    return width == 0 ? 0 : entries;
}

void FuzzConversion(FuzzInput& input, unsigned variant) {
    const unsigned subsampling = input.Below(3);
    const model::ChromaDivisors divisors{subsampling == 2 ? 1u : 2u, subsampling == 0 ? 2u : 1u};
    const auto width = static_cast<size_t>(input.Below(MaxWidth + 1));
    const auto height = static_cast<size_t>(input.Below(MaxHeight + 1));
    const size_t chromaWidth = width / divisors.x;
    const size_t chromaHeight = height / divisors.y;
    const auto flush = FlushOf(input.Coin());
    const size_t lumaStride = width + input.Below(40);
    const size_t chromaStride = chromaWidth + input.Below(40);
    const size_t targetStride = width + input.Below(40);
    const uint32_t maskBits = input.DoubleWord();
    Spread content(input.Rest());

    static GuardedPages pages[3]{GuardedPages(MaxStride * MaxHeight),
                                 GuardedPages(MaxStride * MaxHeight),
                                 GuardedPages(MaxStride * MaxHeight)};
    static GuardedPages maskPages(256);
    static GuardedPages targetPages(4 * MaxStride * MaxHeight);
    const FuzzedPlane y(width, height, lumaStride, pages[0], flush, content);
    const FuzzedPlane cb(chromaWidth, chromaHeight, chromaStride, pages[1], flush, content);
    const FuzzedPlane cr(chromaWidth, chromaHeight, chromaStride, pages[2], flush, content);
    const auto maskBytes = maskPages.Place(MaskEntries(width, height), flush);
    for (size_t i = 0; i < maskBytes.size(); ++i)
        maskBytes[i] = maskBits >> i % 32 & 1;
    const auto mask = reinterpret_cast<const bool*>(maskBytes.data());
    const size_t pixels = width * height == 0 ? 0 : (height - 1) * targetStride + width;
    const auto target =
        reinterpret_cast<uint32_t*>(targetPages.Place(4 * pixels, flush, 0x77).data());

    constexpr decltype(&IYCbCr4xxToArgb32::Convert420) Conversions[] = {
        &IYCbCr4xxToArgb32::Convert420, &IYCbCr4xxToArgb32::Convert422,
        &IYCbCr4xxToArgb32::Convert444};
    (Kernels::Of(variant).converter.get()->*Conversions[subsampling])(
        target, y.samples.data(), cb.samples.data(), cr.samples.data(),
        static_cast<unsigned short>(width), static_cast<unsigned short>(height), targetStride,
        lumaStride, chromaStride, mask);

    std::vector<uint32_t> expected(pixels, 0x77777777);
    model::ConvertToArgb({y.samples.data(), cb.samples.data(), cr.samples.data(), width, height,
                          lumaStride, chromaStride, mask},
                         divisors, RuleOf(variant), expected.data(), targetStride);
    Check(std::equal(expected.begin(), expected.end(), target), "a conversion gives other pixels");
    Check(targetPages.Intact(), "a conversion writes beside its pixels");
}

} // namespace
} // namespace Vostrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace Vostrel::fuzz;
    FuzzInput input(data, size);
    const unsigned variant = input.Below(KernelVariants());
    if (input.Coin())
        FuzzTransform(input, variant);
    else
        FuzzConversion(input, variant);
    return 0;
}
