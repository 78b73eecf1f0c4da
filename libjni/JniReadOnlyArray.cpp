#include "libjni/JniReadOnlyArray.h"

#include "libjni/JavaVm.h"

namespace Vostrel::libjni {

JniReadOnlyArray<unsigned char, jbyteArray>::JniReadOnlyArray(jbyteArray array, int64_t length,
                                                              unsigned char* storage,
                                                              bool ownsStorage)
    : m_iLength(length), m_array(array), m_bOwnsStorage(ownsStorage), m_puiStorage(storage) {
    if (storage)
        copyFirst(m_iLength);
}

JniReadOnlyArray<unsigned char, jbyteArray>::~JniReadOnlyArray() {
    if (m_bOwnsStorage)
        delete[] m_puiStorage;
}

int64_t JniReadOnlyArray<unsigned char, jbyteArray>::lengthOf(jbyteArray array) {
    return array ? JavaVm::getInstance().getEnv()->GetArrayLength(array) : 0;
}

void JniReadOnlyArray<unsigned char, jbyteArray>::copyFirst(int64_t count) {
    if (count > 0) {
        JavaVm::getInstance().getEnv()->GetByteArrayRegion(m_array, 0, static_cast<jsize>(count),
                                                           reinterpret_cast<jbyte*>(m_puiStorage));
    }
}

} // namespace Vostrel::libjni
