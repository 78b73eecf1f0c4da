#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

namespace fs = std::filesystem;

/// The files of folders in the order of their names; a folder that is not there holds none.
std::vector<fs::path> ListFiles(const std::vector<fs::path>& arguments) {
    std::vector<fs::path> files;
    for (const fs::path& argument : arguments) {
        if (fs::is_regular_file(argument))
            files.push_back(argument);
        else if (fs::is_directory(argument))
            std::copy_if(fs::directory_iterator(argument), fs::directory_iterator(),
                         std::back_inserter(files),
                         [](const fs::path& path) { return fs::is_regular_file(path); });
    }
    std::sort(files.begin(), files.end());
    return files;
}

void Replay(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> text((std::istreambuf_iterator<char>(file)), {});
    // A copy of its own size, so that a sanitizer sees a read behind it.
    const std::vector<uint8_t> bytes(text.begin(), text.end());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

} // namespace

/// Runs a fuzz harness over files, or over the files of folders, without a fuzzer. The last name
/// that was printed is the file that ended the process.
int main(int argc, char** argv) {
    const bool quiet = argc > 1 && std::string(argv[1]) == "--quiet";
    const std::vector<fs::path> files = ListFiles({argv + (quiet ? 2 : 1), argv + argc});
    for (const fs::path& path : files) {
        if (!quiet)
            std::fprintf(stderr, "%s\n", path.c_str());
        Replay(path);
    }
    std::printf("%zu files\n", files.size());
    return files.empty() ? 1 : 0;
}
