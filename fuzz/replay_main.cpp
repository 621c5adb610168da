// Hands each file of a corpus to the target, as a test without a fuzzer. The name of the file that is at work
// is printed first, so that the last line before a crash tells which one it was.
#include <algorithm>
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

}  // namespace

int main(int count, char** values) {
    std::vector<std::string> paths;
    for (int i = 1; i < count; ++i) {
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
    }
    run_deep_nesting();
    // A corpus that has gone missing is no success.
    return paths.size() >= 3 ? 0 : 1;
}
