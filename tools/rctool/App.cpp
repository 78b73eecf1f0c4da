#include "tools/rctool/Commands.h"

namespace Vostrel::rctool {

std::unique_ptr<CLI::App> MakeApp(Action& action) {
    auto app = std::make_unique<CLI::App>(
        "Records, decodes and examines the framebuffer updates of remote-console devices.",
        "rctool");
    app->set_version_flag("--version", "rctool " RCTOOL_VERSION);
    app->require_subcommand(1);
    app->get_formatter()->column_width(24);
    AddEncode(*app, action);
    AddDecode(*app, action);
    AddInfo(*app, action);
    AddList(*app, action);
    AddInspect(*app, action);
    AddHeatmap(*app, action);
    AddExport(*app, action);
    AddCompare(*app, action);
    AddBench(*app, action);
    app->footer("rctool COMMAND --help describes one of them. Exit status:\n"
                "  0  done\n"
                "  1  wrong usage\n"
                "  2  a file cannot be read or written, or is no recording\n"
                "  3  an update cannot be decoded, and could when it was recorded\n"
                "  4  a checksum, a result or a picture differs\n"
                "  5  the recording is cut or damaged; what comes before that was done\n"
                "  128 + N  ended by signal N");
    return app;
}

} // namespace Vostrel::rctool
