// VXGoodLog: printf-style diagnostics for developers, never shown to users.
//
// Where the lines go is chosen once per process from the environment variable VX_LOG:
// unset or "syslog" sends them to the system log, "stderr" to standard error, and
// "off" (what the test suites set) drops them.
#pragma once

namespace vx {

enum class LogDestination { Off, SystemLog, StandardError };

LogDestination logDestination();
void setLogDestination(LogDestination destination);

}  // namespace vx

void VXGoodLog(const char* format, ...) __attribute__((format(printf, 1, 2)));

// A category-tagged debug line: VX_LOG_DEBUG("syntax", "pattern dropped: %s", text).
#define VX_LOG_DEBUG(category, format, ...) VXGoodLog("[%s] " format, category __VA_OPT__(, ) __VA_ARGS__)

// Programmer errors abort with a message; bad data never reaches these.
#define VX_ASSERT(condition)                                                        \
    do {                                                                            \
        if (!(condition)) ::vx::assertionFailed(#condition, __FILE__, __LINE__);    \
    } while (0)

namespace vx {
[[noreturn]] void assertionFailed(const char* condition, const char* file, int line);
}
