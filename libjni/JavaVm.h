#pragma once

#include "libjni/Singleton.h"

#include <jni.h>

namespace Vostrel::libjni {

/// The process's Java VM, through which every JNI call of this library finds its environment.
///
/// Thread safety: init() and cleanup() belong to the library's load and unload hooks; everything
/// else may be called by any thread in between.
class JavaVm : public qv::Singleton<JavaVm> {
public:
    JavaVm() = default;
    JavaVm(const JavaVm&) = delete;
    JavaVm& operator=(const JavaVm&) = delete;
    virtual ~JavaVm() = default;

    /// Remembers the VM; it stays owned by the caller.
    void init(JavaVM* vm);

    /// Forgets the VM.
    void cleanup();

    /// The VM given to init(), or null.
    JavaVM* getVm() const { return m_pVm; }

    /// The calling thread's environment. A thread that the VM does not know is attached as a
    /// non-daemon thread and stays so. Requires init().
    JNIEnv* getEnv() const;

    /// Detaches the calling thread from the VM. Requires init().
    void detach() const;

private:
    JavaVM* m_pVm = nullptr;
};

} // namespace Vostrel::libjni
