#include "tools/rctool/Program.h"

int main(int argc, char** argv) {
    return Vostrel::rctool::RunProgram(argc, argv);
}
