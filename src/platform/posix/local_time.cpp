#include "platform/local_time.h"

bool local_time(std::int64_t unix, std::tm& local_out) {
    const std::time_t moment = unix;
    std::tm local{};
    if (!::localtime_r(&moment, &local)) return false;
    local_out = local;
    return true;
}
