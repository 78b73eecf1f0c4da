#include "tools/rctool/OutputFile.h"

#include <unistd.h>

#include <filesystem>
#include <system_error>

namespace Vostrel::rctool {

namespace fs = std::filesystem;

void CheckOutput(const std::string& path, bool replace) {
    const fs::file_status status = fs::status(path);
    if (fs::is_directory(status))
        throw std::runtime_error(path + ": Is a directory");
    if (fs::is_regular_file(status) && !replace)
        throw std::runtime_error(path + ": The file exists; --force replaces it");
}

OutputFile::OutputFile(const std::string& path, bool replace) : m_path(path), m_written(path) {
    CheckOutput(path, replace);
    const fs::file_status status = fs::status(path);
    if (!fs::exists(status) || fs::is_regular_file(status))
        m_written += ".part" + std::to_string(getpid());
}

OutputFile::~OutputFile() {
    if (m_written != m_path) {
        std::error_code ignored;
        fs::remove(m_written, ignored);
    }
}

std::string OutputFile::WithOwnName(std::string message) const {
    if (const size_t at = message.find(m_written); at != std::string::npos)
        message.replace(at, m_written.size(), m_path);
    return message;
}

void OutputFile::Commit() {
    if (m_written == m_path)
        return;
    std::error_code error;
    fs::rename(m_written, m_path, error);
    if (error)
        throw std::runtime_error(m_path + ": " + error.message());
    m_written = m_path;
}

} // namespace Vostrel::rctool
