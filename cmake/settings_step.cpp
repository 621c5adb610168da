// The settings step of the build: reads the chosen settings file, checks every value, and writes the C++
// source of the one record that the program is built with. A value that is missing, of the wrong form, or
// still marked as to be replaced stops the build with the key's name, so that nobody can pay a fee to an
// address that no one holds.
//
// Usage: settings_step SETTINGS.json OUTPUT.cpp
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>

#include "base/text.h"
#include "wallet/address.h"

using Json = nlohmann::json;

namespace {

constexpr const char* REPLACE_MARK = "REPLACE";

struct Failure {
    std::string text;
};

std::string folder_of(const std::string& path) {
    const std::size_t slash = path.find_last_of("/\\");
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

using Check = std::function<bool(const std::string&)>;

bool any_text(const std::string&) {
    return true;
}
bool some_text(const std::string& value) {
    return !value.empty();
}
bool is_address(const std::string& value) {
    Hash160 hash{};
    return qv_clasp_address_to_hash160(value, hash);
}
bool is_url(const std::string& value) {
    const bool http = value.rfind("http://", 0) == 0 && value.size() > 7;
    const bool https = value.rfind("https://", 0) == 0 && value.size() > 8;
    return (http || https) && value.find_first_of(" \t\r\n\"") == std::string::npos && value.back() != '/';
}
bool is_host(const std::string& value) {
    return !value.empty() && value.find_first_of("/ \t\r\n\"@") == std::string::npos;
}
bool is_pin(const std::string& value) {
    return value.find_first_not_of("0123456789.") == std::string::npos && value.size() <= 15;
}
bool is_token_id(const std::string& value) {
    unsigned long long vout = 0;
    return value.size() >= 66 && is_hex64(value.substr(0, 64)) && value[64] == '_' &&
           parse_u64(value.substr(65), vout);
}
bool is_handle(const std::string& value) {
    const std::size_t at = value.find('@');
    return at != std::string::npos && at > 0 && at + 1 < value.size();
}

std::string checked_text(const Json& object, const std::string& key, const std::string& shown,
                         const Check& check, const char* form) {
    const auto found = object.find(key);
    if (found == object.end()) throw Failure{"the key \"" + shown + "\" is missing"};
    if (!found->is_string()) throw Failure{"\"" + shown + "\" must be a text"};
    const std::string value = found->get<std::string>();
    if (value.find(REPLACE_MARK) != std::string::npos) {
        throw Failure{"\"" + shown + "\" still holds a value that is marked as to be replaced"};
    }
    if (!check(value)) throw Failure{"\"" + shown + "\" is not " + form + ": \"" + value + "\""};
    return value;
}

std::string literal(const std::string& text) {
    return Json(text).dump(-1, ' ', true);
}

struct TextKey {
    const char* key;
    Check check;
    const char* form;
};

const TextKey TEXT_KEYS[] = {
    {"woc_base", is_url, "an address of a service (http or https, no \"/\" at its end)"},
    {"woc_site", is_url, "an address of a service (http or https, no \"/\" at its end)"},
    {"ordinals_api_base", is_url, "an address of a service (http or https, no \"/\" at its end)"},
    {"ordinals_content_base", is_url, "an address of a service (http or https, no \"/\" at its end)"},
    {"arc_tx_endpoint", is_url, "an address of a service (http or https, no \"/\" at its end)"},
    {"home_host", is_host, "a host name"},
    {"home_host_pin", is_pin, "a dotted IPv4 text, or empty"},
    {"home_domain", is_host, "a domain"},
    {"update_page", is_url, "an address of a page (http or https, no \"/\" at its end)"},
    {"support_contact", some_text, "a text"},
    {"fee_address", is_address, "a P2PKH address of main net"},
    {"fee_handle", is_handle, "a handle with a domain"},
    {"fixed_token_id", is_token_id, "a token id (64 hexadecimal digits, \"_\", a number)"},
    {"oracle_address", is_address, "a P2PKH address of main net"},
};

std::string oracle_rows(const Json& root) {
    const auto found = root.find("house_oracles");
    if (found == root.end()) throw Failure{"the key \"house_oracles\" is missing"};
    if (!found->is_array() || found->size() != 3)
        throw Failure{"\"house_oracles\" must be an array of three objects"};
    std::string rows;
    for (std::size_t i = 0; i < 3; ++i) {
        const Json& row = (*found)[i];
        const std::string shown = "house_oracles[" + std::to_string(i) + "]";
        if (!row.is_object()) throw Failure{"\"" + shown + "\" must be an object"};
        for (const char* key : {"key", "label", "second_key", "oracle_a", "oracle_b", "oracle_c"}) {
            const bool address = std::string(key).rfind("oracle_", 0) == 0;
            const std::string value =
                checked_text(row, key, shown + "." + key, address ? is_address : some_text,
                             address ? "a P2PKH address of main net" : "a text");
            rows +=
                "    made.house_oracles[" + std::to_string(i) + "]." + key + " = " + literal(value) + ";\n";
        }
    }
    return rows;
}

std::string settings_source(const Json& root, const std::string& folder) {
    if (!root.is_object()) throw Failure{"the file must hold one object"};
    std::string source =
        "// Made by the settings step of the build; not edited.\n"
        "#include \"base/settings.h\"\n\n"
        "Settings build_settings();\nSettings build_settings() {\n    Settings made;\n";
    for (const TextKey& row : TEXT_KEYS) {
        const std::string value = checked_text(root, row.key, row.key, row.check, row.form);
        source += std::string("    made.") + row.key + " = " + literal(value) + ";\n";
    }
    source += oracle_rows(root);
    std::string authority = checked_text(root, "tls_ca_file", "tls_ca_file", any_text, "a path");
    // A relative path is meant from the settings file, wherever the program runs.
    const bool absolute = !authority.empty() && (authority[0] == '/' || authority.find(':') == 1);
    if (!authority.empty() && !absolute) authority = folder + "/" + authority;
    source += "    made.tls_ca_file = " + literal(authority) + ";\n    return made;\n}\n";
    return source;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: settings_step SETTINGS.json OUTPUT.cpp\n";
        return 2;
    }
    std::ifstream file(argv[1], std::ios::binary);
    if (!file) {
        std::cerr << argv[1] << " cannot be opened\n";
        return 1;
    }
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    try {
        const Json root = Json::parse(text, nullptr, false);
        if (root.is_discarded()) throw Failure{"it is not valid JSON"};
        const std::string source = settings_source(root, folder_of(argv[1]));
        std::ofstream output(argv[2], std::ios::binary | std::ios::trunc);
        output << source;
        output.close();
        if (!output) throw Failure{std::string(argv[2]) + " cannot be written"};
    } catch (const Failure& failure) {
        std::cerr << argv[1] << ": " << failure.text << "\n";
        return 1;
    }
    return 0;
}
