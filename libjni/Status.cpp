#include "libjni/Status.h"

#include <cstdio>

namespace Vostrel::libjni {

int reportMissingMethod(const char* name, const char* signature) {
    std::printf("Could not find \"%s%s\" method", name, signature);
    return MethodNotFound;
}

int reportMissingField(const char* name) {
    std::printf("Could not find \"%s\" field", name);
    return FieldNotFound;
}

int reportMissingField(const char* name, const char* signature) {
    std::printf("Could not find \"%s\" field of \"%s\" type", name, signature);
    return FieldNotFound;
}

int reportMissingEnumClass(const char* className) {
    std::printf("Could not find \"%s\" enum class", className);
    return EnumClassNotFound;
}

} // namespace Vostrel::libjni
