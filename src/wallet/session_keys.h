// Keys of the loaded session: the fixed derivation paths, the current addresses, the look-up of a key by
// address and the signatures of the identity. Callers hold the wallet mutex unless stated.
//
// Paths: receive m/44'/236'/1'/0/i, ordinals m/44'/236'/5'/0/i, ordinals change m/44'/236'/5'/1/i, identity
// m/44'/236'/100'/0/0, BN key m/44'/236'/102'/0/0, any account m/44'/236'/a'/0/i for a from 0 to 5.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "wallet/key_derivation.h"
#include "wallet/secret.h"

inline constexpr std::uint32_t RECEIVE_ACCOUNT = 1;
inline constexpr std::uint32_t ORDINAL_ACCOUNT = 5;

// Checks the session's mnemonic.
bool qv_clasp_mnemonic_valid();

// Derives one key; computes seed and master when they are missing. All outputs are empty after a failure.
bool qv_clasp_derive(const QvClaspKeyPath& path, SecretText& priv_hex_out, std::string& pub_hex_out,
                     std::string& address_out);
bool qv_clasp_derive_account(std::uint32_t account, std::uint32_t index, SecretText& priv_hex_out,
                             std::string& pub_hex_out, std::string& address_out);
bool qv_clasp_derive_ordinal_change(std::uint32_t index, SecretText& priv_hex_out, std::string& pub_hex_out,
                                    std::string& address_out);
bool qv_clasp_derive_identity(SecretText& priv_hex_out, std::string& pub_hex_out, std::string& address_out);
// The address alone, its private key wiped at once; empty on failure.
std::string qv_clasp_account_address(std::uint32_t account, std::uint32_t index);

// Fills the session's current receive key and identity, and tells the local name registry the current ordinal
// address.
bool qv_clasp_derive_addresses();

// Finds the key of one of the wallet's addresses: every account's external chain up to its counter, then the
// identity; in a legacy wallet the one address. False, with empty outputs, for any other address.
bool qv_clasp_find_key(const std::string& address, SecretText& priv_hex_out, std::string& pub_hex_out);
// The same question without the key.
bool qv_clasp_owns_address(const std::string& address);

// Signs a text as the identity; takes the wallet mutex itself. `signature_out` is Base64 of r and s (88
// characters).
bool qv_clasp_sign_identity(std::string_view text, std::string& pubkey_hex_out, std::string& signature_out,
                            std::string& error_out);
// The identity's second published key; takes the wallet mutex itself.
bool qv_clasp_bn_key(std::string& bn_pub_out, SecretText& bn_priv_out, std::string& bn_address_out,
                     std::string& error_out);
