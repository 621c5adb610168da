// Hands each file of a corpus to the target, as a test without a fuzzer, and then each with odd values in it
// (not with --plain). What is at work is printed first, so that the last line before a crash tells which one
// it was.
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "base/json_file.h"
#include "fuzz/fuzz.h"

namespace {

void run(const std::string& name, const std::string& content) {
    std::printf("%s\n", name.c_str());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
}

std::string repeated(std::string_view part, std::size_t times) {
    std::string text;
    for (std::size_t i = 0; i < times; ++i) text += part;
    return text;
}

// For a target that takes no choice the digit is one byte of rubbish more.
void run_deep_nesting() {
    constexpr std::size_t DEPTH = 100'000;
    const std::string arrays = repeated("[", DEPTH) + repeated("]", DEPTH);
    const std::string objects = repeated("{\"a\":", DEPTH);
    for (const char* before : {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9", "=== * 200\n"}) {
        run(std::string("nested arrays behind ") + before, before + arrays);
        run(std::string("nested objects behind ") + before, before + objects);
    }
}

// Where the JSON values of a text begin and end, those in other values too; what is no JSON is passed over.
struct Span {
    std::size_t begin = 0;
    std::size_t length = 0;
};
std::vector<Span> json_values(const std::string& text) {
    std::vector<Span> values;
    std::vector<std::size_t> open;
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::size_t end = i + 1;
        if (text[i] == '"') {
            while (end < text.size() && text[end] != '"') end += text[end] == '\\' ? 2 : 1;
            const std::size_t next = text.find_first_not_of(" \n\"", std::min(end, text.size()));
            if (next == std::string::npos || text[next] != ':') values.push_back({i, end + 1 - i});
            i = end;
        } else if (text[i] == '{' || text[i] == '[') {
            open.push_back(i);
        } else if ((text[i] == '}' || text[i] == ']') && !open.empty()) {
            values.push_back({open.back(), end - open.back()});
            open.pop_back();
        } else if (!open.empty() && std::isalnum(static_cast<unsigned char>(text[i]))) {
            const std::size_t begin = text[i - 1] == '-' ? i - 1 : i;
            end = std::min(text.find_first_of(",]} \n", i), text.size());
            values.push_back({begin, end - begin});
            i = end - 1;
        }
    }
    return values;
}

constexpr const char* ODD_VALUES[] = {"1e400",
                                      "-1e308",
                                      "1e-400",
                                      "99999999999999999999",
                                      "-9223372036854775809",
                                      "-0",
                                      "\"\xff\xfe\"",
                                      "\"x\"",
                                      "7",
                                      "2.5",
                                      "true",
                                      "null",
                                      "[]",
                                      "{}"};
constexpr std::size_t MOST_VALUES = 120;

// Each value of the file in turn is one that it must not be.
void run_odd_values(const std::string& name, const std::string& content) {
    const std::vector<Span> values = json_values(content);
    for (std::size_t i = 0; i < std::min(values.size(), MOST_VALUES); ++i) {
        for (const char* odd : ODD_VALUES) {
            std::string changed = content;
            changed.replace(values[i].begin, values[i].length, odd);
            run(name + ", value " + std::to_string(i) + " is " + odd, changed);
        }
    }
}

}  // namespace

int main(int count, char** values) {
    std::vector<std::string> paths;
    bool plain = false;
    for (int i = 1; i < count; ++i) {
        if (std::string_view(values[i]) == "--plain") {
            plain = true;
            continue;
        }
        if (!std::filesystem::is_directory(values[i])) {
            paths.emplace_back(values[i]);
            continue;
        }
        for (const auto& entry : std::filesystem::directory_iterator(values[i]))
            paths.push_back(entry.path().string());
    }
    std::sort(paths.begin(), paths.end());
    for (const std::string& path : paths) {
        std::string content;
        promise(read_text_file(path, content), "the file can be read");
        run(path, content);
        if (!plain) run_odd_values(path, content);
    }
    run_deep_nesting();
    // A corpus that has gone missing is no success.
    return paths.size() >= 3 ? 0 : 1;
}
