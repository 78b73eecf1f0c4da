#include "tests/support/FakeJvmTable.h"

#include "tests/support/FakeJvm.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace Vostrel::tests {
namespace {

template <class Table>
Table tableOfTraps() {
    const auto trap = +[] {
        std::fputs("A JNI function outside the fake table was called.\n", stderr);
        std::abort();
    };
    std::array<void (*)(), sizeof(Table) / sizeof(void*)> entries;
    entries.fill(trap);
    return std::bit_cast<Table>(entries);
}

/// The Java arguments of a call, taken as the method's signature tells.
FakeJvm::Arguments takeArguments(const std::string& signature, va_list arguments) {
    FakeJvm::Arguments values;
    for (const char* type = signature.c_str() + 1; *type != ')'; ++type) {
        const bool isArray = *type == '[';
        while (*type == '[')
            ++type;
        const bool isObject = *type == 'L';
        if (isObject)
            type = std::strchr(type, ';');
        jvalue value{};
        if (isArray || isObject)
            value.l = va_arg(arguments, jobject);
        else if (*type == 'J')
            value.j = va_arg(arguments, jlong);
        else
            value.i = va_arg(arguments, jint);
        values.push_back(value);
    }
    return values;
}

} // namespace

/// The JNI functions, in the order of their groups: classes and members, calls, fields, references,
/// strings, arrays, the rest.
struct FakeJvmTable {
    using Object = FakeJvm::Object;

    static FakeJvm& jvmOf(JNIEnv* env) {
        const auto& environment = static_cast<FakeJvm::Environment&>(*env);
        if (environment.thread != std::this_thread::get_id())
            environment.jvm->m_misuses.emplace_back("use of another thread's environment");
        return *environment.jvm;
    }

    static void raise(FakeJvm& jvm, const char* className, const std::string& message) {
        jvm.m_pendingException = {className, message};
    }

    static jclass JNICALL FindClass(JNIEnv* env, const char* name) {
        FakeJvm& jvm = jvmOf(env);
        const bool fails = jvm.enter("FindClass");
        const auto known = jvm.m_classes.find(name);
        if (fails || known == jvm.m_classes.end()) {
            raise(jvm, "java/lang/NoClassDefFoundError", name);
            return nullptr;
        }
        return jvm.local<jclass>(*known->second);
    }

    static jclass JNICALL GetObjectClass(JNIEnv* env, jobject object) {
        FakeJvm& jvm = jvmOf(env);
        jvm.enter("GetObjectClass");
        return jvm.local<jclass>(*jvm.target(object)->javaClass);
    }

    static jmethodID JNICALL GetMethodID(JNIEnv* env, jclass javaClass, const char* name,
                                         const char* signature) {
        FakeJvm& jvm = jvmOf(env);
        const bool fails = jvm.enter("GetMethodID");
        auto& methods = jvm.target(javaClass)->methods;
        const auto known = methods.find(std::string(name) + signature);
        if (fails || known == methods.end()) {
            raise(jvm, "java/lang/NoSuchMethodError", name);
            return nullptr;
        }
        return reinterpret_cast<jmethodID>(&known->second);
    }

    static jfieldID JNICALL GetFieldID(JNIEnv* env, jclass javaClass, const char* name,
                                       const char* signature) {
        FakeJvm& jvm = jvmOf(env);
        const bool fails = jvm.enter("GetFieldID");
        const auto& keys = jvm.target(javaClass)->fieldKeys;
        const auto known = keys.find(std::string(name) + signature);
        if (fails || known == keys.end()) {
            raise(jvm, "java/lang/NoSuchFieldError", name);
            return nullptr;
        }
        return fieldId(*known);
    }

    static jfieldID JNICALL GetStaticFieldID(JNIEnv* env, jclass javaClass, const char* name,
                                             const char* signature) {
        FakeJvm& jvm = jvmOf(env);
        const bool fails = jvm.enter("GetStaticFieldID");
        const auto& fields = jvm.target(javaClass)->fields;
        const auto known = fields.find(std::string(name) + signature);
        if (fails || known == fields.end()) {
            raise(jvm, "java/lang/NoSuchFieldError", name);
            return nullptr;
        }
        return fieldId(known->first);
    }

    static jfieldID fieldId(const std::string& key) {
        return reinterpret_cast<jfieldID>(const_cast<std::string*>(&key));
    }

    static jvalue call(JNIEnv* env, const char* function, jobject object, jmethodID id,
                       va_list arguments) {
        FakeJvm& jvm = jvmOf(env);
        jvm.enter(function);
        if (!jvm.target(object))
            return {};
        const auto& method = *reinterpret_cast<FakeJvm::Method*>(id);
        return method.body(takeArguments(method.signature, arguments));
    }

    static void JNICALL CallVoidMethodV(JNIEnv* env, jobject object, jmethodID id,
                                        va_list arguments) {
        call(env, "CallVoidMethodV", object, id, arguments);
    }

