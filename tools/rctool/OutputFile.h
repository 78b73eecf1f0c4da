#pragma once

#include "tools/rctool/Destination.h"
#include "tools/rctool/FileLock.h"

#include <cstdio>
#include <initializer_list>
#include <string>

namespace Vostrel::rctool {

/// Throws std::runtime_error for a file that exists, unless it is to be replaced, and for a folder.
void CheckOutput(const std::string& path, bool replace);

/// Where text goes: to the error output when the standard output takes one of the outputs.
std::FILE* TextStream(std::initializer_list<std::string> outputs);

/// A file that appears under its name when it is complete: until then it has another one beside it.
/// A symbolic link to a file is kept, and its target replaced. The standard output, devices and
/// pipes are written to directly. Nothing but the incomplete file is ever removed.
class OutputFile {
public:
    /// Opens it. Throws std::runtime_error as CheckOutput does, when the file is being
    /// written by another program, and when the file system fails.
    OutputFile(const std::string& path, bool replace);

    /// Closes the file, and removes one that has not been committed.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Where to write. Errors may be left to Commit, which finds them.
    std::FILE* GetFile() const { return m_pFile; }

    /// Closes the file and gives it its name. Throws std::runtime_error when not all was written,
    /// Interrupted when the program is to end.
    void Commit();

private:
    void OpenBesides();
    void Close();

    std::string m_path; ///< for messages
    Destination m_destination;
    FileLock m_lock; ///< of a file that is to be replaced
    bool m_bReplace;
    std::string m_part; ///< the name of an incomplete file; empty without one
    std::FILE* m_pFile = nullptr;
};

/// Writes a file as a whole: write(file) writes to a std::FILE*. Throws std::runtime_error with the
/// path and the reason.
template <class Write>
void WriteWhole(const std::string& path, bool replace, Write write) {
    OutputFile output(path, replace);
    write(output.GetFile());
    output.Commit();
}

} // namespace Vostrel::rctool
