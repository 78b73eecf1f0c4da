#include "tools/recording/RecordingInput.h"

#include "tools/recording/RecordingFormat.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

namespace Vostrel::recording {
namespace {

RecordingError Failure(const std::string& name) {
    return RecordingError(name + ": " + std::generic_category().message(errno));
}

/// Owns the descriptor of an open file.
class Descriptor {
public:
    explicit Descriptor(int descriptor) : m_iDescriptor(descriptor) {}
    ~Descriptor() {
        if (m_iDescriptor >= 0)
            close(m_iDescriptor);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return m_iDescriptor; }

private:
    int m_iDescriptor;
};

/// A file that is removed as soon as it is open for reading and writing.
class TemporaryFile {
public:
    TemporaryFile()
        : m_path((std::filesystem::temp_directory_path() / "rcrec-XXXXXX").string()),
          m_descriptor(mkostemp(m_path.data(), O_CLOEXEC)) {
        if (m_descriptor.Get() < 0)
            throw Failure(m_path);
        m_pReader = std::make_unique<std::ifstream>(m_path, std::ios::binary);
        unlink(m_path.c_str());
    }

    void Write(std::span<const uint8_t> bytes) const {
        while (!bytes.empty()) {
            const ssize_t count = write(m_descriptor.Get(), bytes.data(), bytes.size());
            if (count < 0)
                throw Failure(m_path);
            bytes = bytes.subspan(static_cast<size_t>(count));
        }
    }

    std::unique_ptr<std::istream> TakeReader() { return std::move(m_pReader); }

private:
    std::string m_path;
    Descriptor m_descriptor;
    std::unique_ptr<std::istream> m_pReader;
};

/// Fills a buffer as far as a stream goes. Returns the part that is filled.
std::span<const uint8_t> Read(int descriptor, std::span<uint8_t> buffer, const std::string& name) {
    size_t filled = 0;
    while (filled < buffer.size()) {
        const ssize_t count = read(descriptor, buffer.data() + filled, buffer.size() - filled);
        if (count < 0)
            throw Failure(name);
        if (count == 0)
            break;
        filled += static_cast<size_t>(count);
    }
    return buffer.first(filled);
}

bool IsRecording(std::span<const uint8_t> start) {
    return start.size() >= FileMagic.size() &&
           std::equal(FileMagic.begin(), FileMagic.end(), start.begin(),
                      [](char wanted, uint8_t found) { return uint8_t(wanted) == found; });
}

std::unique_ptr<std::istream> OpenStream(const std::string& path) {
    // The standard input may be something that cannot be opened anew.
    const bool isInput = path == "/dev/stdin";
    const Descriptor stream(isInput ? dup(STDIN_FILENO) : open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (stream.Get() < 0)
        throw Failure(path);
    return CopyToTemporaryFile(stream.Get(), path);
}

} // namespace

std::unique_ptr<std::istream> CopyToTemporaryFile(int descriptor, const std::string& name,
                                                  uint64_t limit) {
    TemporaryFile file;
    std::vector<uint8_t> buffer(size_t{1} << 16);
    uint64_t size = 0;
    std::span<const uint8_t> bytes;
    do {
        bytes = Read(descriptor, buffer, name);
        size += bytes.size();
        if (size > limit)
            throw RecordingError(name + ": A stream of more than " + std::to_string(limit) +
                                 " bytes is not read; save it as a file");
        file.Write(bytes);
    } while (bytes.size() == buffer.size() && (size > bytes.size() || IsRecording(bytes)));
    return file.TakeReader();
}

std::unique_ptr<std::istream> OpenRecording(const std::string& path) {
    std::error_code ignored;
    const auto status = std::filesystem::status(path, ignored);
    const bool isStream = std::filesystem::exists(status) &&
                          !std::filesystem::is_regular_file(status) &&
                          !std::filesystem::is_directory(status);
    errno = 0;
    auto in = isStream ? OpenStream(path) : std::make_unique<std::ifstream>(path, std::ios::binary);
    // A folder opens well and cannot be read.
    if (!*in || in->peek() == std::istream::traits_type::eof())
        throw errno != 0 ? Failure(path) : RecordingError(path + ": The file is empty");
    return in;
}

} // namespace Vostrel::recording
