#pragma once

#include "libjni/JavaObject.h"
#include "libjni/JavaVm.h"

namespace Vostrel::libjni {

/// A JavaObject that owns its reference. `Acquire` and `Release` are the JNI functions that make
/// and delete a reference of one kind.
template <jobject (JNIEnv::*Acquire)(jobject), void (JNIEnv::*Release)(jobject)>
class OwnedRef : public JavaObject {
public:
    /// Makes a new reference to the object; null stays null.
    explicit OwnedRef(jobject object) : JavaObject(acquire(object)) {}
    explicit OwnedRef(const JavaObject& other) : OwnedRef(other.get()) {}
    OwnedRef(const OwnedRef& other) : OwnedRef(other.get()) {}

    /// Makes a new reference to the other's object. The reference held before is not deleted, since
    /// callers may have handed it out through get(): a wrapper is meant to be assigned once, while
    /// it still holds null.
    OwnedRef& operator=(const JavaObject& other) {
        m_object = acquire(other.get());
        return *this;
    }
    OwnedRef& operator=(const OwnedRef& other) {
        return *this = static_cast<const JavaObject&>(other);
    }

    ~OwnedRef() override { (JavaVm::getInstance().getEnv()->*Release)(m_object); }

private:
    static jobject acquire(jobject object) {
        return (JavaVm::getInstance().getEnv()->*Acquire)(object);
    }
};

} // namespace Vostrel::libjni
