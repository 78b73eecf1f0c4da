// A script of native calls in a virtual machine of hand-made tables: references balance, nothing is
// misused, and no worker enters the machine.

#include "fuzz/FuzzInput.h"
#include "fuzz/GuardedPages.h"
#include "libjni/JavaVm.h"
#include "tests/jni/FakeHelper.h"
#include "tests/jni/NativeMethods.h"
#include "tests/support/FakeJvm.h"

#include <array>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace Vostrel::fuzz {
namespace {

constexpr int MaxEdge = 40;

class Viewer {
public:
    Viewer() {
        m_Jvm.defineClass("java/io/IOException");
        JNI_OnLoad(m_Jvm.vm(), nullptr);
        m_iLogger = HELPER(createLogger)(m_Jvm.env(), m_Helper.get());
        m_iStream = HELPER(createStreambuffer)(m_Jvm.env(), m_Helper.get(), m_iLogger);
        m_iRenderer = HELPER(createRCRenderer)(m_Jvm.env(), nullptr, m_iLogger);
        CheckBalance();
    }

    ~Viewer() {
        for (const auto& [arguments, handle] : m_SpareIctDecoders)
            ICT(deleteImageDecoder)(m_Jvm.env(), nullptr, handle);
        HELPER(deleteRCRenderer)(m_Jvm.env(), nullptr, m_iRenderer);
        HELPER(deleteStreambuffer)(m_Jvm.env(), nullptr, m_iStream);
        HELPER(deleteLogger)(m_Jvm.env(), nullptr, m_iLogger);
        Check(m_Jvm.liveGlobals() == 0, "references are left over");
        JNI_OnUnload(m_Jvm.vm(), nullptr);
        libjni::JavaVm::getInstance().cleanup();
    }

    void Run(FuzzInput& input) {
        SetContrast(-1);
        SetPostprocessing(JNI_FALSE);
        for (int steps = 0; steps < 12 && !input.IsEmpty(); ++steps) {
            Step(input);
            CheckBalance();
        }
        for (Decoder& decoder : m_Decoders)
            Delete(decoder);
    }

private:
    struct Arguments {
        jint threads;
        jint version;
        jint chroma;
        // NOLINTNEXTLINE(modernize-use-nullptr): takes the default for a 0 that is compared with
        auto operator<=>(const Arguments&) const = default;
    };
    struct Decoder {
        bool lbe = false;
        Arguments arguments{};
        jlong handle = 0;
    };

    void Step(FuzzInput& input) {
        const unsigned step = input.Byte();
        Decoder& decoder = m_Decoders[step / 8 % 2];
        switch (step % 8) {
        case 0:
            Create(decoder, input);
            break;
        case 1:
            Delete(decoder);
            break;
        case 2:
            SetContrast(input.Byte() - 50);
            break;
        case 3:
            SetPostprocessing(input.Coin() ? JNI_TRUE : JNI_FALSE);
            break;
        default:
            Perform(decoder, input);
        }
    }

    void SetContrast(jint contrast) {
        ICT(setContrastEnhance)(m_Jvm.env(), nullptr, m_iRenderer, contrast);
    }

    void SetPostprocessing(jboolean enabled) {
        LBE(setClientPostprocessingEnabled)(m_Jvm.env(), nullptr, m_iRenderer, enabled);
    }

    void Create(Decoder& decoder, FuzzInput& input) {
        Delete(decoder);
        decoder.lbe = input.Byte() < 254;
        decoder.arguments.threads = static_cast<jint>(input.Below(3));
        decoder.arguments.version = static_cast<jint>(input.Below(4));
        decoder.arguments.chroma = static_cast<jint>(input.Below(4));
        if (!decoder.lbe && TakeSpare(decoder))
            return;
        const auto& [threads, version, chroma] = decoder.arguments;
        const auto create = decoder.lbe ? &LBE(createImageDecoder) : &ICT(createImageDecoder);
        decoder.handle = create(m_Jvm.env(), nullptr, m_iRenderer, m_iStream, m_iLogger, threads,
                                version, chroma);
        const bool possible = version <= 2 && chroma <= 2;
        Check((decoder.handle != 0) == possible, "a decoder is made of bad arguments, or not made");
        Check(m_Jvm.m_pendingException.has_value() == !possible, "another exception is pending");
        m_Jvm.m_pendingException.reset();
    }

    void Delete(Decoder& decoder) {
        const jlong handle = std::exchange(decoder.handle, 0);
        if (decoder.lbe || handle == 0)
            (decoder.lbe ? &LBE(deleteImageDecoder) : &ICT(deleteImageDecoder))(m_Jvm.env(),
                                                                                nullptr, handle);
        else
            m_SpareIctDecoders.emplace(decoder.arguments, handle);
    }

    bool TakeSpare(Decoder& decoder) {
        const auto spare = m_SpareIctDecoders.find(decoder.arguments);
        if (spare == m_SpareIctDecoders.end())
            return false;
        decoder.handle = spare->second;
        m_SpareIctDecoders.erase(spare);
        return true;
    }

