#include "tests/faults/WorkerFaults.h"

#include "tests/libimagedecoder/DecoderVariants.h"

#include <optional>

namespace Vostrel::libimagedecoder {
namespace {

using model::ModelCodec;
using model::ModelSettings;
using tests::WorkerFaults;

constexpr unsigned Workers = 4;

class WorkerStart : public testing::TestWithParam<ModelCodec> {
protected:
    void ExpectRightUpdates(unsigned chroma, uint32_t failingStarts) {
        const ModelSettings settings{GetParam(), 2, chroma, Workers,
                                     model::KernelRule::Accelerated};
        std::optional<DecoderPair> pair;
        {
            const WorkerFaults faults(failingStarts);
            pair.emplace(settings);
        }
        const model::ModelRectangle area{0, 0, 96, 64};
        constexpr unsigned Quality = 9;
        pair->SetFramebuffer(model::ModelSink::Argb, area.width, area.height);
        for (int update = 0; update < 3; ++update) {
            const std::string text = tests::RandomUpdate(
                m_Random, {GetParam() == ModelCodec::Lbe, 2, chroma, true, Quality}, 24);
            EXPECT_EQ(pair->Update(Quality, area, text).error, "");
            pair->Update(Quality, area, tests::Damaged(m_Random, text));
        }
    }

    tests::Random m_Random;
};

TEST_P(WorkerStart, AnySubsetOfWorkersMayFailToStart) {
    for (uint32_t failing = 0; failing < 1u << Workers; ++failing) {
        for (unsigned chroma = 0; chroma <= 2; ++chroma) {
            SCOPED_TRACE("failing starts " + std::to_string(failing));
            ExpectRightUpdates(chroma, failing);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, WorkerStart, testing::Values(ModelCodec::Ict, ModelCodec::Lbe),
                         [](const auto& codec) {
                             return codec.param == ModelCodec::Ict ? "Ict" : "Lbe";
                         });

} // namespace
} // namespace Vostrel::libimagedecoder
