// Amounts of BSV and counts of lots. An amount is a signed 64-bit count of satoshis, negative meaning
// unknown; a lot count is unsigned decimal text of any length, of which arithmetic reads at most 20 digits.
// No floating point. Pure.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

inline constexpr std::int64_t SATS_PER_BSV = 100'000'000;
// The smallest share that is sent.
inline constexpr std::int64_t DUST_SATS = 546;
// The app fee, once per Pay, on top of the pot.
inline constexpr std::int64_t APP_FEE_SATS = 1'000'000;
// The shortest text taken for a token id (txid, "_", output number).
inline constexpr std::size_t TOKEN_ID_LENGTH = 66;

// "-" for a negative amount, the whole BSV, ".", eight digits. The suffix " BSV" is the caller's.
std::string format_bsv(std::int64_t sats);

// Without blanks and tabs at the start, and without blanks, tabs, carriage returns and line feeds at the end.
std::string trim_text(std::string_view text);

// Reads a typed and trimmed amount; true only for a result above zero. Digits after the eighth are dropped.
bool parse_bsv_amount(std::string_view text, std::int64_t& sats);

// Strict: false unless the text is 1 to 20 digits that fit in 64 bits.
bool read_lot_text_strict(std::string_view text, std::uint64_t& lots);
// Lenient: 0 outside 1 to 20 characters; stops at the first character that is no digit or does not fit.
std::uint64_t read_lot_text_lenient(std::string_view text);

// Floor of pot times lots divided by payable, exactly; 0 for any text that does not read strictly, a pot
// below 1, no payable lots or a quotient beyond 63 bits.
std::int64_t pro_rata_sats(std::int64_t pot, std::string_view lots_text, std::string_view payable_text);
