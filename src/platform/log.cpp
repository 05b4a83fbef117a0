#include "platform/log.hpp"

#include <syslog.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace vx {
namespace {

LogDestination destinationFromEnvironment() {
    const char* value = std::getenv("VX_LOG");
    if (!value || !*value || std::strcmp(value, "syslog") == 0) return LogDestination::SystemLog;
    if (std::strcmp(value, "stderr") == 0) return LogDestination::StandardError;
    return LogDestination::Off;
}

std::atomic<int>& destinationSlot() {
    static std::atomic<int> slot{static_cast<int>(destinationFromEnvironment())};
    return slot;
}

}  // namespace

LogDestination logDestination() { return static_cast<LogDestination>(destinationSlot().load()); }

void setLogDestination(LogDestination destination) { destinationSlot().store(static_cast<int>(destination)); }

void assertionFailed(const char* condition, const char* file, int line) {
    std::fprintf(stderr, "vx: internal error: %s failed at %s:%d\n", condition, file, line);
    std::abort();
}

}  // namespace vx

void VXGoodLog(const char* format, ...) {
    const auto destination = vx::logDestination();
    if (destination == vx::LogDestination::Off) return;
    va_list args;
    va_start(args, format);
    if (destination == vx::LogDestination::StandardError) {
        std::fputs("vellumex: ", stderr);
        std::vfprintf(stderr, format, args);
        std::fputc('\n', stderr);
    } else {
        vsyslog(LOG_USER | LOG_DEBUG, format, args);
    }
    va_end(args);
}
