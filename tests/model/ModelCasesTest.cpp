#include "tests/model/CaseFile.h"
#include "tests/model/ModelDecoder.h"

#include <gtest/gtest.h>

namespace Vostrel::model {

namespace {

/// Every case file holds for the model, under both rules of the kernels.
class ModelCases : public testing::TestWithParam<std::filesystem::path> {
protected:
    static void Replay(const CaseLife& life, KernelRule rule) {
        ModelDecoder decoder({life.codec == 0 ? ModelCodec::Ict : ModelCodec::Lbe, life.version,
                              life.chroma, life.threads, rule});
        decoder.SetFramebuffer(life.sink == 0 ? ModelSink::Argb : ModelSink::Planes, life.fbWidth,
                               life.fbHeight);
        decoder.Renderer().SetContrast(life.contrast);
        decoder.Renderer().SetPostProcessing(life.postproc);
        for (size_t i = 0; i < life.updates.size(); ++i) {
            SCOPED_TRACE("update " + std::to_string(i));
            Compare(decoder, life, life.updates[i], rule);
        }
    }

private:
    static void Compare(ModelDecoder& decoder, const CaseLife& life, const CaseUpdate& update,
                        KernelRule rule) {
        ModelStream stream(update.stream, life.PieceCapacity(update));
        const ModelOutcome outcome =
            decoder.Update(update.quality, {update.x, update.y, update.w, update.h}, stream);
        EXPECT_EQ(outcome.error, update.error);
        EXPECT_EQ(static_cast<int64_t>(outcome.result), update.result);
        if (update.consumed != CaseUpdate::NotCompared) {
            EXPECT_EQ(outcome.consumedBytes, update.consumed);
        }
        EXPECT_EQ(Crc32(decoder.Renderer().Memory()),
                  rule == KernelRule::Portable ? update.crcPortable : update.crcAccelerated);
    }
};

TEST_P(ModelCases, HoldUnderThePortableRule) {
    Replay(ReadCaseFile(GetParam()), KernelRule::Portable);
}

TEST_P(ModelCases, HoldUnderTheAcceleratedRule) {
    Replay(ReadCaseFile(GetParam()), KernelRule::Accelerated);
}

INSTANTIATE_TEST_SUITE_P(, ModelCases, testing::ValuesIn(ListCaseFiles()),
                         [](const auto& file) { return CaseTestName(file.param); });

} // namespace

} // namespace Vostrel::model
