// The console program: the same round as in the window, driven by one command.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "console/console_arguments.h"
#include "console/console_streams.h"
#include "console/message_queue.h"
#include "core/round_wallet.h"
#include "program/update_check.h"
#include "program/vault_reader.h"
#include "records/vault_lookup.h"

// The version that the download page announces, -1 if it tells none.
using VersionReader = std::function<int()>;

inline constexpr int CONSOLE_SUCCESS = 0;
inline constexpr int CONSOLE_FAILED = 1;
inline constexpr int CONSOLE_WRONG_USAGE = 2;

// Reads the command line (without the program's name). False, with the usage on `streams.err`, for one that
// is wrong, and for a payment that must be confirmed where there is no terminal to ask on.
bool accept_request(const std::vector<std::string>& arguments, ConsoleStreams streams,
                    ConsoleRequest& request_out);

// Runs the command and returns the exit status. The result goes to `streams.out`, progress and failures to
// `streams.err`. Blocks until the command and the workers that it started have ended. `queue` carries the
// workers' messages; the log sink may post to it too. `read_address` tells what a vault's addresses hold,
// `read_version` the version on the download page.
int run_console(const ConsoleRequest& request, const RoundWallet& wallet, MessageQueue& queue,
                ConsoleStreams streams, const AddressReader& read_address = read_address_coins,
                const VersionReader& read_version = fetch_latest_version);
