#include "jni/LoggerJava.h"

#include "libjni/String.h"

namespace Vostrel::jni {

void LoggerJava::LogInternal(const char* text) {
    const libjni::String line{std::string(text)};
    callVoidMethod("print", "(Ljava/lang/String;)V", line.getJ());
}

} // namespace Vostrel::jni
