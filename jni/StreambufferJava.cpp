#include "jni/StreambufferJava.h"

#include "libimagedecoder/ImageDecoderException.h"
#include "libjni/Status.h"

#include <algorithm>

namespace Vostrel::jni {

using libimagedecoder::ImageDecoderException;
using libjni::GlobalRef;
using TransferView = libjni::JniReadOnlyArray<unsigned char, jbyteArray>;

void StreambufferJava::FillInternalBufferFromArray(unsigned long size, jbyteArray array) {
    m_uiCapacity = size;
    m_uiSize = 0;
    m_uiPosition = 0;
    m_uiPaddingCount = 0;

    m_pTransferView.reset();
    m_pTransferArray = std::make_shared<GlobalRef>(array);
    const auto globalArray = static_cast<jbyteArray>(m_pTransferArray->get());

    // The view copies the whole array, whose length the caller may have misstated.
    const int64_t length = TransferView::lengthOf(globalArray);
    const auto arrayLength = static_cast<size_t>(length);
    m_pInternalBuffer.reset();
    m_puiData = nullptr;
    m_pInternalBuffer = std::make_unique<unsigned char[]>(std::max<size_t>(size, arrayLength));
    m_puiData = m_pInternalBuffer.get();
    m_pTransferView = std::make_shared<TransferView>(globalArray, length, m_puiData, false);

    m_bEndOfStream = false;
}

size_t StreambufferJava::ReadFromBuffer() {
    int count = 0;
    if (callIntMethod(count, "read", "([BI)I", m_pTransferArray->get(),
                      static_cast<jint>(m_uiCapacity)) != libjni::Success)
        throw ImageDecoderException("Connection closed");

    const bool fits = count >= 0 && static_cast<size_t>(count) <= m_uiCapacity &&
                      count <= m_pTransferView->getLength();
    if (!fits)
        throw ImageDecoderException("Unable to read from java buffer!");

    m_pTransferView->copyFirst(count);
    return static_cast<size_t>(count);
}

void StreambufferJava::ReleaseInternalBuffer() {
    m_pInternalBuffer.reset();
    m_puiData = nullptr;

    // The transfer array still holds the bytes of the last read at their places.
    if (m_uiPosition < m_uiSize &&
        callVoidMethod("stall", "([BII)V", m_pTransferArray->get(), static_cast<jint>(m_uiPosition),
                       static_cast<jint>(m_uiSize - m_uiPosition)) != libjni::Success)
        throw ImageDecoderException("Connection closed");

    m_pTransferView.reset();
    m_pTransferArray.reset();
    ResetBufferState();
}

} // namespace Vostrel::jni
