// skarnel-render: reflections from the command line, without a display.
#include <string>
#include <vector>

#include "cli/run.h"

int main(int argc, char** argv) {
    return skarnel::cli::runCommandLine({argv + (argc > 0 ? 1 : 0), argv + argc});
}
