#include "console/console_answers.h"

#include "base/amounts.h"
#include "core/pay_run.h"
#include "program/page_version.h"

namespace {

Json holder_object(const HolderRow& row) {
    return {{"who", row.who},
            {"dest", row.dest},
            {"pubkey", row.pubkey},
            {"lots", row.lots},
            {"reserve", row.reserve}};
}

Json preview_row_object(const PreviewRow& row) {
    return {
        {"name", row.name}, {"dest", row.dest}, {"lots", row.lots}, {"sats", row.sats}, {"skip", row.skip}};
}

const std::string& or_dash(const std::string& text) {
    static const std::string DASH = "-";
    return text.empty() ? DASH : text;
}

}  // namespace

Json result_object(const std::string& result) {
    return {{"result", result}};
}

Json status_object(const QvClaspStatus& status, const std::string& paymail) {
    return {{"connected", status.connected},
            {"hd", status.hd},
            {"address", status.address},
            {"paymail", paymail},
            {"balance_known", status.balance_known},
            {"balance_sats", status.balance_sats}};
}

Json tokens_object(const std::string& result, const std::vector<TokenRow>& tokens) {
    Json rows = Json::array();
    for (const TokenRow& token : tokens) {
        rows.push_back({{"token_id", token.token_id},
                        {"name", token.name},
                        {"lots", token.lots},
                        {"minted", token.minted}});
    }
    return {{"result", result}, {"tokens", rows}};
}

Json snapshot_object(const std::string& result, const HolderBoard& board) {
    Json rows = Json::array();
    for (const HolderRow& row : board.rows) rows.push_back(holder_object(row));
    return {{"result", result},
            {"board",
             {{"token_id", board.token_id},
              {"token_name", board.token_name},
              {"total_lots", board.total_lots},
              {"reserve_lots", board.reserve_lots},
              {"in_market_lots", board.in_market_lots},
              {"loaded", board.loaded},
              {"rows", rows}}}};
}

Json preview_object(bool ok, const std::string& text, const RoundState& state) {
    Json rows = Json::array();
    for (const PreviewRow& row : state.preview) rows.push_back(preview_row_object(row));
    return {{"ok", ok},
            {"text", text},
            {"pot", state.frozen_pot},
            {"fee_estimate", state.frozen_fee_estimate},
            {"remainder", state.frozen_remainder},
            {"skips", state.frozen_skips},
            {"rows", rows}};
}

Json update_object(int latest_version) {
    return {{"version", format_version(BUILD_VERSION)},
            {"latest", latest_version < 0 ? "" : format_version(latest_version)},
            {"available", is_update(latest_version)}};
}

Json pay_object(bool stopped, const std::string& text) {
    return {{"stopped", stopped}, {"text", text}, {"txids", extract_txids(text)}};
}

std::string update_text(int latest_version) {
    const std::string line = version_line(is_update(latest_version), settings());
    return latest_version < 0 ? line : line + "\nLatest: " + format_version(latest_version);
}

std::string status_text(const QvClaspStatus& status, const std::string& paymail) {
    if (!status.connected) return "not connected";
    const std::string balance =
        status.balance_known ? format_bsv(status.balance_sats) + " BSV" : "(WhatsOnChain miss)";
    return "connected, " + std::string(status.hd ? "mnemonic wallet" : "single-key wallet") +
           "\naddress: " + or_dash(status.address) + "\npaymail: " + or_dash(paymail) +
           "\nbalance: " + balance;
}

std::string tokens_text(const std::vector<TokenRow>& tokens) {
    std::string text;
    for (const TokenRow& token : tokens) {
        text += (text.empty() ? "" : "\n") + token.token_id + "  " + or_dash(token.name) + "  " +
                or_dash(token.lots) + " lots" + (token.minted ? "  minted" : "");
    }
    return text;
}

std::string board_text(const HolderBoard& board) {
    std::string text = "Token: " + (board.token_name.empty() ? board.token_id : board.token_name) +
                       "\nTotal lots: " + board.total_lots + "\nIn-market: " + board.in_market_lots +
                       "\nThis wallet: " + board.reserve_lots;
    for (const HolderRow& row : board.rows) {
        text += "\n" + row.who + "  " + row.lots + " lots  " +
                (row.reserve ? "reserve" : "-> " + or_dash(row.dest));
    }
    return text;
}
