// The longer texts of the window program that carry settings of the build. Pure.
#pragma once

#include <string>

#include "base/settings.h"

std::string terms_text(const Settings& settings);
std::string update_question(int latest_version, const Settings& settings);
// The page of a transaction; empty for a text that is no transaction id.
std::string tx_page(const std::string& txid, const Settings& settings);
