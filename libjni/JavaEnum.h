#pragma once

#include "libjni/JavaClass.h"

namespace Vostrel::libjni {

/// A Java enum class, whose constants are static fields of its own type.
class JavaEnum : public JavaClass {
public:
    using JavaClass::JavaClass;

    /// The constant with the given name, as a new local reference.
    int getValue(jobject& value, const char* valueName) const;

    /// The same for a class given by its name in the slash form.
    static int getValue(jobject& value, const char* className, const char* valueName);
};

} // namespace Vostrel::libjni
