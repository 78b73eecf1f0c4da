#include "libjni/String.h"

#include "libjni/JavaVm.h"

namespace Vostrel::libjni {
namespace {

std::string copyText(JNIEnv* env, jstring string) {
    const char* characters = string ? env->GetStringUTFChars(string, nullptr) : nullptr;
    if (!characters) {
        return {};
    }
    std::string text(characters);
    env->ReleaseStringUTFChars(string, characters);
    return text;
}

} // namespace

String::String(jstring string) {
    JNIEnv* env = JavaVm::getInstance().getEnv();
    m_jString = static_cast<jstring>(env->NewLocalRef(string));
    m_text = copyText(env, string);
}

String::String(const std::string& text)
    : m_jString(JavaVm::getInstance().getEnv()->NewStringUTF(text.c_str())), m_text(text) {}

String::~String() {
    JavaVm::getInstance().getEnv()->DeleteLocalRef(m_jString);
}

std::string String::consume(jobject string) {
    std::string text = String(static_cast<jstring>(string)).get();
    JavaVm::getInstance().getEnv()->DeleteLocalRef(string);
    return text;
}

} // namespace Vostrel::libjni
