#pragma once

#include <jni.h>

#include <cstdint>

namespace Vostrel::libjni {

/// Writable view of a Java array's elements.
template <class Element, class JavaArray>
class JniArray;

/// The elements of an int[], pinned or copied by the VM until destruction.
///
/// Does not own the array reference, which must outlive this object. Created and destroyed on the
/// thread that holds that reference.
template <>
class JniArray<int, jintArray> {
public:
    explicit JniArray(jintArray array);
    JniArray(const JniArray&) = delete;
    JniArray& operator=(const JniArray&) = delete;

    /// Gives the elements back to the VM: written to the Java array, or dropped after abort().
    ~JniArray();

    int64_t getLength() const { return m_iLength; }
    jintArray getArray() const { return m_array; }

    /// getLength() elements, or null when the VM had no memory for them.
    int* getElements() const { return m_piElements; }

    /// Makes destruction drop the changes made to the elements.
    void abort() { m_bAbort = true; }

private:
    int64_t m_iLength;
    jintArray m_array;
    int* m_piElements;
    bool m_bAbort = false;
};

} // namespace Vostrel::libjni
