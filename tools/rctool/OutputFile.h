#pragma once

#include <stdexcept>
#include <string>

namespace Vostrel::rctool {

/// A path that names the standard output.
constexpr const char* StandardOutput = "-";

/// Throws std::runtime_error for a file that exists, unless it is to be replaced, and for a folder.
void CheckOutput(const std::string& path, bool replace);

/// A file that appears under its name when it is complete: until then it has another one beside it.
/// Devices and pipes are written to directly.
class OutputFile {
public:
    /// Throws as CheckOutput does.
    OutputFile(const std::string& path, bool replace);

    /// Removes what has not been committed.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Where to write.
    const std::string& GetPath() const { return m_written; }

    /// A message that names where it was written, with the file's own name instead.
    std::string WithOwnName(std::string message) const;

    /// Gives the complete file its name. Throws std::runtime_error.
    void Commit();

private:
    std::string m_path;
    std::string m_written;
};

/// Writes a file as a whole: write(path) is told where, and throws std::runtime_error when it
/// fails. Throws the same, with the file's own name.
template <class Write>
void WriteWhole(const std::string& path, bool replace, Write write) {
    OutputFile file(path, replace);
    try {
        write(file.GetPath());
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(file.WithOwnName(error.what()));
    }
    file.Commit();
}

} // namespace Vostrel::rctool
