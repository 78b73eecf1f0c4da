#include "libjni/JavaObject.h"

#include "libjni/JavaVm.h"
#include "libjni/Status.h"
#include "libjni/String.h"

namespace Vostrel::libjni {
namespace {

template <class Id, class Lookup>
Id findCached(std::unordered_map<std::string, Id>& cache, const char* name, const char* signature,
              Lookup lookup) {
    const std::string key = std::string(name) + "_" + signature;
    if (const auto known = cache.find(key); known != cache.end())
        return known->second;
    // A null ID is kept too: a missing member is asked for once.
    return cache[key] = lookup();
}

/// Looks up in the object's class. A VM without memory makes null references, which have no
/// members.
template <class Id>
Id findInClass(JNIEnv* env, jobject object, Id (JNIEnv::*get)(jclass, const char*, const char*),
               const char* name, const char* signature) {
    const jclass javaClass = object ? env->GetObjectClass(object) : nullptr;
    return javaClass ? (env->*get)(javaClass, name, signature) : nullptr;
}

} // namespace

JavaObject& JavaObject::operator=(const JavaObject& other) {
    m_object = other.m_object;
    return *this;
}

bool JavaObject::operator==(const JavaObject& other) const {
    return JavaVm::getInstance().getEnv()->IsSameObject(m_object, other.m_object) == JNI_TRUE;
}

jmethodID JavaObject::findMethod(JNIEnv* env, const char* name, const char* signature) {
    return findCached(m_methods, name, signature, [&] {
        return findInClass(env, m_object, &JNIEnv::GetMethodID, name, signature);
    });
}

jfieldID JavaObject::findField(JNIEnv* env, const char* name, const char* signature) {
    return findCached(m_fields, name, signature, [&] {
        return findInClass(env, m_object, &JNIEnv::GetFieldID, name, signature);
    });
}

template <class Invoke>
int JavaObject::callMethod(const char* name, const char* signature, Invoke invoke) {
    JNIEnv* env = JavaVm::getInstance().getEnv();
    const jmethodID method = findMethod(env, name, signature);
    if (!method)
        return reportMissingMethod(name, signature);
    invoke(env, method);
    return Success;
}

int JavaObject::callVoidMethod(const char* name, const char* signature, ...) {
    va_list arguments;
    va_start(arguments, signature);
    const int status = callMethod(name, signature, [&](JNIEnv* env, jmethodID method) {
        env->CallVoidMethodV(m_object, method, arguments);
    });
    va_end(arguments);
    return status;
}

int JavaObject::callIntMethod(int& result, const char* name, const char* signature, ...) {
    va_list arguments;
    va_start(arguments, signature);
    const int status = callMethod(name, signature, [&](JNIEnv* env, jmethodID method) {
        result = env->CallIntMethodV(m_object, method, arguments);
    });
    va_end(arguments);
    return status;
}

int JavaObject::callLongMethod(long& result, const char* name, const char* signature, ...) {
    va_list arguments;
    va_start(arguments, signature);
    const int status = callMethod(name, signature, [&](JNIEnv* env, jmethodID method) {
        result = env->CallLongMethodV(m_object, method, arguments);
    });
    va_end(arguments);
    return status;
}

int JavaObject::callObjectMethodV(jobject& result, const char* name, const char* signature,
                                  va_list arguments) {
    return callMethod(name, signature, [&](JNIEnv* env, jmethodID method) {
        result = env->CallObjectMethodV(m_object, method, arguments);
    });
}

int JavaObject::callObjectMethod(jobject& result, const char* name, const char* signature, ...) {
    va_list arguments;
    va_start(arguments, signature);
    const int status = callObjectMethodV(result, name, signature, arguments);
    va_end(arguments);
    return status;
}

int JavaObject::callStringMethod(std::string& result, const char* name, const char* signature,
                                 ...) {
    jobject string = nullptr;
    va_list arguments;
    va_start(arguments, signature);
    const int status = callObjectMethodV(string, name, signature, arguments);
    va_end(arguments);
    if (status == Success)
        result = String::consume(string);
    return status;
}

int JavaObject::callIntArrayMethod(std::shared_ptr<JniArray<int, jintArray>>& result,
                                   const char* name, const char* signature, ...) {
    jobject array = nullptr;
    va_list arguments;
    va_start(arguments, signature);
    const int status = callObjectMethodV(array, name, signature, arguments);
    va_end(arguments);
    if (status == Success && array)
        result = std::make_shared<JniArray<int, jintArray>>(static_cast<jintArray>(array));
    return status;
}

template <class Read>
bool JavaObject::readField(const char* name, const char* signature, Read read) {
    JNIEnv* env = JavaVm::getInstance().getEnv();
    const jfieldID field = findField(env, name, signature);
    if (field)
        read(env, field);
    return field != nullptr;
}

int JavaObject::getInt(int& value, const char* name) {
    const bool found = readField(
        name, "I", [&](JNIEnv* env, jfieldID field) { value = env->GetIntField(m_object, field); });
    return found ? Success : reportMissingField(name);
}

int JavaObject::getLong(long& value, const char* name) {
    const bool found = readField(name, "J", [&](JNIEnv* env, jfieldID field) {
        value = env->GetLongField(m_object, field);
    });
    return found ? Success : reportMissingField(name);
}

int JavaObject::getObject(jobject& value, const char* name, const char* signature) {
    const bool found = readField(name, signature, [&](JNIEnv* env, jfieldID field) {
        value = env->GetObjectField(m_object, field);
    });
    return found ? Success : reportMissingField(name, signature);
}

int JavaObject::getString(std::string& value, const char* name) {
    jobject string = nullptr;
    const int status = getObject(string, name, "Ljava/lang/String;");
    if (status == Success)
        value = String::consume(string);
    return status;
}

std::string JavaObject::toString() {
    std::string text;
    callStringMethod(text, "toString", "()Ljava/lang/String;");
    return text;
}

} // namespace Vostrel::libjni
