// What the rows of a sweep say of themselves: type, name, amount and token from the inscription, better names
// from the indexer, and which rows are junk. Steps that take `owned` run with the wallet mutex held and
// without the network; the two fetches block on the network without it.
#pragma once

#include "index/inscription.h"
#include "index/sweep_state.h"

// What is known of one row's inscription.
struct RowContent {
    bool read = false;  // it was looked for; the sweep gives that up when the wallet moves on
    std::string type;
    std::string cached_name;
    bool token = false;  // `record` is a token record
    Bsv20Meta record;
    bool identity = false;  // `label` is the label of an identity record
    std::string label;
};

// The inscription of every row, one slot a row; what is not cached is fetched and kept.
std::vector<RowContent> fetch_contents(const OrdinalSweep& sweep);
// Fills the row from its inscription and what the wallet remembers of it (null for nothing); true if that
// changed. A name that was found is kept in the content cache.
bool fill_row(const OrdinalSweep& sweep, const RowContent& content, QvClaspOrdRow& row, LocalOrd* ord);
void fill_rows(OrdinalSweep& sweep, const std::vector<RowContent>& contents, std::vector<LocalOrd>& owned);

struct TokenFace {
    std::string token_id;
    std::string name;
    std::string icon;
};
// Asks the indexer about the tokens of rows that want a name or an icon, each once.
std::vector<TokenFace> fetch_token_faces(const OrdinalSweep& sweep);
void take_token_faces(OrdinalSweep& sweep, const std::vector<TokenFace>& faces, std::vector<LocalOrd>& owned);

// Drops token rows that would never show anything, and hides them for good; of rows of one output the first
// stays.
void drop_junk(OrdinalSweep& sweep, std::vector<LocalOrd>& owned);
// A token without an icon takes the picture that is named after it.
void link_token_art(OrdinalSweep& sweep, std::vector<LocalOrd>& owned);
