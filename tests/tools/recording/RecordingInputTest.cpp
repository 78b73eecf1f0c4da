#include "tools/recording/RecordingInput.h"
#include "tools/recording/Recording.h"
#include "tools/recording/RecordingFormat.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <istream>
#include <iterator>
#include <string>

namespace Vostrel::recording {
namespace {

/// A pipe that holds some bytes and has no writer any more.
class FilledPipe {
public:
    explicit FilledPipe(const std::string& bytes) {
        if (pipe(m_iEnds) != 0 || write(m_iEnds[1], bytes.data(), bytes.size()) < 0)
            ADD_FAILURE() << "no pipe";
        close(m_iEnds[1]);
    }
    ~FilledPipe() { close(m_iEnds[0]); }
    FilledPipe(const FilledPipe&) = delete;
    FilledPipe& operator=(const FilledPipe&) = delete;

    int Get() const { return m_iEnds[0]; }

private:
    int m_iEnds[2]{};
};

const std::string Bytes = std::string(FileMagic).append(1000, 'x');

TEST(RecordingInput, AStreamIsCopiedSoThatItCanBeSearched) {
    const FilledPipe pipe(Bytes);
    const auto in = CopyToTemporaryFile(pipe.Get(), "pipe", Bytes.size());
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(*in), {}), Bytes);
    in->clear();
    in->seekg(5);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(*in), {}), Bytes.substr(5));
}

TEST(RecordingInput, AStreamBeyondTheLimitIsRefused) {
    const FilledPipe pipe(Bytes);
    try {
        CopyToTemporaryFile(pipe.Get(), "pipe", Bytes.size() - 1);
        ADD_FAILURE() << "no exception";
    } catch (const RecordingError& error) {
        EXPECT_EQ(std::string(error.what()), "pipe: A stream of more than " +
                                                 std::to_string(Bytes.size() - 1) +
                                                 " bytes is not read; save it as a file");
    }
}

TEST(RecordingInput, OfAStreamThatIsNoRecordingOnlyTheBeginningIsCopied) {
    const int endless = open("/dev/zero", O_RDONLY | O_CLOEXEC);
    const auto in = CopyToTemporaryFile(endless, "zeros");
    close(endless);
    in->seekg(0, std::ios::end);
    EXPECT_LE(in->tellg(), 1 << 20);
}

} // namespace
} // namespace Vostrel::recording
