// Files that programs of the family drop for each other when they see an ordinal go to an address, and names
// known to other wallets. Callers hold the wallet mutex.
#pragma once

#include <string>

#include "wallet/wallet_session.h"

// Takes what lies in the inboxes of the wallet's own addresses into `ord_owned`; saves the document if that
// changed.
void qv_clasp_absorb_ord_inbox();
// Merges one record into the inbox of its address.
void qv_clasp_post_ord_inbox(const LocalOrd& ord);
// Takes names from the documents of other wallets into the content cache.
void qv_clasp_harvest_ord_names();
