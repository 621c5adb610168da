// The order of the wallet library's locks, watched in a debug build: no thread takes the wallet mutex while
// it holds the registry lock or the name registry's mutex. In a release build this costs nothing.
#pragma once

#include <cassert>

#ifdef NDEBUG
inline void note_inner_lock(int) {}
inline void check_wallet_lock_order() {}
#else
inline thread_local int inner_locks_held = 0;
// +1 when a thread takes one of the inner locks, -1 when it gives it up.
inline void note_inner_lock(int change) {
    inner_locks_held += change;
    assert(inner_locks_held >= 0 && "a lock is given up that was not taken");
}
inline void check_wallet_lock_order() {
    assert(inner_locks_held == 0 && "the wallet mutex comes before the registry locks");
}
#endif
