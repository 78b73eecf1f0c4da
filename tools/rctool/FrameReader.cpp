#include "tools/rctool/FrameReader.h"

#include "tools/rctool/Interruption.h"

#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace Vostrel::rctool {

namespace fs = std::filesystem;

namespace {

constexpr const char* StandardInput = "-";

} // namespace

bool IsFrameStream(const std::string& path) {
    std::error_code ignored;
    const fs::file_status status = fs::status(path, ignored);
    return path == StandardInput ||
           (fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status));
}

const Frame& FrameReader::Peek() {
    if (!m_peeked)
        m_peeked = Read();
    return m_peeked.value();
}

std::optional<Frame> FrameReader::Next() {
    return m_peeked ? std::exchange(m_peeked, std::nullopt) : Read();
}

std::optional<Frame> FrameReader::Read() {
    CheckForInterruption();
    try {
        while (m_uiPath < m_vPaths.size()) {
            const std::string& path = m_vPaths[m_uiPath];
            if (!IsFrameStream(path)) {
                ++m_uiPath;
                streamencoder::PngLoss loss;
                streamencoder::Picture picture = streamencoder::ReadPng(path, loss);
                return Frame{path, std::move(picture), loss};
            }
            if (auto frame = ReadFromStream(path))
                return frame;
            ++m_uiPath;
        }
        return std::nullopt;
    } catch (const std::runtime_error&) {
        CheckForInterruption(); // A signal ends the wait for a pipe.
        throw;
    }
}

/// Nothing at the end of a stream, which must hold something.
std::optional<Frame> FrameReader::ReadFromStream(const std::string& path) {
    const std::string name = path == StandardInput ? "standard input" : path;
    if (!m_pStream)
        OpenStream(path);
    const std::string frame = name + ", picture " + std::to_string(m_uiInStream);
    streamencoder::PngLoss loss;
    if (auto picture = streamencoder::ReadNextPng(m_pStream.get(), frame, loss)) {
        ++m_uiInStream;
        return Frame{frame, *std::move(picture), loss};
    }
    if (m_uiInStream == 0)
        throw std::runtime_error(name + ": There is no picture");
    m_pStream.reset();
    return std::nullopt;
}

void FrameReader::OpenStream(const std::string& path) {
    m_pStream.reset(path == StandardInput ? stdin : std::fopen(path.c_str(), "rb"));
    if (!m_pStream)
        throw std::runtime_error(path + ": " + std::generic_category().message(errno));
    m_uiInStream = 0;
}

void FrameReader::FileCloser::operator()(std::FILE* file) const {
    if (file != stdin)
        std::fclose(file);
}

} // namespace Vostrel::rctool
