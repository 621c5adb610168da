#include "program/page_version.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

#include "base/text.h"

namespace {

constexpr std::size_t MOST_BYTES = 24'000;
constexpr std::array<std::string_view, 3> HARD_BLANKS = {"&nbsp;", "&#160;", "&NBSP;"};

std::string replace_all(std::string_view text, std::string_view part, char with) {
    std::string replaced;
    for (std::size_t at = text.find(part); at != std::string_view::npos; at = text.find(part)) {
        replaced.append(text.substr(0, at)).push_back(with);
        text.remove_prefix(at + part.size());
    }
    return replaced.append(text);
}

std::string without_tags(std::string_view text) {
    std::string stripped;
    bool in_tag = false;
    for (const char c : text) {
        if (c == '<') {
            in_tag = true;
        } else if (c == '>') {
            in_tag = false;
            stripped.push_back(' ');
        } else if (!in_tag) {
            stripped.push_back(c);
        }
    }
    return stripped;
}

// Where the text behind the word that announces the version begins; npos without one.
std::size_t behind_anchor(std::string_view text) {
    constexpr std::string_view PHRASE = "current build";
    constexpr std::string_view WORD = "version";
    const std::string lower = ascii_lower(text);
    std::size_t anchor = std::string::npos;
    const std::size_t phrase = lower.find(PHRASE);
    if (phrase != std::string::npos) anchor = lower.find(WORD, phrase + PHRASE.size());
    if (anchor == std::string::npos) anchor = lower.rfind(WORD);
    return anchor == std::string::npos ? anchor : anchor + WORD.size();
}

std::string_view version_text(std::string_view text) {
    const std::size_t start = text.find_first_not_of(" :=\t");
    if (start == std::string_view::npos) return {};
    text.remove_prefix(start);
    return text.substr(0, text.find_first_not_of("0123456789."));
}

int version_in_units(std::string_view text) {
    double units = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), units);
    if (read.ec != std::errc() || units < 0) return -1;
    const double thousandths = std::round(units * 1000);
    return thousandths <= std::numeric_limits<int>::max() ? static_cast<int>(thousandths) : -1;
}

int version_in_thousandths(std::string_view text) {
    int version = -1;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), version);
    return read.ec == std::errc() ? version : -1;
}

}  // namespace

std::string format_version(int version) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.3f", (version < 0 ? BUILD_VERSION : version) / 1000.0);
    return text.data();
}

int parse_page_version(std::string_view body) {
    if (body.size() > MOST_BYTES) body.remove_prefix(body.size() - MOST_BYTES);
    std::string text(body);
    for (const std::string_view blank : HARD_BLANKS) text = replace_all(text, blank, ' ');
    text = without_tags(text);
    const std::size_t start = behind_anchor(text);
    if (start == std::string::npos) return -1;
    const std::string_view version = version_text(std::string_view(text).substr(start));
    if (version.empty()) return -1;
    return contains(version, ".") ? version_in_units(version) : version_in_thousandths(version);
}

bool is_update(int latest_version) {
    return latest_version > BUILD_VERSION;
}

std::string version_line(bool update_available, const Settings& settings) {
    return update_available ? "Update available, " + settings.update_page
                            : "Version " + format_version(BUILD_VERSION);
}
