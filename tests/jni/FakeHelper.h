#pragma once

#include "tests/support/FakeJvm.h"

#include <algorithm>
#include <deque>
#include <string>
#include <vector>

namespace Vostrel::tests {

/// The Java side of the binding in the fake VM: an object with print, read and stall.
class FakeHelper {
public:
    struct Stall {
        FakeJvm::Object* array;
        jint offset;
        jint count;
        bool operator==(const Stall&) const = default;
    };

    explicit FakeHelper(FakeJvm& jvm)
        : m_jvm(jvm), m_class(jvm.defineClass("Helper")), m_reference(local()) {
        jvm.defineMethod(m_class, "print", PrintSignature, [this](const FakeJvm::Arguments& given) {
            m_lines.push_back(m_jvm.target(given[0].l)->text);
            return noValue();
        });
        jvm.defineMethod(m_class, "read", "([BI)I", [this](const FakeJvm::Arguments& given) {
            m_capacities.push_back(given[1].i);
            return intValue(read(m_jvm.target(given[0].l)->bytes));
        });
        jvm.defineMethod(m_class, "stall", "([BII)V", [this](const FakeJvm::Arguments& given) {
            m_stalls.push_back({m_jvm.target(given[0].l), given[1].i, given[2].i});
            return noValue();
        });
    }

    jobject get() const { return m_reference; }

    /// Takes print, read or stall away.
    void removeMethod(const std::string& key) { m_class.methods.erase(key); }

    static constexpr const char* PrintSignature = "(Ljava/lang/String;)V";

    std::deque<std::vector<int>> m_pieces; ///< bytes of the coming reads; then read returns 0
    std::deque<jint> m_claims;             ///< results that the coming reads claim instead
    std::vector<std::string> m_lines;
    std::vector<jint> m_capacities;
    std::vector<Stall> m_stalls;

private:
    jobject local() { return m_jvm.local(m_jvm.newObject(m_class)); }

    jint read(std::vector<jbyte>& array) {
        jint count = 0;
        if (!m_pieces.empty()) {
            const std::vector<int> piece = m_pieces.front();
            m_pieces.pop_front();
            std::transform(piece.begin(), piece.end(), array.begin(),
                           [](int byte) { return static_cast<jbyte>(byte); });
            count = static_cast<jint>(piece.size());
        }
        if (!m_claims.empty()) {
            count = m_claims.front();
            m_claims.pop_front();
        }
        return count;
    }

    FakeJvm& m_jvm;
    FakeJvm::Object& m_class;
    jobject m_reference;
};

} // namespace Vostrel::tests
