#include "console/console_arguments.h"

#include <array>

namespace {

struct CommandForm {
    const char* name;
    ConsoleCommand command;
    std::size_t operands;
    bool may_exclude;
    bool may_confirm;
    const char* usage;
};

constexpr std::array COMMANDS = {
    CommandForm{"connect", ConsoleCommand::Connect, 0, false, false, "connect"},
    CommandForm{"unbind", ConsoleCommand::Unbind, 0, false, false, "unbind"},
    CommandForm{"status", ConsoleCommand::Status, 0, false, false, "status"},
    CommandForm{"tokens", ConsoleCommand::Tokens, 0, false, false, "tokens"},
    CommandForm{"snapshot", ConsoleCommand::Snapshot, 1, false, false, "snapshot TOKEN"},
    CommandForm{"preview", ConsoleCommand::Preview, 2, true, false,
                "preview TOKEN AMOUNT [--exclude WHO]..."},
    CommandForm{"pay", ConsoleCommand::Pay, 2, true, true, "pay TOKEN AMOUNT [--exclude WHO]... [--yes]"},
};

std::string usage_of(const CommandForm& form) {
    return std::string("usage: bursaria-console ") + form.usage + " [--json]";
}

std::string usage_of_all() {
    std::string text;
    for (const CommandForm& form : COMMANDS) text += (text.empty() ? "" : "\n") + usage_of(form);
    return text;
}

const CommandForm* find_form(const std::string& name) {
    for (const CommandForm& form : COMMANDS) {
        if (name == form.name) return &form;
    }
    return nullptr;
}

// Reads one option, with its value if it takes one; false if the command does not know it.
bool read_option(const std::vector<std::string>& arguments, std::size_t& at, const CommandForm& form,
                 ConsoleRequest& request) {
    const std::string& option = arguments[at];
    if (option == "--json") {
        request.json = true;
        return true;
    }
    if (option == "--yes" && form.may_confirm) {
        request.yes = true;
        return true;
    }
    if (option == "--exclude" && form.may_exclude && at + 1 < arguments.size()) {
        request.excluded.push_back(arguments[++at]);
        return true;
    }
    return false;
}

bool read_arguments(const std::vector<std::string>& arguments, const CommandForm& form,
                    ConsoleRequest& request) {
    std::vector<std::string> operands;
    for (std::size_t at = 1; at < arguments.size(); ++at) {
        if (arguments[at].starts_with("--")) {
            if (!read_option(arguments, at, form, request)) return false;
        } else {
            operands.push_back(arguments[at]);
        }
    }
    if (operands.size() != form.operands) return false;
    if (form.operands > 0) request.token = operands[0];
    if (form.operands > 1) request.amount = operands[1];
    return true;
}

}  // namespace

bool parse_console_arguments(const std::vector<std::string>& arguments, ConsoleRequest& request_out,
                             std::string& usage_out) {
    request_out = ConsoleRequest();
    usage_out.clear();
    const CommandForm* form = arguments.empty() ? nullptr : find_form(arguments[0]);
    if (!form) {
        usage_out = usage_of_all();
        return false;
    }
    request_out.command = form->command;
    if (read_arguments(arguments, *form, request_out)) return true;
    usage_out = usage_of(*form);
    return false;
}

std::string usage_line(ConsoleCommand command) {
    for (const CommandForm& form : COMMANDS) {
        if (form.command == command) return usage_of(form);
    }
    return "";
}
