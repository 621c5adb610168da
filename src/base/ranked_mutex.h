// Mutexes that know their place in the order of locks. A thread that holds one may take only those of a
// higher rank, or one that it holds already; a debug build ends the process at the first lock taken out of
// order, whether or not another thread was there to deadlock with. In a release build these are the plain
// mutexes.
#pragma once

#include <mutex>
#ifndef NDEBUG
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#endif

enum class LockRank {
    Scan = 1,  // the scan of the receive chain, held across the network
    Wallet,    // the session and the coin records
    Registry,  // the wallet registry, or the registry of names; never one under the other
    Listings,  // what the indexer last listed, while a sweep reads it
    Leaf,      // all others: nothing else is taken under them
};

#ifdef NDEBUG

template <LockRank, typename Mutex = std::mutex>
using RankedMutex = Mutex;

#else

namespace lock_order {

struct Held {
    LockRank rank;
    const void* mutex;
};
inline constexpr std::size_t MOST_HELD = 32;
// Plain data, so that a thread that outlives main may still take a lock.
inline thread_local Held held[MOST_HELD];
inline thread_local std::size_t held_count = 0;

inline void require(bool kept, const char* what, LockRank rank) {
    if (kept) return;
    std::fprintf(stderr, "order of locks: %s (rank %d; held:", what, static_cast<int>(rank));
    for (std::size_t i = 0; i < held_count; ++i) std::fprintf(stderr, " %d", static_cast<int>(held[i].rank));
    std::fprintf(stderr, ")\n");
    std::abort();
}

inline bool may_take(LockRank rank, const void* mutex) {
    bool highest = true;
    for (std::size_t i = 0; i < held_count; ++i) {
        if (held[i].mutex == mutex) return true;
        highest = highest && held[i].rank < rank;
    }
    return highest;
}

inline void take(LockRank rank, const void* mutex) {
    require(held_count < MOST_HELD, "too many locks at once", rank);
    held[held_count++] = {rank, mutex};
}

inline void give_up(LockRank rank, const void* mutex) {
    std::size_t at = held_count;
    while (at > 0 && held[at - 1].mutex != mutex) --at;
    require(at > 0, "a lock is given up that this thread does not hold", rank);
    for (; at < held_count; ++at) held[at - 1] = held[at];
    --held_count;
}

}  // namespace lock_order

template <LockRank rank, typename Mutex = std::mutex>
class RankedMutex {
 public:
    void lock() {
        lock_order::require(lock_order::may_take(rank, this), "a lower lock after a higher one", rank);
        mutex_.lock();
        lock_order::take(rank, this);
    }
    bool try_lock() {
        if (!mutex_.try_lock()) return false;
        lock_order::take(rank, this);
        return true;
    }
    void unlock() {
        lock_order::give_up(rank, this);
        mutex_.unlock();
    }

 private:
    Mutex mutex_;
};

#endif
