#include "wallet/document_file.h"

#include <algorithm>
#include <fstream>
#include <system_error>

namespace {

constexpr std::string_view SECRET_KEYS[] = {"mnemonic", "priv"};

// The secret that belongs to a key of the document, or null.
SecretText* secret_of(WalletDocument& document, std::string_view key) {
    if (key == SECRET_KEYS[0]) return &document.mnemonic;
    if (key == SECRET_KEYS[1]) return &document.priv;
    return nullptr;
}

bool is_white(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

// Walks over JSON text without taking it apart. A text that is no JSON is walked over as well.
class Walker {
 public:
    explicit Walker(std::string_view text) : text_(text) {}

    // Moves behind the next string of the outermost object. False at the end.
    bool next_outer_string(std::size_t& start, std::size_t& end) {
        for (; at_ < text_.size(); ++at_) {
            const char c = text_[at_];
            if (c == '{' || c == '[') ++depth_;
            if (c == '}' || c == ']') --depth_;
            if (c != '"') continue;
            start = at_ + 1;
            skip_string();
            end = at_ - 1;
            if (depth_ == 1) return true;
            --at_;  // the loop moves on
        }
        return false;
    }
    // A colon and the start of a string follow: the string just read was a key.
    bool string_value_follows() {
        std::size_t at = skip_white(at_);
        if (at >= text_.size() || text_[at] != ':') return false;
        at = skip_white(at + 1);
        if (at >= text_.size() || text_[at] != '"') return false;
        at_ = at;
        return true;
    }

 private:
    void skip_string() {
        for (++at_; at_ < text_.size() && text_[at_] != '"'; ++at_) {
            if (text_[at_] == '\\') ++at_;
        }
        at_ = std::min(at_ + 1, text_.size());
    }
    std::size_t skip_white(std::size_t at) const {
        while (at < text_.size() && is_white(text_[at])) ++at;
        return at;
    }

    std::string_view text_;
    std::size_t at_ = 0;
    int depth_ = 0;
};

// Printable characters that stand for themselves in JSON.
bool is_plain(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; });
}

// Moves the secrets out of the text, which keeps its length and its form.
void take_secrets(SecretText& text, WalletDocument& document) {
    Walker walker(text.view());
    std::size_t start = 0;
    std::size_t end = 0;
    while (walker.next_outer_string(start, end)) {
        SecretText* const secret = secret_of(document, text.view().substr(start, end - start));
        if (!secret || !walker.string_value_follows() || !walker.next_outer_string(start, end)) continue;
        const std::string_view value = text.view().substr(start, end - start);
        if (!is_plain(value)) continue;
        secret->assign(value);
        std::fill_n(text.data() + start, value.size(), ' ');
    }
}

// What the walk had to leave to the JSON library.
void take_left_overs(WalletDocument& document) {
    for (const std::string_view key : SECRET_KEYS) {
        const Json& member = json_member(document.root, key);
        if (!member.is_string()) continue;
        const auto& value = member.get_ref<const std::string&>();
        if (!std::all_of(value.begin(), value.end(), [](char c) { return c == ' '; }))
            secret_of(document, key)->assign(value);
    }
}

constexpr std::uintmax_t LARGEST_DOCUMENT = 64U << 20U;

bool read_secret_text(const std::string& path, SecretText& text) {
    std::error_code error;
    if (std::filesystem::is_directory(utf8_path(path), error)) return false;
    const std::uintmax_t size = std::filesystem::file_size(utf8_path(path), error);
    if (error || size > LARGEST_DOCUMENT) return false;
    std::ifstream file;
    file.rdbuf()->pubsetbuf(nullptr, 0);
    file.open(utf8_path(path), std::ios::binary);
    if (!file) return false;
    char* const place = text.resize(static_cast<std::size_t>(size));
    file.read(place, static_cast<std::streamsize>(size));
    // Another program may be writing: what has gone meanwhile reads as blanks, and what is torn does not
    // parse.
    if (!file.bad()) std::fill(place + file.gcount(), place + size, ' ');
    return !file.bad();
}

