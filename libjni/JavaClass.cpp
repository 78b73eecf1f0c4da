#include "libjni/JavaClass.h"

#include "libjni/JavaVm.h"
#include "libjni/Status.h"
#include "libjni/String.h"

namespace Vostrel::libjni {

template <class Read>
bool JavaClass::readField(const char* name, const char* signature, Read read) const {
    JNIEnv* env = JavaVm::getInstance().getEnv();
    const jfieldID field = env->GetStaticFieldID(m_class, name, signature);
    if (field)
        read(env, field);
    return field != nullptr;
}

int JavaClass::getInt(int& value, const char* name) const {
    const bool found = readField(name, "I", [&](JNIEnv* env, jfieldID field) {
        value = env->GetStaticIntField(m_class, field);
    });
    return found ? Success : reportMissingField(name);
}

int JavaClass::getLong(long& value, const char* name) const {
    const bool found = readField(name, "J", [&](JNIEnv* env, jfieldID field) {
        value = env->GetStaticLongField(m_class, field);
    });
    return found ? Success : reportMissingField(name);
}

int JavaClass::getObject(jobject& value, const char* name, const char* signature) const {
    const bool found = readField(name, signature, [&](JNIEnv* env, jfieldID field) {
        value = env->GetStaticObjectField(m_class, field);
    });
    return found ? Success : reportMissingField(name, signature);
}

int JavaClass::getString(std::string& value, const char* name) const {
    jobject string = nullptr;
    const int status = getObject(string, name, "Ljava/lang/String;");
    if (status == Success)
        value = String::consume(string);
    return status;
}

} // namespace Vostrel::libjni
