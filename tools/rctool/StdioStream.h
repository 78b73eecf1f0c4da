#pragma once

#include <cstdio>
#include <ostream>
#include <streambuf>

namespace Vostrel::rctool {

/// Passes bytes on to a file of the C library, which has the only buffer.
class StdioBuffer : public std::streambuf {
public:
    explicit StdioBuffer(std::FILE* file) : m_pFile(file) {}

protected:
    int_type overflow(int_type byte) override { return std::fputc(byte, m_pFile); }
    std::streamsize xsputn(const char* bytes, std::streamsize count) override {
        return static_cast<std::streamsize>(
            std::fwrite(bytes, 1, static_cast<size_t>(count), m_pFile));
    }
    int sync() override { return std::fflush(m_pFile); }

private:
    std::FILE* m_pFile;
};

/// An output stream over a file of the C library, which stays open.
class StdioStream : public std::ostream {
public:
    explicit StdioStream(std::FILE* file) : std::ostream(nullptr), m_buffer(file) {
        rdbuf(&m_buffer);
    }

private:
    StdioBuffer m_buffer;
};

} // namespace Vostrel::rctool