// Puts a secret where its empty text stands, among the outermost keys.
SecretText with_secret(const SecretText& text, std::string_view key, std::string_view secret) {
    const std::string empty = "\n  \"" + std::string(key) + "\": \"";
    const std::size_t place = text.view().find(empty + '"');
    SecretText whole;
    if (place == std::string_view::npos) return text;
    const std::size_t cut = place + empty.size();
    const std::string_view before = text.view().substr(0, cut);
    const std::string_view after = text.view().substr(cut);
    // A tab is the one character of a secret that JSON writes in another way.
    const auto tabs = static_cast<std::size_t>(std::count(secret.begin(), secret.end(), '\t'));
    char* to = whole.resize(text.size() + secret.size() + tabs);
    to = std::copy(before.begin(), before.end(), to);
    for (const char c : secret) {
        if (c == '\t') *to++ = '\\';
        *to++ = c == '\t' ? 't' : c;
    }
    std::copy(after.begin(), after.end(), to);
    return whole;
}

// A stream's own buffer would keep the words.
bool write_unbuffered(const std::string& path, std::ios::openmode mode, std::string_view text) {
    std::ofstream file;
    file.rdbuf()->pubsetbuf(nullptr, 0);
    file.open(utf8_path(path), std::ios::binary | mode);
    if (!file) return false;
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    file.close();
    return !file.fail();
}

// In one piece, with blanks over what is left of a longer text, which are cut off then: a program that ends
// in between leaves one document or the other. Emptied first, the words would be gone.
bool write_over(const std::string& path, std::string_view text, std::uintmax_t old_size) {
    SecretText padded;
    const std::size_t size = std::max(text.size(), static_cast<std::size_t>(old_size));
    char* const rest = std::copy(text.begin(), text.end(), padded.resize(size));
    std::fill(rest, rest + (size - text.size()), ' ');
    if (!write_unbuffered(path, std::ios::in | std::ios::out, padded.view())) return false;
    std::error_code error;
    std::filesystem::resize_file(utf8_path(path), text.size(), error);
    return !error;
}

}  // namespace

WalletDocument::~WalletDocument() {
    for (const std::string_view key : SECRET_KEYS) {
        const auto found = root.find(key);
        if (found == root.end() || !found->is_string()) continue;
        auto& text = found->get_ref<std::string&>();
        cleanse_memory(text.data(), text.size());
    }
}

bool parse_wallet_document(std::string_view text, WalletDocument& document) {
    SecretText blanked(text);
    document.mnemonic.wipe();
    document.priv.wipe();
    take_secrets(blanked, document);
    if (!parse_json(blanked.view(), document.root)) return false;
    take_left_overs(document);
    return true;
}

bool read_wallet_document(const std::string& path, WalletDocument& document) {
    SecretText text;
    return read_secret_text(path, text) && parse_wallet_document(text.view(), document);
}

SecretText wallet_document_text(const WalletDocument& document) {
    Json root = document.root;
    if (!document.mnemonic.empty()) root["mnemonic"] = "";
    if (!document.priv.empty()) root["priv"] = "";
    SecretText text(dump_json(root, 2));
    if (!document.mnemonic.empty()) text = with_secret(text, "mnemonic", document.mnemonic.view());
    if (!document.priv.empty()) text = with_secret(text, "priv", document.priv.view());
    return text;
}

bool write_wallet_document(const std::string& path, std::string_view text) {
    std::error_code error;
    const std::uintmax_t old_size = std::filesystem::file_size(utf8_path(path), error);
    const bool is_new = error || old_size == 0 || old_size > LARGEST_DOCUMENT;
    return (!is_new && write_over(path, text, old_size)) || write_unbuffered(path, std::ios::trunc, text);
}
