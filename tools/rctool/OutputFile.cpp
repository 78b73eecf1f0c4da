#include "tools/rctool/OutputFile.h"

#include "tools/rctool/Interruption.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace Vostrel::rctool {
namespace {

std::runtime_error Failure(const std::string& path, int error) {
    return std::runtime_error(path + ": " + std::generic_category().message(error));
}

std::runtime_error ExistsFailure(const std::string& path) {
    return std::runtime_error(path + ": The file exists; --force replaces it");
}

void CheckReplacing(const std::string& path, const Destination& destination, bool replace) {
    if (destination.m_bExists && !replace)
        throw ExistsFailure(path);
}

/// A file may stand behind an open stream: what others wrote to it stays.
std::FILE* OpenDirectly(const std::string& path) {
    struct stat status {};
    const bool isFile = stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
    const int descriptor = open(path.c_str(), O_WRONLY | O_CLOEXEC | (isFile ? O_APPEND : 0));
    if (descriptor < 0)
        throw Failure(path, errno);
    return fdopen(descriptor, "wb");
}

/// Gives a file another name. Returns 0 or an error: EEXIST if that name is in use and must stay.
int Rename(const std::string& from, const std::string& to, bool replace) {
    if (!replace) {
        if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
            return 0;
        if (errno != EINVAL && errno != ENOSYS)
            return errno;
        // This file system cannot ask and rename in one step.
        if (access(to.c_str(), F_OK) == 0)
            return EEXIST;
    }
    return std::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

} // namespace

void CheckOutput(const std::string& path, bool replace) {
    CheckReplacing(path, FindDestination(path), replace);
}

std::FILE* TextStream(std::initializer_list<std::string> outputs) {
    return std::any_of(outputs.begin(), outputs.end(), IsStandardOutput) ? stderr : stdout;
}

OutputFile::OutputFile(const std::string& path, bool replace)
    : m_path(OutputName(path)), m_destination(FindDestination(path)), m_bReplace(replace) {
    CheckReplacing(path, m_destination, replace);
    if (m_destination.m_bExists)
        m_lock = FileLock(m_destination.m_path);
    switch (m_destination.m_kind) {
    case DestinationKind::StandardOutput:
        m_pFile = stdout;
        break;
    case DestinationKind::Direct:
        m_pFile = OpenDirectly(path);
        break;
    case DestinationKind::File:
        OpenBesides();
        break;
    }
}

/// Under a name of its own, so that it is never another program's file that is removed.
void OutputFile::OpenBesides() {
    constexpr mode_t ReadableAndWritable = 0666; // The user's mask takes its part away.
    int descriptor = -1;
    for (int number = getpid(); descriptor < 0; ++number) {
        m_part = m_destination.m_path + ".part" + std::to_string(number);
        descriptor =
            open(m_part.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, ReadableAndWritable);
        if (descriptor < 0 && errno != EEXIST)
            throw Failure(m_path, errno);
    }
    m_pFile = fdopen(descriptor, "wb");
}

OutputFile::~OutputFile() {
    if (m_pFile != nullptr && m_pFile != stdout)
        std::fclose(m_pFile);
    if (!m_part.empty())
        unlink(m_part.c_str());
}

/// An earlier write may have failed, which the state of the file shows, and errno as nothing has
/// failed since.
void OutputFile::Close() {
    bool failed = std::ferror(m_pFile) != 0;
    if (!failed)
        errno = 0;
    failed |= std::fflush(m_pFile) != 0;
    if (m_pFile != stdout)
        failed |= std::fclose(std::exchange(m_pFile, nullptr)) != 0;
    if (!failed)
        return;
    if (errno != 0)
        throw Failure(m_path, errno);
    throw std::runtime_error(m_path + ": Not all could be written");
}

void OutputFile::Commit() {
    Close();
    if (m_part.empty())
        return;
    CheckForInterruption();
    if (const int error = Rename(m_part, m_destination.m_path, m_bReplace); error == EEXIST)
        throw ExistsFailure(m_path);
    else if (error != 0)
        throw Failure(m_path, error);
    m_part.clear();
}

} // namespace Vostrel::rctool
