#include "tests/faults/fault_table.h"

#include "base/text.h"

namespace {

constexpr unsigned LOOKING = TOKENS | SNAPSHOT | PREVIEW;
constexpr unsigned PAYING = PAY | PAY_HOLDERS;

}  // namespace

const std::vector<Target>& targets() {
    static const std::vector<Target> all{
        {.name = "WhatsOnChain",
         .service = "woc",
         .method = "",
         .path = "/v1/bsv/main",
         .asked_by = TOKENS | SNAPSHOT | PREVIEW | PAYING,
         .whole = true,
         .looks_up = true},
        {.name = "WhatsOnChain, all reads",
         .service = "woc",
         .method = "GET",
         .path = "/v1/bsv/main",
         .asked_by = PAYING,
         .looks_up = true},
        {.name = "WhatsOnChain, single transactions",
         .service = "woc",
         .method = "GET",
         .path = "/v1/bsv/main/tx/",
         .asked_by = TOKENS | SNAPSHOT | PAYING,
         .looks_up = true},
        {.name = "WhatsOnChain, lists of coins",
         .service = "woc",
         .method = "GET",
         .path = "/v1/bsv/main/address/",
         .asked_by = TOKENS | PREVIEW | PAY},
        {.name = "WhatsOnChain, broadcast",
         .service = "woc",
         .method = "POST",
         .path = "/v1/bsv/main/tx/raw",
         .asked_by = PAYING,
         .broadcasts = true,
         .only_after = "submit"},
        {.name = "Ordinals indexer",
         .service = "ordinals",
         .method = "",
         .path = "/api/",
         .asked_by = TOKENS | SNAPSHOT | PREVIEW,
         .whole = true},
        {.name = "Content host",
         .service = "ordinals",
         .method = "",
         .path = "/content/",
         .asked_by = TOKENS,
         .whole = true,
         .only_after = "transactions"},
        {.name = "ARC",
         .service = "arc",
         .method = "",
         .path = "/v1/tx",
         .asked_by = PAYING,
         .whole = true,
         .broadcasts = true,
         .only_after = "broadcast"},
        {.name = "Family host",
         .service = "home",
         .method = "",
         .path = "/",
         .asked_by = LOOKING | PAYING,
         .whole = true},
        {.name = "Family host, submission",
         .service = "home",
         .method = "POST",
         .path = "/oi/submit",
         .asked_by = PAYING,
         .broadcasts = true,
         .times_out_soon = true},
        {.name = "Family host, directory",
         .service = "home",
         .method = "GET",
         .path = "/api/",
         .asked_by = TOKENS | SNAPSHOT},
        {.name = "Local resolver",
         .service = "resolver",
         .method = "",
         .path = "/api/",
         .asked_by = TOKENS | SNAPSHOT,
         .whole = true,
         .is_unchecked = true,
         .only_after = "alias"},
        {.name = "Update page",
         .service = "update",
         .method = "",
         .path = "/download",
         .asked_by = UPDATE,
         .whole = true},
    };
    return all;
}

const std::vector<Failure>& failures() {
    static const std::vector<Failure> all{
        {"no connection", Kind::Port, ""},
        {"wrong certificate", Kind::Certificate, ""},
        {"closed without an answer", Kind::Any, "down"},
        {"time-out, nothing done", Kind::Any, "stall"},
        {"time-out, the work done", Kind::Any, "slow"},
        {"closed in the middle of the body", Kind::Any, "cut"},
        {"404", Kind::Any, "404"},
        {"429 once", Kind::Any, "429", 1},
        {"429", Kind::Any, "429"},
        {"500 with a page", Kind::Any, "html500"},
        {"empty", Kind::Any, "empty"},
        {"wrong JSON", Kind::Any, "badjson"},
        {"JSON of the wrong types", Kind::Any, "wrongtypes"},
        {"a huge body", Kind::Any, "huge", 3},
        {"redirected in a circle", Kind::Any, "redirect"},
        {"another transaction's id", Kind::Broadcast, "wrong_txid"},
        {"taken and dropped once", Kind::Broadcast, "drop_after_accept", 1},
        {"taken and dropped", Kind::Broadcast, "drop_after_accept"},
        {"taken, and told as a failure", Kind::Broadcast, "accept_silently"},
        {"refused with status 200", Kind::Broadcast, "refused_200"},
        {"false conflict once", Kind::Broadcast, "conflict", 1, true},
        {"false conflict", Kind::Broadcast, "conflict", -1, true},
        {"false missing inputs once", Kind::Broadcast, "missing_inputs", 1, true},
        {"false missing inputs", Kind::Broadcast, "missing_inputs", -1, true},
        {"parent not known", Kind::Broadcast, "unknown_parent", -1, true},
    };
    return all;
}

std::string left_out(const Target& target, const Failure& failure) {
    switch (failure.kind) {
        case Kind::Port:
        case Kind::Certificate:
            if (!target.whole) return "a port and its certificate belong to a whole service";
            if (failure.kind == Kind::Certificate && target.is_unchecked)
                return "its certificate is not checked, on purpose";
            return "";
        case Kind::Broadcast:
            return target.broadcasts ? "" : "a verdict on a transaction where none is sent";
        case Kind::Any:
            return "";
    }
    return "";
}

void move_service(Settings& settings, const Target& target, const std::string& scheme, int port) {
    const bool plain = scheme == "http";
    const std::string authority = (plain ? "127.0.0.1:" : "localhost:") + std::to_string(port);
    const std::string origin = scheme + "://" + authority;
    const std::string name = target.name;
    if (name == "WhatsOnChain") settings.woc_base = origin + "/v1/bsv/main";
    if (name == "Ordinals indexer") settings.ordinals_api_base = origin + "/api";
    if (name == "Content host") settings.ordinals_content_base = origin;
    if (name == "ARC") settings.arc_tx_endpoint = origin + "/v1/tx";
    if (name == "Family host") settings.home_host = authority;
    if (name == "Local resolver") settings.local_resolver_port = port;
    if (name == "Update page") settings.update_page = origin + "/download";
}
