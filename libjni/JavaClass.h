#pragma once

#include <jni.h>

#include <string>

namespace Vostrel::libjni {

/// A Java class and its static fields, looked up anew by every read.
///
/// Does not own the class reference. Every read returns a status of Status.h and leaves its output
/// alone unless it succeeds.
class JavaClass {
public:
    /// @param name in the slash form, e.g. "java/lang/Thread"
    JavaClass(jclass javaClass, const std::string& name) : m_class(javaClass), m_name(name) {}
    virtual ~JavaClass() = default;

    jclass get() const { return m_class; }
    const std::string& getName() const { return m_name; }

    int getInt(int& value, const char* name) const;
    int getLong(long& value, const char* name) const;
    int getObject(jobject& value, const char* name, const char* signature) const;
    int getString(std::string& value, const char* name) const;

private:
    template <class Read>
    bool readField(const char* name, const char* signature, Read read) const;

    jclass m_class;
    std::string m_name;
};

} // namespace Vostrel::libjni
