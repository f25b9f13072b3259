// Macros with which the library logs: one for each level, always in the group UTIL.
//
// A line is a call, which tests whether it is enabled. On a hot path, that of a lookup, a value or a
// handle, a disabled line costs a test without a call, and its arguments are not evaluated: they must
// have no side effects.
#pragma once

#include "BEConfig.h"
#include "Logger.h"

namespace vobiutils {

inline bool levelEnabled(LOG_TYPE_T level) {
    switch (level) {
        case LOG_TYPE_INFO: return BEConfig::LOG_INFO_ENABLE != 0;
        case LOG_TYPE_WARN: return BEConfig::LOG_WARNING_ENABLE != 0;
        case LOG_TYPE_DEBUG: return BEConfig::LOG_DEBUG_ENABLE != 0;
        case LOG_TYPE_ERROR: return BEConfig::LOG_ERROR_ENABLE != 0;
        default: return true;
    }
}

// Whether Logger::print would print a line of that level and group.
inline bool enabled(LOG_TYPE_T level, LOG_GROUP_T group) {
    return (Logger::mask & (1U << (group % 32U))) != 0 && levelEnabled(level);
}

// Logger::print for the group UTIL. As the group is not passed with each line, one more argument of
// it is in a register.
[[gnu::format(printf, 2, 3)]] void logLine(LOG_TYPE_T level, char const* format, ...);

// A string for "%s": not every C library accepts a null there.
inline char const* printable(char const* string) { return string != nullptr ? string : "(null)"; }

}  // namespace vobiutils

#define UTIL_WARN(...) ::vobiutils::logLine(LOG_TYPE_WARN, __VA_ARGS__)
#define UTIL_ERROR(...) ::vobiutils::logLine(LOG_TYPE_ERROR, __VA_ARGS__)
#define UTIL_INFO(...) ::vobiutils::logLine(LOG_TYPE_INFO, __VA_ARGS__)
#define UTIL_DEBUG(...) ::vobiutils::logLine(LOG_TYPE_DEBUG, __VA_ARGS__)

#define UTIL_HOT_INFO(...)                                                               \
    VOBIUTILS_LOG_IF(::vobiutils::enabled(LOG_TYPE_INFO, LOG_GROUP_UTIL), LOG_TYPE_INFO, \
                     __VA_ARGS__)
#define UTIL_HOT_DEBUG(...) \
    UTIL_DEBUG_IF(::vobiutils::enabled(LOG_TYPE_DEBUG, LOG_GROUP_UTIL), __VA_ARGS__)

// For a walk of many steps, which calls ::vobiutils::enabled for the level DEBUG once and passes
// the result as `enabled` to the line of each step.
#define UTIL_DEBUG_IF(enabled, ...) VOBIUTILS_LOG_IF(enabled, LOG_TYPE_DEBUG, __VA_ARGS__)

#define VOBIUTILS_LOG_IF(enabled, level, ...)         \
    do {                                              \
        if (enabled) [[unlikely]] {                   \
            ::vobiutils::logLine(level, __VA_ARGS__); \
        }                                             \
    } while (false)
