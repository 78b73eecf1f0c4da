#pragma once

#include <jni.h>

#include <cstdint>

namespace Vostrel::libjni {

/// Native copy of a Java array's elements.
template <class Element, class JavaArray>
class JniReadOnlyArray;

/// A byte[] copied into native storage.
///
/// Does not own the array reference, which must outlive this object (a global reference when the
/// object outlives one native call).
template <>
class JniReadOnlyArray<unsigned char, jbyteArray> {
public:
    /// Copies the whole array into the storage.
    /// @param array   may be null, which counts as empty
    /// @param storage room for lengthOf(array) bytes, or null to copy nothing
    /// @param ownsStorage whether destruction frees the storage with array delete
    JniReadOnlyArray(jbyteArray array, unsigned char* storage, bool ownsStorage)
        : JniReadOnlyArray(array, lengthOf(array), storage, ownsStorage) {}

    /// The same for an array whose length is known.
    /// @param length what lengthOf(array) returned
    JniReadOnlyArray(jbyteArray array, int64_t length, unsigned char* storage, bool ownsStorage);
    JniReadOnlyArray(const JniReadOnlyArray&) = delete;
    JniReadOnlyArray& operator=(const JniReadOnlyArray&) = delete;
    ~JniReadOnlyArray();

    /// Length of an array in bytes, 0 for null.
    static int64_t lengthOf(jbyteArray array);

    /// Copies the first `count` bytes, 0 to getLength(), into the storage again; nothing happens
    /// for 0. Requires storage.
    void copyFirst(int64_t count);

    int64_t getLength() const { return m_iLength; }
    jbyteArray getArray() const { return m_array; }
    const unsigned char* getStorage() const { return m_puiStorage; }

private:
    int64_t m_iLength;
    jbyteArray m_array;
    bool m_bOwnsStorage;
    unsigned char* m_puiStorage;
};

} // namespace Vostrel::libjni
