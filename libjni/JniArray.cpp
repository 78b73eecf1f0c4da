#include "libjni/JniArray.h"

#include "libjni/JavaVm.h"

namespace Vostrel::libjni {

JniArray<int, jintArray>::JniArray(jintArray array) : m_array(array) {
    JNIEnv* env = JavaVm::getInstance().getEnv();
    m_iLength = env->GetArrayLength(array);
    m_piElements = env->GetIntArrayElements(array, nullptr);
}

JniArray<int, jintArray>::~JniArray() {
    if (m_piElements) {
        constexpr jint CopyBackAndFree = 0;
        JavaVm::getInstance().getEnv()->ReleaseIntArrayElements(
            m_array, m_piElements, m_bAbort ? JNI_ABORT : CopyBackAndFree);
    }
}

} // namespace Vostrel::libjni
