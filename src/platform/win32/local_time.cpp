#include "platform/local_time.h"

bool local_time(std::int64_t unix, std::tm& local_out) {
    const __time64_t moment = unix;
    std::tm local{};
    if (::_localtime64_s(&local, &moment) != 0) return false;
    local_out = local;
    return true;
}
