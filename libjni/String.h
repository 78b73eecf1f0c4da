#pragma once

#include <jni.h>

#include <string>

namespace Vostrel::libjni {

/// A Java string and its text, kept side by side. Owns one local reference, so it belongs to the
/// thread and the native call that made it.
class String {
public:
    /// Takes a local reference of its own and copies the text; a null string has an empty text.
    explicit String(jstring string);

    /// Makes a Java string of modified UTF-8 text.
    explicit String(const std::string& text);

    String(const String&) = delete;
    String& operator=(const String&) = delete;
    virtual ~String();

    /// The text in modified UTF-8.
    const std::string& get() const { return m_text; }

    /// The Java string; owned by this object.
    jstring getJ() const { return m_jString; }

    /// The text of a local reference, which is deleted.
    static std::string consume(jobject string);

private:
    jstring m_jString;
    std::string m_text;
};

} // namespace Vostrel::libjni