    static jint JNICALL CallIntMethodV(JNIEnv* env, jobject object, jmethodID id,
                                       va_list arguments) {
        return call(env, "CallIntMethodV", object, id, arguments).i;
    }

    static jlong JNICALL CallLongMethodV(JNIEnv* env, jobject object, jmethodID id,
                                         va_list arguments) {
        return call(env, "CallLongMethodV", object, id, arguments).j;
    }

    static jobject JNICALL CallObjectMethodV(JNIEnv* env, jobject object, jmethodID id,
                                             va_list arguments) {
        return call(env, "CallObjectMethodV", object, id, arguments).l;
    }

    static FakeJvm::Value field(JNIEnv* env, jobject holder, jfieldID id) {
        return jvmOf(env).target(holder)->fields[*reinterpret_cast<std::string*>(id)];
    }

    template <class Holder>
    static jint JNICALL GetIntField(JNIEnv* env, Holder holder, jfieldID id) {
        return static_cast<jint>(field(env, holder, id).number);
    }

    template <class Holder>
    static jlong JNICALL GetLongField(JNIEnv* env, Holder holder, jfieldID id) {
        return field(env, holder, id).number;
    }

    template <class Holder>
    static jobject JNICALL GetObjectField(JNIEnv* env, Holder holder, jfieldID id) {
        Object* object = field(env, holder, id).object;
        return object ? jvmOf(env).local(*object) : nullptr;
    }

    static jobject newRef(JNIEnv* env, const char* function, jobject object, FakeJvm::Kind kind) {
        FakeJvm& jvm = jvmOf(env);
        if (jvm.enter(function) || !object)
            return nullptr;
        return jvm.newReference(jvm.target(object), kind);
    }

    static jobject JNICALL NewGlobalRef(JNIEnv* env, jobject object) {
        return newRef(env, "NewGlobalRef", object, FakeJvm::Kind::Global);
    }

    static jobject JNICALL NewLocalRef(JNIEnv* env, jobject object) {
        return newRef(env, "NewLocalRef", object, FakeJvm::Kind::Local);
    }

    static void JNICALL DeleteGlobalRef(JNIEnv* env, jobject reference) {
        FakeJvm& jvm = jvmOf(env);
        jvm.enter("DeleteGlobalRef");
        jvm.deleteReference(reference, FakeJvm::Kind::Global);
    }

    static void JNICALL DeleteLocalRef(JNIEnv* env, jobject reference) {
        FakeJvm& jvm = jvmOf(env);
        jvm.enter("DeleteLocalRef");
        jvm.deleteReference(reference, FakeJvm::Kind::Local);
    }

    static jboolean JNICALL IsSameObject(JNIEnv* env, jobject one, jobject other) {
        FakeJvm& jvm = jvmOf(env);
        jvm.enter("IsSameObject");
        return (one ? jvm.target(one) : nullptr) == (other ? jvm.target(other) : nullptr);
    }

    static jstring JNICALL NewStringUTF(JNIEnv* env, const char* text) {
        FakeJvm& jvm = jvmOf(env);
        if (jvm.enter("NewStringUTF")) {
            raise(jvm, "java/lang/OutOfMemoryError", "");
            return nullptr;
        }
        return jvm.local<jstring>(jvm.newString(text));
    }

    static const char* JNICALL GetStringUTFChars(JNIEnv* env, jstring string, jboolean*) {
        FakeJvm& jvm = jvmOf(env);
        const Object* object = jvm.target(string);
        if (jvm.enter("GetStringUTFChars") || !object)
            return nullptr;
        ++jvm.m_lentBuffers;
        return object->text.c_str();
    }

    static void JNICALL ReleaseStringUTFChars(JNIEnv* env, jstring string, const char*) {
        FakeJvm& jvm = jvmOf(env);
        jvm.target(string);
        --jvm.m_lentBuffers;
    }

    static jsize JNICALL GetArrayLength(JNIEnv* env, jarray array) {
        FakeJvm& jvm = jvmOf(env);
        jvm.enter("GetArrayLength");
        const Object* object = jvm.target(array);
        return object ? static_cast<jsize>(std::max(object->bytes.size(), object->ints.size())) : 0;
    }

    static jint* JNICALL GetIntArrayElements(JNIEnv* env, jintArray array, jboolean*) {
        FakeJvm& jvm = jvmOf(env);
        const Object* object = jvm.target(array);
        if (jvm.enter("GetIntArrayElements") || !object)
            return nullptr;
        ++jvm.m_lentBuffers;
        auto* elements = new jint[object->ints.size()];
        std::copy(object->ints.begin(), object->ints.end(), elements);
        return elements;
    }

