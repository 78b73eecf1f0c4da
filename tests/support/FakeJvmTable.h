#pragma once

#include <jni.h>

namespace Vostrel::tests {

/// The function tables of the fake VM; every other entry ends the process.
const JNINativeInterface_& fakeNativeInterface();
const JNIInvokeInterface_& fakeInvokeInterface();

} // namespace Vostrel::tests
