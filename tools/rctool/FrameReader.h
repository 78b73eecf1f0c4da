#pragma once

#include "tools/Picture.h"
#include "tools/PngFile.h"

#include <cstddef>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Vostrel::rctool {

struct Frame {
    std::string m_name; ///< for messages
    streamencoder::Picture m_picture;
    streamencoder::PngLoss m_loss; ///< what the picture lacks of its file
};

/// Whether frames come from a stream, which can be read only once: "-" for the standard input, a
/// FIFO or a device.
bool IsFrameStream(const std::string& path);

/// Reads frames one after another: a PNG file holds one, a stream any number of PNG files without
/// gaps. Every operation throws std::runtime_error with the path and the reason, Interrupted when
/// the program is to end.
class FrameReader {
public:
    explicit FrameReader(std::vector<std::string> paths) : m_vPaths(std::move(paths)) {}

    /// The next frame, which is then read by Next as well. There must be one, as there is at first.
    const Frame& Peek();

    /// Nothing after the last frame.
    std::optional<Frame> Next();

private:
    struct FileCloser {
        void operator()(std::FILE* file) const;
    };

    std::optional<Frame> Read();
    std::optional<Frame> ReadFromStream(const std::string& path);
    void OpenStream(const std::string& path);

    std::vector<std::string> m_vPaths;
    size_t m_uiPath = 0; ///< of the next frame
    std::optional<Frame> m_peeked;
    std::unique_ptr<std::FILE, FileCloser> m_pStream; ///< that is being read
    size_t m_uiInStream = 0;                          ///< frames read from it
};

} // namespace Vostrel::rctool