    void Perform(const Decoder& decoder, FuzzInput& input) {
        const bool argb = input.Coin() || decoder.lbe;
        const int width = input.Between(1, MaxEdge);
        const int height = input.Between(1, MaxEdge);
        const auto area = static_cast<size_t>(width) * static_cast<size_t>(height);
        constexpr size_t MaxArea = size_t{MaxEdge} * MaxEdge;
        static GuardedPages pages[3]{GuardedPages(4 * MaxArea), GuardedPages(MaxArea),
                                     GuardedPages(MaxArea)};
        std::array<jobject, 3> buffers{};
        const bool attached = input.Below(8) != 0;
        for (size_t i = 0; attached && i < (argb ? 1 : 3); ++i)
            buffers[i] = Local<jobject>(m_Jvm.newDirectBuffer(
                pages[i].Place(argb ? 4 * area : area, GuardedPages::Flush::WithTheEnd).data()));

        const size_t arrayLength = 1 + input.Below(64);
        const jint length = input.Below(4) == 0 ? input.Byte() : static_cast<jint>(arrayLength);
        const auto array = Local<jbyteArray>(
            m_Jvm.newByteArray(std::vector<jbyte>(std::max<size_t>(arrayLength, 1))));
        const jint quality = input.Byte();
        const bool far = input.Below(8) == 0;
        const auto edge = [&] { return far ? int{input.Word()} : input.Between(0, MaxEdge); };
        const int x = edge(), y = edge(), w = edge(), h = edge();
        Feed(input, arrayLength);

        const jlong result =
            decoder.lbe ? LBE(performLBE)(m_Jvm.env(), nullptr, length, buffers[0], array, quality,
                                          width, height, -1, -1, x, y, w, h, m_iStream, m_iRenderer,
                                          decoder.handle, m_iLogger)
                        : ICT(performICT)(m_Jvm.env(), nullptr, length, argb ? buffers[0] : nullptr,
                                          argb ? nullptr : buffers[0], buffers[1], buffers[2],
                                          array, quality, width, height, -1, -1, x, y, w, h,
                                          m_iStream, m_iRenderer, decoder.handle, m_iLogger);
        Check(decoder.handle != 0 || result == -1, "a call without decoder succeeds");
        for (size_t i = 0; attached && i < (argb ? 1 : 3); ++i)
            Check(pages[i].Intact(), "bytes beside the framebuffer are overwritten");
        for (const tests::FakeHelper::Stall& stall : m_Helper.m_stalls)
            Check(stall.offset >= 0 && stall.count > 0 &&
                      static_cast<size_t>(stall.offset) + static_cast<size_t>(stall.count) <=
                          arrayLength,
                  "bytes outside the array are handed back");
        m_Helper.m_stalls.clear();
        m_Helper.m_lines.clear();
        m_Helper.m_capacities.clear();
    }

    /// What the coming reads deliver, and now and then claim to deliver.
    void Feed(FuzzInput& input, size_t arrayLength) {
        m_Helper.m_pieces.clear();
        m_Helper.m_claims.clear();
        for (unsigned pieces = input.Below(4); pieces > 0; --pieces) {
            const std::span<const uint8_t> bytes = input.Take(1 + input.Byte() % arrayLength);
            m_Helper.m_pieces.emplace_back(bytes.begin(), bytes.end());
        }
        if (input.Below(8) == 0)
            m_Helper.m_claims.push_back(static_cast<jint>(input.DoubleWord()));
    }

    template <class Reference>
    Reference Local(tests::FakeJvm::Object& object) {
        ++m_iOwnLocals;
        return m_Jvm.local<Reference>(object);
    }

    void CheckBalance() {
        Check(m_Jvm.m_misuses.empty(), "the virtual machine is misused");
        Check(m_Jvm.m_lentBuffers == 0, "a lent buffer is kept");
        Check(m_Jvm.attachedThreads() == 1, "a worker enters the virtual machine");
        Check(!m_Jvm.m_pendingException, "an exception is left pending");
        Check(m_Jvm.liveGlobals() == 2, "global references do not balance");
        // Lookups leave their classes to the machine until a native method returns.
        const auto lookups = m_Jvm.calls("GetObjectClass") + m_Jvm.calls("FindClass");
        Check(static_cast<long>(m_Jvm.liveLocals()) == m_iOwnLocals + lookups,
              "local references do not balance");
    }

    tests::FakeJvm m_Jvm;
    tests::FakeHelper m_Helper{m_Jvm};
    long m_iOwnLocals = 1; ///< the helper's
    jlong m_iLogger;
    jlong m_iStream;
    jlong m_iRenderer;
    std::array<Decoder, 2> m_Decoders;
    /// Their code tables take long to make, so that they serve one script after the other.
    std::multimap<Arguments, jlong> m_SpareIctDecoders;
};

} // namespace
} // namespace Vostrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace Vostrel::fuzz;
    constexpr int ScriptsOfAViewer = 5000;
    static auto viewer = std::make_unique<Viewer>();
    static int scripts = 0;
    if (++scripts % ScriptsOfAViewer == 0) {
        viewer.reset(); // ends its virtual machine before the next one begins
        viewer = std::make_unique<Viewer>();
    }
    FuzzInput input(data, size);
    viewer->Run(input);
    return 0;
}
