#pragma once

#include <string>

namespace Vostrel::rctool {

/// Keeps other runs of this program from writing to a file for as long as it lives. The system
/// releases it when the program ends, however that happens.
class FileLock {
public:
    FileLock() = default;

    /// Throws std::runtime_error when the file is being written already. One that cannot be opened,
    /// or whose file system has no locks, is not locked.
    explicit FileLock(const std::string& path);
    ~FileLock();
    FileLock(FileLock&& other) noexcept;
    FileLock& operator=(FileLock&& other) noexcept;

private:
    bool Locks(const std::string& path) const;

    int m_iDescriptor = -1;
};

} // namespace Vostrel::rctool
