#pragma once

#include "tests/faults/AllocationFaults.h"
#include "tests/faults/JniFaults.h"
#include "tests/jni/PerformFixture.h"
#include "tests/support/TestBits.h"

#include <cstdint>
#include <ostream>
#include <string>

namespace Vostrel::tests {

/// A decoder as a viewer creates it, and an update that suits it.
struct DecoderKind {
    decltype(&ICT(createImageDecoder)) create;
    bool lbe;
    jint threads;
    jint version;

    /// Bits of one plain macroblock and the end of the update.
    std::string update() const {
        const auto versionNumber = static_cast<unsigned>(version);
        const std::string body = lbe ? PlainBlock(Quality, 3, 0) : FlatMacroblock(Chroma420);
        const std::string record = version < 2 ? NoSkip + body
                                   : lbe       ? LbeRecord(NoSkip, body)
                                               : IctRecord(NoSkip, body);
        return record + EndOfUpdate(versionNumber);
    }

    /// What that update draws: brightest luma at the lowest depth, or the DC predictors' grey.
    uint32_t colour() const { return lbe ? 0xFFFFFFFF : 0xFF808080; }

    static constexpr unsigned Quality = 2;
};

inline void PrintTo(const DecoderKind& kind, std::ostream* out) {
    *out << (kind.lbe ? "LBE" : "ICT") << " version " << kind.version << ", " << kind.threads
         << " threads";
}

/// With a pool and without.
inline const DecoderKind DecoderKinds[] = {
    {&ICT(createImageDecoder), false, 0, 1},
    {&ICT(createImageDecoder), false, 3, 2},
    {&LBE(createImageDecoder), true, 0, 1},
    {&LBE(createImageDecoder), true, 3, 2},
};

/// A viewer whose VM can fail, and whose Java methods survive the null arguments that follow.
class FaultFixture : public PerformFixture {
protected:
    FaultFixture() {
        auto& methods = m_jvm.target(m_helper.get())->javaClass->methods;
        for (auto& [key, method] : methods) {
            method.body = [inner = method.body](const FakeJvm::Arguments& given) {
                return given[0].l ? inner(given) : noValue();
            };
        }
        m_helper.m_lines.clear();
    }

    jlong create(const DecoderKind& kind) {
        return kind.create(m_jvm.env(), nullptr, m_renderer, m_stream, m_logger, kind.threads,
                           kind.version, 0);
    }

    jlong perform(const DecoderKind& kind, const Call& c) {
        return kind.lbe ? performLbe(c) : performIct(c);
    }

    /// A good update must decode right, whatever happened before.
    void expectGoodUpdate(const DecoderKind& kind, const Call& c) {
        m_framebuffer.assign(m_framebuffer.size(), Untouched);
        m_helper.m_pieces.clear();
        feed(kind.update());
        EXPECT_EQ(perform(kind, c), 0x0000'0000'0010'0010);
        expectPixels(kind.colour(), Untouched);
    }

    void expectIOException(const std::string& message) {
        ASSERT_TRUE(m_jvm.m_pendingException);
        EXPECT_EQ(m_jvm.m_pendingException->className, "java/io/IOException");
        EXPECT_EQ(m_jvm.m_pendingException->message, message);
        m_jvm.m_pendingException.reset();
    }

    JniFaults m_jniFaults{m_jvm};
};

} // namespace Vostrel::tests
