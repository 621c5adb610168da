// The settings of the build: endpoints and fixed values, from one JSON file that is chosen and checked when
// CMake runs. Read-only for the life of the process, so any thread may read it.
#pragma once

#include <array>
#include <string>

// One sibling game of the product family, with three fixed P2PKH addresses.
struct HouseOracle {
    std::string key;
    std::string label;
    std::string second_key;
    std::string oracle_a;
    std::string oracle_b;
    std::string oracle_c;
};

struct Settings {
    std::string woc_base;               // root of the chain service's API, without a "/" at its end
    std::string woc_site;               // root of its web pages
    std::string ordinals_api_base;      // root of the token indexer's API
    std::string ordinals_content_base;  // root of its content host
    std::string arc_tx_endpoint;        // the whole URL of the transaction endpoint
    std::string home_host;              // the family's host; with a port on loopback only
    std::string home_host_pin;          // dotted IPv4 text; empty pins nothing
    std::string home_domain;            // the paymail domain
    std::string update_page;
    std::string support_contact;
    std::string fee_address;     // P2PKH address that receives the app fee
    std::string fee_handle;      // paymail shown for it
    std::string fixed_token_id;  // deploy origin of the token with a fixed name
    std::string oracle_address;  // P2PKH address of the identity feed
    std::array<HouseOracle, 3> house_oracles;
    std::string tls_ca_file;  // empty: the system's own trust store

    // Not in the file: the port of the family's local resolver on 127.0.0.1.
    int local_resolver_port = 25443;
};

const Settings& settings();

// For tests only: replaces the record, before any other thread reads it.
void override_settings(const Settings& replacement);
