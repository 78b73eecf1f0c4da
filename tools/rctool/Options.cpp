#include "tools/rctool/Options.h"

namespace Vostrel::rctool {

using recording::KernelVariant;

void AddRecordingArgument(CLI::App& app, std::string& path) {
    app.add_option("RECORDING", path, "a recording (.rcrec); - is the standard input")
        ->required()
        ->type_name("")
        ->transform(CLI::Validator(
            [](std::string& given) {
                if (given == "-")
                    given = "/dev/stdin";
                return std::string();
            },
            ""));
}

void AddForce(CLI::App& app, bool& force, const char* help) {
    app.add_flag("--force", force, help);
}

void AddDecodingOptions(CLI::App& app, DecodingOptions& options) {
    app.add_option("--threads", options.m_threads,
                   "worker threads, 0 to 64 [as the recording wants]")
        ->type_name("N")
        ->check(CLI::Range(0, 64).description(""));
    AddChoice<KernelVariant>(app, "--kernels", options.m_kernels,
                             {{"portable", KernelVariant::Portable},
                              {"sse2", KernelVariant::Sse2},
                              {"avx2", KernelVariant::Avx2}},
                             "portable, sse2 or avx2 [the recorded kind]");
}

} // namespace Vostrel::rctool
