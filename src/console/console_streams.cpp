#include "console/console_streams.h"

#include <unistd.h>

#include <iostream>

ConsoleStreams process_streams() {
    return {std::cin, std::cout, std::cerr, ::isatty(STDIN_FILENO) != 0, ::isatty(STDERR_FILENO) != 0};
}
