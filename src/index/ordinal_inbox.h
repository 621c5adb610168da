// Files that programs of the family drop for each other when they see an ordinal go to an address, and names
// known to other wallets.
//
// An inbox is "/ord_inbox/<hash160 of the address>.json" under the data root, an array of objects with the
// texts `origin`, `type`, `name`, `icon`, `amt`, `address` and `id` (the token). Whoever may write the user's
// files may write there, so a record says what to look at and never what is owned: the sweep asks the chain.
// A file that cannot be read counts as empty. Callers hold the wallet mutex. No network.
#pragma once

#include <string>

#include "wallet/wallet_session.h"

// Takes what lies in the inboxes of the wallet's own addresses into `ord_owned`; saves the document if that
// changed. A hidden row stays as it is.
void qv_clasp_absorb_ord_inbox();
// Merges one record into the inbox of its address: one record an origin, newer texts over older ones.
void qv_clasp_post_ord_inbox(const LocalOrd& ord);
// Takes names from the documents of other wallets into the content cache, where it has none.
void qv_clasp_harvest_ord_names();
