// Picking recent inscriptions out of the histories of the wallet's addresses, and identity records out of
// their feed. Blocks on the network, without the wallet mutex.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "index/ordinal_row.h"
#include "wallet/wallet_session.h"

void ingest_woc_recent_ords(const std::vector<std::string>& watch, std::vector<LocalOrd>& found_inout,
                            std::uint64_t generation);
void qv_clasp_ingest_identity(const std::vector<std::string>& watch, std::vector<QvClaspOrdRow>& rows_inout);

// The label of an identity record's kind; empty for any other.
std::string kind_label(std::string_view kind);
// The label of an identity record's body for the wallet with that lower-case identity key; false if the body
// is no such record.
bool identity_label(std::string_view body, const std::string& identity_pub, std::string& label_out);
