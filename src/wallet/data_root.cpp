#include "wallet/data_root.h"

#include <atomic>
#include <cstdint>

#include "base/clock.h"
#include "platform/user_data.h"

std::string qv_data_root() {
    const std::string folder = family_data_folder();
    create_private_folder(folder);
    return folder;
}

std::string qv_clasp_new_id() {
    static std::atomic<std::int64_t> last_id{0};
    const std::int64_t now = unix_milliseconds();
    std::int64_t last = last_id.load();
    std::int64_t next = 0;
    do {
        next = now > last ? now : last + 1;
    } while (!last_id.compare_exchange_weak(last, next));
    return "w" + std::to_string(next);
}
