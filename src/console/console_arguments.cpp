#include "console/console_arguments.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {

constexpr std::size_t ANY_NUMBER = static_cast<std::size_t>(-1);

struct CommandForm {
    const char* name;
    ConsoleCommand command;
    std::size_t least_operands;
    std::size_t most_operands;
    std::vector<std::string_view> options;  // beside --json
    const char* usage;
};

// The names of two words are two arguments.
const CommandForm COMMANDS[] = {
    {"connect", ConsoleCommand::Connect, 0, 0, {}, "connect"},
    {"unbind", ConsoleCommand::Unbind, 0, 0, {}, "unbind"},
    {"status", ConsoleCommand::Status, 0, 0, {}, "status"},
    {"tokens", ConsoleCommand::Tokens, 0, 0, {}, "tokens"},
    {"snapshot", ConsoleCommand::Snapshot, 1, 1, {}, "snapshot TOKEN"},
    {"preview", ConsoleCommand::Preview, 2, 2, {"--exclude"}, "preview TOKEN AMOUNT [--exclude WHO]..."},
    {"pay", ConsoleCommand::Pay, 2, 2, {"--exclude", "--yes"}, "pay TOKEN AMOUNT [--exclude WHO]... [--yes]"},
    {"history",
     ConsoleCommand::History,
     0,
     0,
     {"--token", "--range", "--csv"},
     "history [--token ID] [--range 24h|7d|1m|3m|1y|all] [--csv FILE]"},
    {"vault list", ConsoleCommand::VaultList, 0, 0, {}, "vault list"},
    {"vault save", ConsoleCommand::VaultSave, 2, ANY_NUMBER, {}, "vault save NAME ADDRESS..."},
    {"vault add", ConsoleCommand::VaultAdd, 2, ANY_NUMBER, {}, "vault add NAME ADDRESS..."},
    {"vault value", ConsoleCommand::VaultValue, 1, 1, {}, "vault value NAME"},
    {"note", ConsoleCommand::Note, 2, 3, {}, "note TOKEN WHO [TEXT]"},
    {"update", ConsoleCommand::Update, 0, 0, {}, "update"},
};

std::string usage_of(const CommandForm& form) {
    return std::string("usage: bursaria-console ") + form.usage + " [--json]";
}

std::string usage_of_all() {
    std::string text;
    for (const CommandForm& form : COMMANDS) text += (text.empty() ? "" : "\n") + usage_of(form);
    return text;
}

// Also tells how many arguments the name takes.
const CommandForm* find_form(const std::vector<std::string>& arguments, std::size_t& words_out) {
    if (arguments.empty()) return nullptr;
    const std::string two_words = arguments.size() > 1 ? arguments[0] + " " + arguments[1] : "";
    for (const CommandForm& form : COMMANDS) {
        words_out = std::string_view(form.name).find(' ') == std::string_view::npos ? 1 : 2;
        if (form.name == (words_out == 1 ? arguments[0] : two_words)) return &form;
    }
    return nullptr;
}

bool read_range(const std::string& word, std::size_t& range_out) {
    for (std::size_t i = 0; i < std::size(HISTORY_RANGES); ++i) {
        if (word != HISTORY_RANGES[i].word) continue;
        range_out = i;
        return true;
    }
    return false;
}

bool read_filled(const std::string& value, std::string& text_out) {
    text_out = value;
    return !value.empty();
}

bool read_value(const std::string& option, const std::string& value, ConsoleRequest& request) {
    if (option == "--range") return read_range(value, request.range);
    if (option == "--token") return read_filled(value, request.token);
    if (option == "--csv") return read_filled(value, request.csv_file);
    request.excluded.push_back(value);
    return true;
}

// Reads one option, with its value if it takes one; false if the command does not know it.
bool read_option(const std::vector<std::string>& arguments, std::size_t& at, const CommandForm& form,
                 ConsoleRequest& request) {
    const std::string& option = arguments[at];
    if (option == "--json") {
        request.json = true;
        return true;
    }
    if (std::find(form.options.begin(), form.options.end(), option) == form.options.end()) return false;
    if (option == "--yes") {
        request.yes = true;
        return true;
    }
    return at + 1 < arguments.size() && read_value(option, arguments[++at], request);
}

void take_operands(const std::vector<std::string>& operands, ConsoleRequest& request) {
    const auto operand = [&operands](std::size_t at) {
        return at < operands.size() ? operands[at] : std::string();
    };
    const auto rest = [&operands](std::size_t from) {
        return std::vector<std::string>(operands.begin() + static_cast<std::ptrdiff_t>(from), operands.end());
    };
    switch (request.command) {
        case ConsoleCommand::Snapshot:
        case ConsoleCommand::Preview:
        case ConsoleCommand::Pay:
            request.token = operand(0);
            request.amount = operand(1);
            break;
        case ConsoleCommand::VaultSave:
        case ConsoleCommand::VaultAdd:
        case ConsoleCommand::VaultValue:
            request.name = operand(0);
            request.texts = rest(1);
            break;
        case ConsoleCommand::Note:
            request.token = operand(0);
            request.name = operand(1);
            request.texts = rest(2);
            break;
        default:
            break;
    }
}

bool read_arguments(const std::vector<std::string>& arguments, std::size_t first, const CommandForm& form,
                    ConsoleRequest& request) {
    std::vector<std::string> operands;
    for (std::size_t at = first; at < arguments.size(); ++at) {
        if (arguments[at].starts_with("--")) {
            if (!read_option(arguments, at, form, request)) return false;
        } else {
            operands.push_back(arguments[at]);
        }
    }
    if (operands.size() < form.least_operands || operands.size() > form.most_operands) return false;
    take_operands(operands, request);
    return true;
}

}  // namespace

bool parse_console_arguments(const std::vector<std::string>& arguments, ConsoleRequest& request_out,
                             std::string& usage_out) {
    request_out = ConsoleRequest();
    usage_out.clear();
    std::size_t name_words = 0;
    const CommandForm* form = find_form(arguments, name_words);
    if (!form) {
        usage_out = usage_of_all();
        return false;
    }
    request_out.command = form->command;
    if (read_arguments(arguments, name_words, *form, request_out)) return true;
    usage_out = usage_of(*form);
    return false;
}

std::string usage_line(ConsoleCommand command) {
    for (const CommandForm& form : COMMANDS) {
        if (form.command == command) return usage_of(form);
    }
    return "";
}
