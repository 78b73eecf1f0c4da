#pragma once

#include "libjni/OwnedRef.h"

namespace Vostrel::libjni {

/// Keeps a Java object reachable for the current thread and native call at most.
using LocalRef = OwnedRef<&JNIEnv::NewLocalRef, &JNIEnv::DeleteLocalRef>;

} // namespace Vostrel::libjni
