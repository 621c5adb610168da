// bursaria-sandbox: the play-money world on the ports of the build's settings, until it is told to stop.
#include <signal.h>
#include <stdlib.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <string>

#include "base/settings.h"
#include "base/text.h"
#include "sandbox/sandbox.h"

namespace {

constexpr const char* USAGE =
    "usage: bursaria-sandbox [--folder DIR] [--holders N] [--seed N] [--latency MS]\n";
constexpr unsigned long long MOST_HOLDERS = 100'000;
constexpr unsigned long long MOST_LATENCY_MS = 60'000;

bool read_number(const std::string& text, unsigned long long least, unsigned long long most,
                 unsigned long long& value) {
    unsigned long long number = 0;
    if (!parse_u64(text, number) || number < least || number > most) return false;
    value = number;
    return true;
}

bool read_arguments(int count, char** arguments, sandbox::Options& options) {
    for (int i = 1; i < count; i += 2) {
        if (i + 1 >= count) return false;
        const std::string name = arguments[i];
        const std::string value = arguments[i + 1];
        unsigned long long number = 0;
        if (name == "--folder" && !value.empty()) {
            options.world.folder = value;
        } else if (name == "--holders" && read_number(value, 1, MOST_HOLDERS, number)) {
            options.world.holders = static_cast<int>(number);
        } else if (name == "--seed" && read_number(value, 0, ~0ULL, number)) {
            options.world.seed = number;
        } else if (name == "--latency" && read_number(value, 0, MOST_LATENCY_MS, number)) {
            options.latency_ms = static_cast<int>(number);
        } else {
            return false;
        }
    }
    return true;
}

// The port of an address on this machine, with or without a scheme in front; 0 for any other address.
int loopback_port(const std::string& address) {
    const std::size_t scheme = address.find("://");
    const std::string rest = scheme == std::string::npos ? address : address.substr(scheme + 3);
    const std::string authority = rest.substr(0, rest.find('/'));
    const std::size_t colon = authority.find(':');
    if (colon == std::string::npos) return 0;
    const std::string host = authority.substr(0, colon);
    unsigned long long port = 0;
    if (host != "127.0.0.1" && host != "localhost") return 0;
    return read_number(authority.substr(colon + 1), 1, 65535, port) ? static_cast<int>(port) : 0;
}

bool read_ports(sandbox::Ports& ports) {
    ports.woc = loopback_port(settings().woc_base);
    ports.ordinals = loopback_port(settings().ordinals_api_base);
    ports.arc = loopback_port(settings().arc_tx_endpoint);
    ports.home = loopback_port(settings().home_host);
    ports.control = loopback_port(settings().update_page);
    ports.resolver = settings().local_resolver_port;
    const std::array<int, 5> all = {ports.woc, ports.ordinals, ports.arc, ports.home, ports.control};
    return std::find(all.begin(), all.end(), 0) == all.end();
}

// A fresh folder of this system's temporary one.
std::string temporary_folder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "bursaria-sandbox-XXXXXX").string();
    return mkdtemp(pattern.data()) != nullptr ? pattern : "";
}

void print_world(const sandbox::Sandbox& box) {
    const Settings served = box.settings_for();
    const sandbox::World& world = box.world();
    std::printf("chain service    %s\n", served.woc_base.c_str());
    std::printf("token indexer    %s\n", served.ordinals_api_base.c_str());
    std::printf("broadcast (ARC)  %s\n", served.arc_tx_endpoint.c_str());
    std::printf("family's host    https://%s\n", served.home_host.c_str());
    std::printf("local resolver   https://127.0.0.1:%d\n", served.local_resolver_port);
    std::printf("update page      %s\n", served.update_page.c_str());
    std::printf("control          http://127.0.0.1:%d/sandbox/\n", box.ports().control);
    std::printf("token            %s (%s)\n", world.token_id.c_str(), world.token_name.c_str());
    std::printf("holders          %zu\n", world.holders.size());
    std::printf("data folder      %s\n", world.options.folder.c_str());
    std::printf("Use it with LOCALAPPDATA set to the data folder.\n");
    std::printf("bursaria-sandbox is ready\n");
    std::fflush(stdout);
}

int fail(const std::string& sentence) {
    std::fprintf(stderr, "bursaria-sandbox: %s\n", sentence.c_str());
    return 1;
}

}  // namespace

int main(int count, char** arguments) {
    sandbox::Options options;
    if (!read_arguments(count, arguments, options)) {
        std::fputs(USAGE, stderr);
        return 2;
    }
    if (!read_ports(options.ports))
        return fail("The settings of this build name services outside this machine.");
    options.world.home_domain = settings().home_domain;
    const bool folder_given = !options.world.folder.empty();
    if (!folder_given) options.world.folder = temporary_folder();
    if (options.world.folder.empty()) return fail("No temporary folder can be made; name one with --folder.");

    // Blocked before any thread starts, so that every thread inherits it and only the wait below sees the
    // signals.
    sigset_t stop_signals;
    sigemptyset(&stop_signals);
    sigaddset(&stop_signals, SIGINT);
    sigaddset(&stop_signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stop_signals, nullptr);

    sandbox::Sandbox box(options);
    std::string error;
    if (!box.start(error)) {
        std::error_code ignored;
        // Only the empty one that was made a moment ago.
        if (!folder_given) std::filesystem::remove(options.world.folder, ignored);
        return fail(error);
    }
    print_world(box);
    int received = 0;
    sigwait(&stop_signals, &received);
    box.stop();
    return 0;
}
