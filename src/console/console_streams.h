// Where the console program reads and writes.
#pragma once

#include <istream>
#include <ostream>

struct ConsoleStreams {
    std::istream& in;
    std::ostream& out;  // results
    std::ostream& err;  // progress, questions and failures
    bool in_is_terminal = false;
    bool err_is_terminal = false;
};

// The process's own three.
ConsoleStreams process_streams();
