#pragma once

#include <memory>

namespace Vostrel::qv {

/// Process-wide single object of type T, usually as a base of T itself.
///
/// The object is made by the first getInstance() and destroyed when the library is unloaded.
/// Thread safety: getInstance() may be called by any thread; T looks after its own members.
template <class T>
class Singleton {
public:
    /// Destroys the object; T's destructor is virtual.
    struct Deleter {
        void operator()(T* instance) const { delete instance; }
    };

    static T& getInstance() {
        static const std::unique_ptr<T, Deleter> s_pInstance(new T);
        return *s_pInstance;
    }
};

} // namespace Vostrel::qv
