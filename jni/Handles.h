#pragma once

#include <jni.h>

#include <cstdint>

namespace Vostrel::jni {

/// A handle is the address of a native object's interface (ILogger, IStreambuffer, IImageDecoder)
/// or of a renderer, as the Java side keeps it; 0 is no object. The Java side owns the object.
template <class Interface>
jlong toHandle(Interface* object) {
    return static_cast<jlong>(reinterpret_cast<intptr_t>(object));
}

template <class Interface>
Interface* fromHandle(jlong handle) {
    return reinterpret_cast<Interface*>(static_cast<intptr_t>(handle));
}

/// Deletes the object behind a handle through its virtual destructor; nothing happens for 0.
template <class Interface>
void deleteHandle(jlong handle) {
    delete fromHandle<Interface>(handle);
}

/// The handle of the object that `make` returns. Any native exception becomes a pending Java
/// IOException with the given message, and the handle 0.
template <class Interface, class Make>
jlong createOrIOException(JNIEnv* env, const char* message, Make make) {
    try {
        return toHandle<Interface>(make());
    } catch (...) {
        // Without the class, the Java exception of its failed lookup stays pending instead.
        if (const jclass exceptionClass = env->FindClass("java/io/IOException"))
            env->ThrowNew(exceptionClass, message);
        return 0;
    }
}

} // namespace Vostrel::jni