    static void JNICALL ReleaseIntArrayElements(JNIEnv* env, jintArray array, jint* elements,
                                                jint mode) {
        FakeJvm& jvm = jvmOf(env);
        Object* object = jvm.target(array);
        if (object && mode != JNI_ABORT)
            std::copy_n(elements, object->ints.size(), object->ints.begin());
        if (mode != JNI_COMMIT) {
            delete[] elements;
            --jvm.m_lentBuffers;
        }
    }

    static void JNICALL GetByteArrayRegion(JNIEnv* env, jbyteArray array, jsize start, jsize length,
                                           jbyte* destination) {
        FakeJvm& jvm = jvmOf(env);
        jvm.enter("GetByteArrayRegion");
        const Object* object = jvm.target(array);
        if (!object)
            return;
        if (start < 0 || length < 0 ||
            static_cast<size_t>(start) + static_cast<size_t>(length) > object->bytes.size()) {
            jvm.m_misuses.emplace_back("region outside the array");
            return;
        }
        std::copy_n(object->bytes.begin() + start, length, destination);
    }

    static void* JNICALL GetDirectBufferAddress(JNIEnv* env, jobject buffer) {
        FakeJvm& jvm = jvmOf(env);
        jvm.enter("GetDirectBufferAddress");
        const Object* object = jvm.target(buffer);
        if (object)
            jvm.m_journal.back().directAddress = object->directAddress;
        return object ? object->directAddress : nullptr;
    }

    static jint JNICALL ThrowNew(JNIEnv* env, jclass javaClass, const char* message) {
        FakeJvm& jvm = jvmOf(env);
        jvm.enter("ThrowNew");
        raise(jvm, jvm.target(javaClass)->text.c_str(), message);
        return JNI_OK;
    }

    static FakeJvm& jvmOf(JavaVM* vm) { return *static_cast<FakeJvm::Vm&>(*vm).jvm; }

    static jint JNICALL GetEnv(JavaVM* vm, void** env, jint version) {
        *env = version == JNI_VERSION_1_6 ? jvmOf(vm).findEnv() : nullptr;
        return *env ? JNI_OK : JNI_EDETACHED;
    }

    static jint JNICALL AttachCurrentThread(JavaVM* vm, void** env, void* arguments) {
        if (arguments)
            jvmOf(vm).m_misuses.emplace_back("attached with arguments");
        *env = jvmOf(vm).attach();
        return JNI_OK;
    }

    static jint JNICALL DetachCurrentThread(JavaVM* vm) {
        jvmOf(vm).detach();
        return JNI_OK;
    }

    static JNINativeInterface_ nativeInterface() {
        auto table = tableOfTraps<JNINativeInterface_>();
        table.FindClass = FindClass;
        table.GetObjectClass = GetObjectClass;
        table.GetMethodID = GetMethodID;
        table.GetFieldID = GetFieldID;
        table.GetStaticFieldID = GetStaticFieldID;
        table.CallVoidMethodV = CallVoidMethodV;
        table.CallIntMethodV = CallIntMethodV;
        table.CallLongMethodV = CallLongMethodV;
        table.CallObjectMethodV = CallObjectMethodV;
        table.GetIntField = GetIntField<jobject>;
        table.GetLongField = GetLongField<jobject>;
        table.GetObjectField = GetObjectField<jobject>;
        table.GetStaticIntField = GetIntField<jclass>;
        table.GetStaticLongField = GetLongField<jclass>;
        table.GetStaticObjectField = GetObjectField<jclass>;
        table.NewGlobalRef = NewGlobalRef;
        table.NewLocalRef = NewLocalRef;
        table.DeleteGlobalRef = DeleteGlobalRef;
        table.DeleteLocalRef = DeleteLocalRef;
        table.IsSameObject = IsSameObject;
        table.NewStringUTF = NewStringUTF;
        table.GetStringUTFChars = GetStringUTFChars;
        table.ReleaseStringUTFChars = ReleaseStringUTFChars;
        table.GetArrayLength = GetArrayLength;
        table.GetIntArrayElements = GetIntArrayElements;
        table.ReleaseIntArrayElements = ReleaseIntArrayElements;
        table.GetByteArrayRegion = GetByteArrayRegion;
        table.GetDirectBufferAddress = GetDirectBufferAddress;
        table.ThrowNew = ThrowNew;
        return table;
    }

    static JNIInvokeInterface_ invokeInterface() {
        auto table = tableOfTraps<JNIInvokeInterface_>();
        table.GetEnv = GetEnv;
        table.AttachCurrentThread = AttachCurrentThread;
        table.DetachCurrentThread = DetachCurrentThread;
        return table;
    }
};

const JNINativeInterface_& fakeNativeInterface() {
    static const JNINativeInterface_ table = FakeJvmTable::nativeInterface();
    return table;
}

const JNIInvokeInterface_& fakeInvokeInterface() {
    static const JNIInvokeInterface_ table = FakeJvmTable::invokeInterface();
    return table;
}

} // namespace Vostrel::tests
