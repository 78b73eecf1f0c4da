#include "libjni/JavaVm.h"

namespace Vostrel::libjni {

void JavaVm::init(JavaVM* vm) {
    m_pVm = vm;
}

void JavaVm::cleanup() {
    m_pVm = nullptr;
}

JNIEnv* JavaVm::getEnv() const {
    void* env = nullptr;
    if (m_pVm->GetEnv(&env, JNI_VERSION_1_6) != JNI_OK)
        m_pVm->AttachCurrentThread(&env, nullptr);
    return static_cast<JNIEnv*>(env);
}

void JavaVm::detach() const {
    m_pVm->DetachCurrentThread();
}

} // namespace Vostrel::libjni
