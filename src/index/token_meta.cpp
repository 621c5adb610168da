#include "index/token_meta.h"

#include <algorithm>

#include "base/amounts.h"
#include "base/json_file.h"
#include "base/settings.h"
#include "base/text.h"
#include "index/inscription.h"
#include "net/http_client.h"

static constexpr int META_TIMEOUT_S = 20;
static constexpr std::size_t LONGEST_TICKER = 6;

std::string qv_clasp_fixed_token_name(const std::string& token_id) {
    return token_id == settings().fixed_token_id ? "Fenwold Coin" : "";
}

bool is_ticker_like(std::string_view name) {
    return !name.empty() && name.size() <= LONGEST_TICKER &&
           std::all_of(name.begin(), name.end(), is_ascii_alnum);
}

void qv_clasp_fetch_token_meta(const std::string& token_id, std::string& name_inout,
                               std::string* icon_inout) {
    if (token_id.size() < TOKEN_ID_LENGTH) return;
    const std::string fixed_name = qv_clasp_fixed_token_name(token_id);
    if (name_inout.empty()) name_inout = fixed_name;

    std::string body;
    std::string error;
    Json answer;
    const std::string url = settings().ordinals_api_base + "/bsv20/id/" + token_id;
    if (!qv_clasp_http_get(url, body, error, META_TIMEOUT_S) || !parse_json(body, answer)) return;

    if (answer.is_object()) {
        for (const char* key : {"name", "sym", "tick"}) {
            if (name_inout.empty()) name_inout = clean_name(json_text(answer, key));
            if (name_inout.empty()) name_inout = fixed_name;
        }
    }
    if (!fixed_name.empty() && (name_inout.empty() || is_ticker_like(name_inout))) name_inout = fixed_name;
    if (icon_inout != nullptr && icon_inout->empty()) *icon_inout = json_text(answer, "icon");
}
