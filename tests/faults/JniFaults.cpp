#include "tests/faults/JniFaults.h"

#include "tests/faults/AllocationFaults.h"
#include "tests/support/FakeJvmTable.h"

namespace Vostrel::tests {
namespace {

struct State {
    FakeJvm* jvm = nullptr;
    std::string function; ///< the one that is to fail
    int callsLeft = 0;    ///< up to and with the failing one; 0 for none
    bool struck = false;
};

State s_state;

bool strikes(const char* function) {
    if (s_state.callsLeft == 0 || s_state.function != function || --s_state.callsLeft > 0)
        return false;
    s_state.struck = true;
    s_state.jvm->m_pendingException = {"java/lang/OutOfMemoryError", function};
    return true;
}

/// A function of the table in front of the fake VM's own.
template <auto Member>
struct Hook;

template <class Result, class... Arguments,
          Result (*JNINativeInterface_::*Member)(JNIEnv*, Arguments...)>
struct Hook<Member> {
    static inline const char* s_name = nullptr; ///< null for a function that cannot fail

    static Result JNICALL call(JNIEnv* env, Arguments... arguments) {
        const AllocationFaults::Pause pause;
        if (s_name && strikes(s_name))
            return Result();
        return (fakeNativeInterface().*Member)(env, arguments...);
    }
};

/// The fake VM's table behind hooks, and the names of the functions that can fail.
struct HookedTable {
    JNINativeInterface_ table = fakeNativeInterface();
    std::vector<std::string> names;

    template <auto Member>
    void hook(const char* name) {
        Hook<Member>::s_name = name;
        table.*Member = Hook<Member>::call;
        if (name)
            names.emplace_back(name);
    }

    HookedTable() {
        using Table = JNINativeInterface_;
        hook<&Table::FindClass>("FindClass");
        hook<&Table::GetObjectClass>("GetObjectClass");
        hook<&Table::GetMethodID>("GetMethodID");
        hook<&Table::CallVoidMethodV>("CallVoidMethodV");
        hook<&Table::CallIntMethodV>("CallIntMethodV");
        hook<&Table::NewGlobalRef>("NewGlobalRef");
        hook<&Table::NewStringUTF>("NewStringUTF");
        hook<&Table::GetArrayLength>("GetArrayLength");
        hook<&Table::GetByteArrayRegion>("GetByteArrayRegion");
        hook<&Table::GetDirectBufferAddress>("GetDirectBufferAddress");
        hook<&Table::ThrowNew>("ThrowNew");
        hook<&Table::DeleteGlobalRef>(nullptr);
        hook<&Table::DeleteLocalRef>(nullptr);
    }
};

const HookedTable& hookedTable() {
    static const HookedTable table;
    return table;
}

constexpr const char* GetEnvName = "GetEnv";

jint JNICALL getEnv(JavaVM* vm, void** env, jint version) {
    const AllocationFaults::Pause pause;
    return strikes(GetEnvName) ? JNI_EDETACHED : fakeInvokeInterface().GetEnv(vm, env, version);
}

/// To attach a thread that is attached already changes nothing, here as in any VM.
jint JNICALL attachCurrentThread(JavaVM* vm, void** env, void* arguments) {
    const AllocationFaults::Pause pause;
    if (fakeInvokeInterface().GetEnv(vm, env, JNI_VERSION_1_6) == JNI_OK)
        return JNI_OK;
    return fakeInvokeInterface().AttachCurrentThread(vm, env, arguments);
}

const JNIInvokeInterface_& hookedInvokeTable() {
    static const JNIInvokeInterface_ table = [] {
        JNIInvokeInterface_ hooked = fakeInvokeInterface();
        hooked.GetEnv = getEnv;
        hooked.AttachCurrentThread = attachCurrentThread;
        return hooked;
    }();
    return table;
}

} // namespace

JniFaults::JniFaults(FakeJvm& jvm) : m_jvm(jvm) {
    s_state = {&jvm, "", 0, false};
    jvm.env()->functions = &hookedTable().table;
    jvm.vm()->functions = &hookedInvokeTable();
}

JniFaults::~JniFaults() {
    m_jvm.env()->functions = &fakeNativeInterface();
    m_jvm.vm()->functions = &fakeInvokeInterface();
}

std::vector<std::string> JniFaults::functions() {
    std::vector<std::string> names = hookedTable().names;
    names.emplace_back(GetEnvName);
    return names;
}

void JniFaults::failCall(const std::string& function, int n) {
    s_state.function = function;
    s_state.callsLeft = n;
    s_state.struck = false;
}

bool JniFaults::hasStruck() const {
    return s_state.struck;
}

} // namespace Vostrel::tests
