// What the console program answers: one JSON object, or text for a reader. Pure. Every object has all its
// keys, also after a failure.
#pragma once

#include <string>
#include <vector>

#include "base/json_file.h"
#include "clasp/status_record.h"
#include "core/round_state.h"

// One answer of a command.
struct ConsoleAnswer {
    bool ok = false;
    std::string failure;  // what to tell the user if it is not
    std::string text;     // for a reader
    Json object;
};

Json result_object(const std::string& result);
Json status_object(const QvClaspStatus& status, const std::string& paymail);
Json tokens_object(const std::string& result, const std::vector<TokenRow>& tokens);
Json snapshot_object(const std::string& result, const HolderBoard& board);
Json preview_object(bool ok, const std::string& text, const RoundState& state);
Json update_object(int latest_version);
Json pay_object(bool stopped, const std::string& text);

std::string update_text(int latest_version);
std::string status_text(const QvClaspStatus& status, const std::string& paymail);
std::string tokens_text(const std::vector<TokenRow>& tokens);
std::string board_text(const HolderBoard& board);
