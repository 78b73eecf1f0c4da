#pragma once

#include "libjni/JniArray.h"

#include <jni.h>

#include <cstdarg>
#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>

namespace Vostrel::libjni {

/// A Java object whose methods and fields are reached by name, each looked up once.
///
/// Does not own the reference; GlobalRef and LocalRef do. Every call returns a status of Status.h
/// and leaves its output alone unless it succeeds. A Java exception is neither checked nor cleared.
/// Thread safety: the lookup caches are not locked; one object is used by one thread at a time.
class JavaObject {
public:
    explicit JavaObject(jobject object) : m_object(object) {}

    /// Copies the reference; the lookups start anew.
    JavaObject(const JavaObject& other) : m_object(other.m_object) {}

    /// Copies the reference alone and keeps this object's own lookups, so that both sides must be
    /// of one Java class when methods or fields were used already.
    JavaObject& operator=(const JavaObject& other);

    virtual ~JavaObject() = default;

    jobject get() const { return m_object; }

    /// Whether both refer to the same Java object.
    bool operator==(const JavaObject& other) const;

    /// Identity of this wrapper: two wrappers of one Java object hash differently.
    size_t hash() const { return reinterpret_cast<size_t>(this); }

    /// Cached lookup; null when the class has no such member, which is cached as well.
    jmethodID findMethod(JNIEnv* env, const char* name, const char* signature);
    jfieldID findField(JNIEnv* env, const char* name, const char* signature);

    /// Calls an instance method with the Java arguments that follow the JNI signature.
    int callVoidMethod(const char* name, const char* signature, ...);
    int callIntMethod(int& result, const char* name, const char* signature, ...);
    int callLongMethod(long& result, const char* name, const char* signature, ...);

    /// The result is a new local reference, or null.
    int callObjectMethodV(jobject& result, const char* name, const char* signature,
                          va_list arguments);
    int callObjectMethod(jobject& result, const char* name, const char* signature, ...);

    /// The text of the returned string, empty for null.
    int callStringMethod(std::string& result, const char* name, const char* signature, ...);

    /// A view of the returned int[], whose local reference lives until the native call returns;
    /// for null the output stays as it is.
    int callIntArrayMethod(std::shared_ptr<JniArray<int, jintArray>>& result, const char* name,
                           const char* signature, ...);

    /// Read an instance field.
    int getInt(int& value, const char* name);
    int getLong(long& value, const char* name);
    int getObject(jobject& value, const char* name, const char* signature);
    int getString(std::string& value, const char* name);

    /// The result of the Java method toString, empty when it has none.
    std::string toString();

protected:
    jobject m_object;

private:
    template <class Invoke>
    int callMethod(const char* name, const char* signature, Invoke invoke);

    template <class Read>
    bool readField(const char* name, const char* signature, Read read);

    std::unordered_map<std::string, jmethodID> m_methods;
    std::unordered_map<std::string, jfieldID> m_fields;
};

} // namespace Vostrel::libjni
