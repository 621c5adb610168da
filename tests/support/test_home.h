// A temporary home for one test: a per-user data folder of its own, settings that a test may change, and both
// put back at the end.
#pragma once

#include <string>

#include "base/json_file.h"
#include "base/settings.h"

class TestHome {
 public:
    // Makes a fresh folder (its name is not ASCII, on purpose) and points LOCALAPPDATA at it.
    TestHome();
    ~TestHome();
    TestHome(const TestHome&) = delete;
    TestHome& operator=(const TestHome&) = delete;

    // The per-user data folder.
    const std::string& folder() const { return folder_; }
    // The family's folder inside it, made.
    const std::string& root() const { return root_; }

    // Writes a file under the family's folder, with the folders above it; `path` begins with "/".
    void write(const std::string& path, const std::string& content) const;
    void write(const std::string& path, const Json& document) const;
    // The content of such a file; empty if there is none.
    std::string read(const std::string& path) const;
    Json read_json(const std::string& path) const;
    bool exists(const std::string& path) const;

    // Replaces the settings until the end of the test.
    void use_settings(const Settings& replacement) const { override_settings(replacement); }

 private:
    std::string folder_;
    std::string root_;
    std::string old_local_app_data_;
    bool had_local_app_data_ = false;
    Settings old_settings_;
};

// Settings with every endpoint pointed at one base such as "http://127.0.0.1:4711": woc_base at base +
// "/woc", ordinals_api_base at + "/api", ordinals_content_base at + "/content-host", arc_tx_endpoint at +
// "/arc/tx"; `home_host` as given ("localhost:PORT", served over TLS).
Settings settings_on(const std::string& base, const std::string& home_host);

// A test data file of tests/data, whole.
std::string test_data_text(const std::string& name);
Json test_data(const std::string& name);
// The rows under one of its keys, never none; by value, since they outlive the document.
Json test_rows(const std::string& name, const char* key);
