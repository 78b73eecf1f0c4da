#include "tools/rctool/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <utility>

namespace Vostrel::rctool {

FileLock::FileLock(const std::string& path) {
    do {
        *this = FileLock();
        m_iDescriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (m_iDescriptor < 0)
            return;
        if (flock(m_iDescriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
            *this = FileLock();
            throw std::runtime_error(path + ": The file is being written by another program");
        }
    } while (!Locks(path));
}

FileLock::~FileLock() {
    if (m_iDescriptor >= 0)
        close(m_iDescriptor);
}

FileLock::FileLock(FileLock&& other) noexcept
    : m_iDescriptor(std::exchange(other.m_iDescriptor, -1)) {}

FileLock& FileLock::operator=(FileLock&& other) noexcept {
    std::swap(m_iDescriptor, other.m_iDescriptor);
    return *this;
}

/// Whether the path still names the file that was opened: another program may just have replaced
/// it.
bool FileLock::Locks(const std::string& path) const {
    struct stat opened {};
    struct stat named {};
    return fstat(m_iDescriptor, &opened) == 0 && stat(path.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

} // namespace Vostrel::rctool
