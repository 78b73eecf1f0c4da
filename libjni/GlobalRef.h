#pragma once

#include "libjni/OwnedRef.h"

namespace Vostrel::libjni {

/// Keeps a Java object reachable from any thread until destruction.
using GlobalRef = OwnedRef<&JNIEnv::NewGlobalRef, &JNIEnv::DeleteGlobalRef>;

} // namespace Vostrel::libjni
