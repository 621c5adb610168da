// A wallet document on the disk, read and written without leaving its key material behind in memory: the
// words and the private key never pass through an ordinary string, a stream's buffer or the JSON library.
//
// That holds for documents as wallets write them. Words or a key in a form that only the JSON library can
// take apart (escapes) are found by it, and stay where it had them.
#pragma once

#include <string>
#include <string_view>

#include "base/json_file.h"
#include "wallet/secret.h"

struct WalletDocument {
    WalletDocument() = default;
    ~WalletDocument();
    WalletDocument(const WalletDocument&) = delete;
    WalletDocument& operator=(const WalletDocument&) = delete;

    // Everything else. Where there is a text under "mnemonic" or "priv", blanks stand for it.
    Json root;
    SecretText mnemonic;
    SecretText priv;
};

// False if the file cannot be read or does not parse.
bool read_wallet_document(const std::string& path, WalletDocument& document);
// The same from a text in memory.
bool parse_wallet_document(std::string_view text, WalletDocument& document);

// The text of a document: keys sorted, an indent of 2. An empty secret is left out.
SecretText wallet_document_text(const WalletDocument& document);
// Truncates the file and writes the text; false if it cannot be opened or the stream fails.
bool write_wallet_document(const std::string& path, std::string_view text);
