#include "libjni/JavaVm.h"

using Vostrel::libjni::JavaVm;

extern "C" {

JNIEXPORT jint JNICALL JNI_OnLoad(JavaVM* vm, void*) {
    JavaVm::getInstance().init(vm);
    return JNI_VERSION_1_6;
}

JNIEXPORT void JNICALL JNI_OnUnload(JavaVM*, void*) {
    JavaVm::getInstance().cleanup();
}

} // extern "C"
