#pragma once

#include <jni.h>

#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace Vostrel::tests {

/// A Java VM made of hand-written function tables over a small object model. It counts calls and
/// references, fails on request, and records every use that a real VM would not survive.
///
/// A JNI function outside the table ends the process. Thread safety: threads attach and detach at
/// any time; everything else belongs to one thread at a time.
class FakeJvm {
public:
    struct Object;
    using Arguments = std::vector<jvalue>;

    struct Method {
        std::string signature;
        std::function<jvalue(const Arguments&)> body;
    };

    struct Value {
        jlong number = 0;
        Object* object = nullptr;
    };

    /// Whatever the VM holds: an instance, a class, a string, an array or a direct buffer.
    /// Members are keyed by name and signature with nothing between, e.g. "read([BI)I".
    struct Object {
        Object* javaClass = nullptr;
        std::string text; ///< of a string; the name of a class
        std::vector<jbyte> bytes;
        std::vector<jint> ints;
        void* directAddress = nullptr;
        std::map<std::string, Value> fields;   ///< an instance's, or a class's static ones
        std::set<std::string> fieldKeys;       ///< a class's instance fields
        std::map<std::string, Method> methods; ///< a class's methods
    };

    struct JavaException {
        std::string className;
        std::string message;
    };

    /// Attaches the calling thread.
    FakeJvm();
    FakeJvm(const FakeJvm&) = delete;
    FakeJvm& operator=(const FakeJvm&) = delete;
    ~FakeJvm();

    JavaVM* vm();
    JNIEnv* env(); ///< of the calling thread, which must be attached

    Object& defineClass(const std::string& name);
    void defineMethod(Object& javaClass, const std::string& name, const std::string& signature,
                      std::function<jvalue(const Arguments&)> body);
    Object& newObject(Object& javaClass);
    Object& newString(const std::string& text);
    Object& newByteArray(std::vector<jbyte> bytes);
    Object& newIntArray(std::vector<jint> ints);
    Object& newDirectBuffer(void* address);

    /// A new local reference.
    template <class Reference = jobject>
    Reference local(Object& object) {
        return static_cast<Reference>(newReference(&object, Kind::Local));
    }

    /// The object behind a live reference; null, and a recorded misuse, for any other.
    Object* target(jobject reference);

    /// Makes the n-th coming call of a JNI function fail, counted from 1.
    void failCall(const std::string& function, int n = 1);

    /// Number of calls so far of a JNI function.
    int calls(const std::string& function) const;

    /// The JNI functions that were called, in order, since the journal was cleared; of those that
    /// take a direct buffer, the buffer's address.
    struct JournalEntry {
        std::string function;
        const void* directAddress = nullptr;
    };
    std::vector<JournalEntry> m_journal;

    size_t liveLocals() const { return countLive(Kind::Local); }
    size_t liveGlobals() const { return countLive(Kind::Global); }
    size_t attachedThreads();

    std::optional<JavaException> m_pendingException;
    std::vector<std::string> m_misuses;
    int m_lentBuffers = 0; ///< characters and elements that were not released yet

private:
    friend struct FakeJvmTable;
    enum class Kind { Local, Global };

    struct Reference : _jobject {
        Object* object;
        Kind kind;
        bool live;
    };
    struct Vm : JavaVM {
        FakeJvm* jvm;
    };
    struct Environment : JNIEnv {
        FakeJvm* jvm;
        std::thread::id thread;
    };

    /// Counts a call; true when it is to fail.
    bool enter(const std::string& function);
    jobject newReference(Object* object, Kind kind);
    void deleteReference(jobject reference, Kind kind);
    size_t countLive(Kind kind) const;
    Object& newPlainObject();
    JNIEnv* findEnv();
    JNIEnv* attach();
    void detach();

    Vm m_vm;
    std::mutex m_threadsMutex;
    std::map<std::thread::id, std::unique_ptr<Environment>> m_environments;
    std::deque<Object> m_objects;
    std::deque<Reference> m_references; ///< never reused, so that a late use shows
    std::map<Kind, size_t> m_live;
    std::map<std::string, Object*> m_classes;
    std::map<std::string, int> m_calls;
    std::map<std::string, int> m_failingCall;
};

/// Results of Java methods.
jvalue noValue();
jvalue intValue(jint value);
jvalue longValue(jlong value);
jvalue objectValue(jobject value);

} // namespace Vostrel::tests
