// What can go wrong at which service: the two sides of the matrix, and the rules for the pairs that make no
// sense. Pure.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "base/settings.h"

// The things that a user does, in order; one bit each.
enum Action : unsigned {
    CONNECT = 1,
    TOKENS = 2,
    SNAPSHOT = 4,
    PREVIEW = 8,
    PAY = 16,          // the service fails from before the app fee on
    PAY_HOLDERS = 32,  // from the first holder on
    UPDATE = 64,
};

// A service, or one kind of request to it.
struct Target {
    const char* name;
    const char* service;  // as the sandbox names it
    const char* method;   // "" for both
    const char* path;     // the first part of the requests' paths
    unsigned asked_by;    // the actions that ask it
    bool whole = false;   // all of a service, which can have no port or a wrong certificate
    bool broadcasts = false;
    bool looks_up = false;        // tells whether a transaction is there
    bool times_out_soon = false;  // so that the long form waits for it in full
    bool is_unchecked = false;    // its certificate is not looked at, on purpose
    const char* only_after =
        "";  // what must fail before it is asked: "submit", "broadcast", "alias", "transactions"
};

enum class Kind { Any, Port, Certificate, Broadcast };

struct Failure {
    const char* name;
    Kind kind;
    const char* failure;  // as the sandbox names it
    int times = -1;
    bool writes_off = false;  // good coins may stay written off after it
};

const std::vector<Target>& targets();
const std::vector<Failure>& failures();

// Why a pair is left out; empty if it is not.
std::string left_out(const Target& target, const Failure& failure);

// Points a whole target somewhere else: "http://127.0.0.1:1" or "https://localhost:PORT".
void move_service(Settings& settings, const Target& target, const std::string& scheme, int port);
