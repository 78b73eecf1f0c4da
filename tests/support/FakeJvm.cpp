#include "tests/support/FakeJvm.h"

#include "tests/support/FakeJvmTable.h"

#include <algorithm>

namespace Vostrel::tests {

FakeJvm::FakeJvm() {
    m_vm.functions = &fakeInvokeInterface();
    m_vm.jvm = this;
    attach();
}

FakeJvm::~FakeJvm() = default;

JavaVM* FakeJvm::vm() {
    return &m_vm;
}

JNIEnv* FakeJvm::env() {
    return findEnv();
}

FakeJvm::Object& FakeJvm::newPlainObject() {
    return m_objects.emplace_back();
}

FakeJvm::Object& FakeJvm::defineClass(const std::string& name) {
    Object& javaClass = newPlainObject();
    javaClass.text = name;
    m_classes[name] = &javaClass;
    return javaClass;
}

void FakeJvm::defineMethod(Object& javaClass, const std::string& name, const std::string& signature,
                           std::function<jvalue(const Arguments&)> body) {
    javaClass.methods[name + signature] = {signature, std::move(body)};
}

FakeJvm::Object& FakeJvm::newObject(Object& javaClass) {
    Object& object = newPlainObject();
    object.javaClass = &javaClass;
    return object;
}

FakeJvm::Object& FakeJvm::newString(const std::string& text) {
    Object& object = newPlainObject();
    object.text = text;
    return object;
}

FakeJvm::Object& FakeJvm::newByteArray(std::vector<jbyte> bytes) {
    Object& object = newPlainObject();
    object.bytes = std::move(bytes);
    return object;
}

FakeJvm::Object& FakeJvm::newIntArray(std::vector<jint> ints) {
    Object& object = newPlainObject();
    object.ints = std::move(ints);
    return object;
}

FakeJvm::Object& FakeJvm::newDirectBuffer(void* address) {
    Object& object = newPlainObject();
    object.directAddress = address;
    return object;
}

FakeJvm::Object* FakeJvm::target(jobject reference) {
    const auto* known = static_cast<Reference*>(reference);
    if (!known || !known->live) {
        m_misuses.emplace_back(known ? "use of a deleted reference" : "use of a null reference");
        return nullptr;
    }
    return known->object;
}

jobject FakeJvm::newReference(Object* object, Kind kind) {
    Reference& reference = m_references.emplace_back();
    reference.object = object;
    reference.kind = kind;
    reference.live = true;
    ++m_live[kind];
    return &reference;
}

void FakeJvm::deleteReference(jobject reference, Kind kind) {
    auto* known = static_cast<Reference*>(reference);
    if (!known)
        return;
    if (!known->live || known->kind != kind)
        m_misuses.emplace_back("deletion of a reference of the wrong kind or twice");
    if (known->live)
        --m_live[known->kind];
    known->live = false;
}

size_t FakeJvm::countLive(Kind kind) const {
    const auto known = m_live.find(kind);
    return known == m_live.end() ? 0 : known->second;
}

void FakeJvm::failCall(const std::string& function, int n) {
    m_failingCall[function] = calls(function) + n;
}

int FakeJvm::calls(const std::string& function) const {
    const auto known = m_calls.find(function);
    return known == m_calls.end() ? 0 : known->second;
}

bool FakeJvm::enter(const std::string& function) {
    const int call = ++m_calls[function];
    m_journal.push_back({function});
    const auto failing = m_failingCall.find(function);
    return failing != m_failingCall.end() && failing->second == call;
}

size_t FakeJvm::attachedThreads() {
    const std::lock_guard lock(m_threadsMutex);
    return m_environments.size();
}

JNIEnv* FakeJvm::findEnv() {
    const std::lock_guard lock(m_threadsMutex);
    const auto known = m_environments.find(std::this_thread::get_id());
    return known == m_environments.end() ? nullptr : known->second.get();
}

JNIEnv* FakeJvm::attach() {
    auto environment = std::make_unique<Environment>();
    environment->functions = &fakeNativeInterface();
    environment->jvm = this;
    environment->thread = std::this_thread::get_id();
    const std::lock_guard lock(m_threadsMutex);
    return (m_environments[environment->thread] = std::move(environment)).get();
}

void FakeJvm::detach() {
    const std::lock_guard lock(m_threadsMutex);
    m_environments.erase(std::this_thread::get_id());
}

jvalue noValue() {
    return {};
}

jvalue intValue(jint value) {
    jvalue result{};
    result.i = value;
    return result;
}

jvalue longValue(jlong value) {
    jvalue result{};
    result.j = value;
    return result;
}

jvalue objectValue(jobject value) {
    jvalue result{};
    result.l = value;
    return result;
}

} // namespace Vostrel::tests
