#include "libjni/JavaEnum.h"

#include "libjni/JavaVm.h"
#include "libjni/Status.h"

namespace Vostrel::libjni {

int JavaEnum::getValue(jobject& value, const char* valueName) const {
    const std::string signature = "L" + getName() + ";";
    return getObject(value, valueName, signature.c_str());
}

int JavaEnum::getValue(jobject& value, const char* className, const char* valueName) {
    JNIEnv* env = JavaVm::getInstance().getEnv();
    const jclass enumClass = env->FindClass(className);
    if (!enumClass)
        return reportMissingEnumClass(className);
    const int status = JavaEnum(enumClass, className).getValue(value, valueName);
    env->DeleteLocalRef(enumClass);
    return status;
}

} // namespace Vostrel::libjni
