// Stands between the product and curl in this test program alone: it counts the transfers, measures each
// against its own time-out, and makes those that a test names time out after a fraction of a second instead.
// A transfer cut short in this way moves the test's clock on by the time-out that the product asked for.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct TransferCounts {
    int transfers = 0;
    int marked = 0;              // whose URL holds one of the marked parts
    int without_limit = 0;       // with no time-out at all
    std::int64_t allowed_s = 0;  // the time-outs asked for, together
    // By how much the slowest transfer outlived the time-out that was in force.
    std::int64_t longest_overrun_ms = 0;
};

namespace transfer_watch {

// Forgets everything.
void reset();
TransferCounts counts();
// Counts the transfers to URLs with one of these parts.
void mark(std::vector<std::string> url_parts);
// Shortens the time-outs of those transfers, of the method ("GET", "POST", "" for both) and with the part.
void shorten(const std::string& method, const std::string& url_part);

}  // namespace transfer_watch
