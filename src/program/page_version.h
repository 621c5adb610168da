// The version of this build, and the one that the download page announces. A version is a count of
// thousandths. Pure.
#pragma once

#include <string>
#include <string_view>

#include "base/settings.h"

inline constexpr int BUILD_VERSION = 2;

// "0.002"; a negative count reads as this build's.
std::string format_version(int version);

// The version on the page, -1 where none is found. A number with a point counts in units, one without in
// thousandths. Looks at the last 24,000 bytes only; any bytes are accepted.
int parse_page_version(std::string_view body);

bool is_update(int latest_version);
// "Version 0.002", or where the update lies.
std::string version_line(bool update_available, const Settings& settings);
