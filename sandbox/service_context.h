// What every service of the sandbox may look at. The services themselves are plain functions from a request
// to a reply; they keep nothing between two requests but what stands here. All of it may be used from any
// thread.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/json_file.h"
#include "sandbox/chain.h"
#include "sandbox/faults.h"
#include "sandbox/sandbox.h"
#include "sandbox/world.h"

namespace sandbox {

// Receipts of payments, as the family's host has taken them after the check of their signature.
class Receipts {
 public:
    void add(Json receipt) {
        const std::lock_guard<std::mutex> lock(mutex_);
        rows_.push_back(std::move(receipt));
    }
    std::vector<Json> all() const {
        const std::lock_guard<std::mutex> lock(mutex_);
        return rows_;
    }

 private:
    mutable std::mutex mutex_;
    std::vector<Json> rows_;
};

// The requests that the services have got, in order.
class RequestLog {
 public:
    void add(SeenRequest request) {
        const std::lock_guard<std::mutex> lock(mutex_);
        rows_.push_back(std::move(request));
    }
    void clear() {
        const std::lock_guard<std::mutex> lock(mutex_);
        rows_.clear();
    }
    std::vector<SeenRequest> all() const {
        const std::lock_guard<std::mutex> lock(mutex_);
        return rows_;
    }

 private:
    mutable std::mutex mutex_;
    std::vector<SeenRequest> rows_;
};

// Which wallet the stand-in for the wallet program hands out: its id, "" to refuse, "-" to stay silent.
class Approval {
 public:
    void set(const std::string& wallet_id) {
        const std::lock_guard<std::mutex> lock(mutex_);
        wallet_id_ = wallet_id;
    }
    std::string wallet_id() const {
        const std::lock_guard<std::mutex> lock(mutex_);
        return wallet_id_;
    }

 private:
    mutable std::mutex mutex_;
    std::string wallet_id_ = "-";
};

// The token records in the outputs of a transaction, which never change. Reading a script is dear, and an
// index reads each once.
struct TokenRecord {
    std::uint32_t vout = 0;
    std::string token_id;
    std::string owner;
    std::string amt;
};
using TokenRecords = std::vector<TokenRecord>;
class TokenIndex {
 public:
    // Null if the transaction has not been read yet.
    std::shared_ptr<const TokenRecords> find(const std::string& txid) const {
        const std::lock_guard<std::mutex> lock(mutex_);
        const auto found = by_txid_.find(txid);
        return found == by_txid_.end() ? nullptr : found->second;
    }
    void put(const std::string& txid, std::shared_ptr<const TokenRecords> records) {
        const std::lock_guard<std::mutex> lock(mutex_);
        by_txid_[txid] = std::move(records);
    }

 private:
    mutable std::mutex mutex_;
    std::unordered_map<std::string, std::shared_ptr<const TokenRecords>> by_txid_;
};

struct ServiceContext {
    Chain chain;
    mutable TokenIndex tokens;
    Directory directory;
    World world;  // set before any service runs
    Faults faults;
    RequestLog requests;
    Receipts receipts;
    Approval approval;
    std::string home_domain;
    std::string oracle_address;
    std::string fee_address;
    std::atomic<std::size_t> index_lag{0};
    // Services whose own answers vary from one time to the next count here, so that both forms are met.
    std::atomic<unsigned> turn{0};
    std::atomic<int> page_version{2};  // thousandths
};

}  // namespace sandbox
