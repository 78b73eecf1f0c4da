#pragma once

#include "libimagedecoder/IStreambuffer.h"
#include "libjni/GlobalRef.h"
#include "libjni/JniReadOnlyArray.h"

#include <memory>

namespace Vostrel::jni {

/// Pulls an update's bytes from a Java object, which it keeps reachable, through a byte array that
/// the Java side lends for one update (the transfer array).
///
/// The Java object has `int read(byte[] array, int capacity)`, which stores the stream's next bytes
/// at the array's start and returns their number (0 for no data, negative for failure), and
/// `void stall(byte[] array, int offset, int count)`, which takes back the bytes that the update
/// did not use.
///
/// An object is idle, or bound between FillInternalBufferFromArray and ReleaseInternalBuffer; only
/// a bound one is read from. IStreambuffer stays the first base: the object's handle is used as an
/// IStreambuffer*. Thread safety: one thread at a time.
class StreambufferJava : public libimagedecoder::IStreambuffer, private libjni::GlobalRef {
public:
    StreambufferJava(jobject stream, libimagedecoder::ILogger* logger)
        : IStreambuffer(logger), libjni::GlobalRef(stream) {}

    StreambufferJava(const StreambufferJava&) = delete;
    StreambufferJava& operator=(const StreambufferJava&) = delete;

    /// Binds a transfer array, whose length in bytes is `size`, and makes a fresh stream of the
    /// object: no bytes, no padding used, not at the end. Replaces an array that is still bound.
    /// Throws std::bad_alloc.
    void FillInternalBufferFromArray(unsigned long size, jbyteArray array);

    /// Calls read. Throws ImageDecoderException "Connection closed" when there is no such method,
    /// and "Unable to read from java buffer!" for a failed read or one that claims more bytes than
    /// the transfer array has.
    size_t ReadFromBuffer() override;

    /// Gives unused bytes back through stall and unbinds the transfer array. Throws
    /// ImageDecoderException "Connection closed" when there are such bytes but no such method.
    void ReleaseInternalBuffer();

private:
    std::shared_ptr<libjni::GlobalRef> m_pTransferArray;
    std::shared_ptr<libjni::JniReadOnlyArray<unsigned char, jbyteArray>> m_pTransferView;
    std::unique_ptr<unsigned char[]> m_pInternalBuffer; ///< the storage behind m_puiData
};

} // namespace Vostrel::jni
