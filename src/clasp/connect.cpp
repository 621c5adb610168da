#include "clasp/connect.h"

#include <filesystem>
#include <system_error>

#include "base/clock.h"
#include "base/json_file.h"
#include "base/sinks.h"
#include "index/own_addresses.h"
#include "paymail/paymail_claim.h"
#include "platform/program.h"
#include "wallet/binds.h"
#include "wallet/data_root.h"
#include "wallet/seal.h"
#include "wallet/wallet_document.h"
#include "wallet/wallet_registry.h"
#include "wallet/wallet_session.h"

namespace {

constexpr int REPLY_LOOKS = 120;
constexpr std::int64_t REPLY_LOOK_MS = 500;
constexpr const char* EVENT_TAG = "[QV-CLASP]";
constexpr const char* CLASP_WINDOW_CLASS = "QuorvelleClaspShell";

std::string failed(const std::string& text) {
    qv_clasp_emit_event(EVENT_TAG, {"error", text});
    return text;
}

// The session follows the document, and the name registry follows the session. Callers hold the wallet mutex.
void qv_clasp_refresh() {
    qv_clasp_keep_in_step();
    qv_clasp_emit_paymail(qv_clasp_session().paymail);
}

// True if the wallet that is bound already could be loaded.
bool connect_bound_wallet() {
    const WalletLock lock = qv_clasp_lock_wallet();
    if (qv_clasp_active_wallet_id().empty() || !qv_clasp_load()) return false;
    qv_clasp_refresh();
    return true;
}

// Callers hold the wallet mutex.
std::string load_approved_wallet() {
    qv_clasp_wipe_session();
    if (!qv_clasp_load()) {
        return failed(qv_clasp_is_locked() ? "error: This wallet is locked. Open it in Clasp."
                                           : "error: approved, but the wallet would not load.");
    }
    qv_clasp_refresh();
    qv_clasp_log("Connected to Clasp wallet " + qv_clasp_wallet_name(qv_clasp_active_wallet_id()) + "\n");
    return "success";
}

// One look for the reply; empty while it is pending. The wallet mutex is held from the bind to the load: a
// thread that got in between would find the old session beside the new wallet's document, and could save the
// one over the other.
std::string look_for_reply(const std::string& id) {
    const WalletLock lock = qv_clasp_lock_wallet();
    const std::string state = qv_clasp_read_reply(id);
    if (state == "ok") return load_approved_wallet();
    if (state == "pending") return "";
    qv_clasp_emit_event(EVENT_TAG, {"connect-denied", "denied"});
    return failed("error: connect denied in Clasp.");
}

std::string wait_for_reply(const std::string& id) {
    for (int look = 0; look < REPLY_LOOKS; ++look) {
        sleep_milliseconds(REPLY_LOOK_MS);
        const std::string result = look_for_reply(id);
        if (!result.empty()) return result;
    }
    qv_clasp_emit_event(EVENT_TAG, {"connect-denied", "timeout"});
    return failed("error: Clasp did not approve in time. Open Clasp.exe and try Connect again.");
}

std::string connect_folder() {
    return qv_data_root() + "/connect";
}

bool is_program_file(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(utf8_path(path), error);
}

}  // namespace

std::string qv_clasp_connect() {
    if (!qv_clasp_app_mode()) return failed("error: connect is for apps, not the Clasp vault.");
    if (connect_bound_wallet()) return "success";
    const std::string id = qv_clasp_write_request();
    if (id.empty()) return failed("error: could not write connect request.");
    qv_clasp_open_clasp();
    qv_clasp_emit_event(EVENT_TAG, {"connect-pending", "Approve the connect in Clasp."});
    qv_clasp_log("Waiting for Clasp to approve this app...\n");
    return wait_for_reply(id);
}

std::string qv_clasp_unbind() {
    const WalletLock lock = qv_clasp_lock_wallet();
    if (qv_clasp_app_mode()) qv_clasp_drop_bind();
    qv_clasp_wipe_session();
    qv_clasp_emit_event(EVENT_TAG, {"status"});
    qv_clasp_log("This app is no longer connected to a Clasp wallet.\n");
    return "success";
}

bool qv_clasp_is_connected() {
    return qv_clasp_wallet_ready();
}

std::string qv_clasp_write_request() {
    if (!qv_clasp_app_mode()) return "";
    const std::string folder = connect_folder();
    make_folder(folder);
    const std::string id = qv_clasp_new_id();
    const Json request = {{"id", id},
                          {"app", qv_clasp_app_name()},
                          {"instance", qv_clasp_app_instance()},
                          {"ts", unix_seconds()}};
    return write_text_file(folder + "/" + id + ".req.json", dump_json(request, 2)) ? id : "";
}

std::string qv_clasp_read_reply(const std::string& id) {
    if (id.empty()) return "denied";
    const std::string path = connect_folder() + "/" + id + ".rep.json";
    if (!file_exists(path)) return "pending";
    Json reply;
    if (!read_json_file(path, reply) || !json_bool(reply, "ok")) return "denied";
    const Json& wallet_id = json_member(reply, "wallet_id");
    // Whoever names a wallet by anything but a text does not speak this language.
    if (reply.contains("wallet_id") && !wallet_id.is_string()) return "denied";
    qv_clasp_write_bind(json_text(reply, "wallet_id"));
    return "ok";
}

bool qv_clasp_open_clasp() {
    if (bring_window_forward(CLASP_WINDOW_CLASS)) return true;
    const std::string folder = program_folder();
    const std::string program = find_clasp_program(folder);
    return !program.empty() && start_program(program, folder);
}

// The shell of Windows reads no path with slashes and "..".
static std::string native_path(const std::string& path) {
    const std::u8string native = utf8_path(path).lexically_normal().make_preferred().u8string();
    return {native.begin(), native.end()};
}

std::string find_clasp_program(const std::string& folder) {
    for (const char* name : {"Clasp.exe", "Clasp"}) {
        for (const char* place : {"/", "/../"}) {
            const std::string path = folder + place + name;
            if (is_program_file(path)) return native_path(path);
        }
    }
    return "";
}
