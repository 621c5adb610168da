#include "tests/support/test_home.h"

#include <atomic>
#include <stdexcept>
#include <system_error>

#include "platform/user_data.h"
#include "tests/support/environment.h"

TestHome::TestHome() : old_settings_(settings()) {
    static std::atomic<int> counter{0};
    const std::filesystem::path base = std::filesystem::temp_directory_path();
    folder_ = base.string();
    while (folder_.ends_with('/') || folder_.ends_with('\\')) folder_.pop_back();
    folder_ += "/bursaria-tést-" + std::to_string(process_number()) + "-" + std::to_string(++counter);
    std::error_code error;
    std::filesystem::remove_all(utf8_path(folder_), error);
    had_local_app_data_ = get_environment("LOCALAPPDATA", old_local_app_data_);
    set_environment("LOCALAPPDATA", folder_);
    root_ = family_data_folder();
    make_folder(root_);
}

TestHome::~TestHome() {
    override_settings(old_settings_);
    if (had_local_app_data_) {
        set_environment("LOCALAPPDATA", old_local_app_data_);
    } else {
        clear_environment("LOCALAPPDATA");
    }
    std::error_code error;
    std::filesystem::remove_all(utf8_path(folder_), error);
}

void TestHome::write(const std::string& path, const std::string& content) const {
    const std::string full = root() + path;
    make_folder(full.substr(0, full.find_last_of('/')));
    if (!write_text_file(full, content)) throw std::runtime_error("cannot write " + full);
}

void TestHome::write(const std::string& path, const Json& document) const {
    write(path, dump_json(document, 2));
}

std::string TestHome::read(const std::string& path) const {
    std::string content;
    read_text_file(root() + path, content);
    return content;
}

Json TestHome::read_json(const std::string& path) const {
    Json document;
    read_json_file(root() + path, document);
    return document;
}

bool TestHome::exists(const std::string& path) const {
    return file_exists(root() + path);
}

Settings settings_on(const std::string& base, const std::string& home_host) {
    Settings changed = settings();
    changed.woc_base = base + "/woc";
    changed.ordinals_api_base = base + "/api";
    changed.ordinals_content_base = base + "/content-host";
    changed.arc_tx_endpoint = base + "/arc/tx";
    changed.home_host = home_host;
    changed.home_host_pin.clear();
    changed.tls_ca_file = std::string(BURSARIA_SANDBOX_TLS) + "/ca.pem";
    // No test reaches a resolver that it has not started.
    changed.local_resolver_port = 1;
    return changed;
}

std::string test_data_text(const std::string& name) {
    std::string content;
    if (!read_text_file(std::string(TEST_DATA_FOLDER) + "/" + name, content)) {
        throw std::runtime_error("no test data " + name);
    }
    return content;
}

Json test_data(const std::string& name) {
    Json document;
    if (!parse_json(test_data_text(name), document)) throw std::runtime_error("bad test data " + name);
    return document;
}

Json test_rows(const std::string& name, const char* key) {
    const Json document = test_data(name);
    if (json_member(document, key).empty()) throw std::runtime_error("no rows in " + name);
    return json_member(document, key);
}
