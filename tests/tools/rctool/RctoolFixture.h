#pragma once

#include "tests/tools/Screens.h"
#include "tests/tools/rctool/ProgramRun.h"
#include "tools/recording/RecordingReader.h"
#include "tools/recording/RecordingWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace Vostrel::rctool {

using namespace recording;
using streamencoder::Picture;
using streamencoder::Screen;

inline std::string ScreenPath(const std::string& name) {
    return TEST_DATA_DIR "/screens/" + name + ".png";
}

inline const std::string Frames =
    ScreenPath("firmware-800x600-00") + " " + ScreenPath("firmware-800x600-01");

inline std::vector<uint8_t> ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

inline void WriteBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
}

inline std::vector<std::string> FilesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

inline std::vector<RecordedUpdate> ReadUpdates(const std::string& path) {
    RecordingReader reader(path);
    std::vector<RecordedUpdate> updates;
    while (auto record = reader.Next())
        updates.push_back(std::get<RecordedUpdate>(*record));
    return updates;
}

/// The same of a recording that holds other records as well.
inline std::vector<RecordedUpdate> ReadUpdatesOnly(const std::string& path) {
    RecordingReader reader(path);
    std::vector<RecordedUpdate> updates;
    while (auto record = reader.Next()) {
        if (auto* const update = std::get_if<RecordedUpdate>(&*record))
            updates.push_back(std::move(*update));
    }
    return updates;
}

/// Runs the program in a folder of the test's own.
class Rctool : public testing::Test {
protected:
    Rctool()
        : m_folder(testing::TempDir() + "RctoolTest-" +
                   testing::UnitTest::GetInstance()->current_test_info()->name()) {
        std::filesystem::remove_all(m_folder); // of a run that was killed
        std::filesystem::create_directories(m_folder);
    }
    ~Rctool() override { std::filesystem::remove_all(m_folder); }

    std::string In(const std::string& name) const { return m_folder + "/" + name; }

    /// A recording of two frames.
    std::string Recorded(const std::string& options) const {
        const std::string path = In("recorded.rcrec");
        const ProgramRun run =
            RunRctool("encode --quiet --force " + options + " -o " + path + " " + Frames);
        EXPECT_EQ(run.m_iExitCode, 0) << run.m_output;
        return path;
    }

    /// A recording of one update of version 1, 4:2:0, for a screen of 32x16 pixels.
    std::string RecordedBits(const EncodedUpdate& encoded,
                             std::optional<uint64_t> result = {}) const {
        Header header;
        header.m_uiProtocolVersion = 1;
        header.m_layout = RecordLayout::Continuous;
        header.m_settings.m_uiWidth = 32;
        header.m_settings.m_uiHeight = 16;
        RecordingWriter writer(In("bits.rcrec"), header);
        RecordedUpdate update;
        update.m_encoded = encoded;
        update.m_result = result;
        writer.Write(update);
        writer.Close();
        return In("bits.rcrec");
    }

    std::string m_folder;
};

} // namespace Vostrel::rctool
