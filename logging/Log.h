// The library's own way to the log: one short word per level, group UTIL fixed.
//
// A line that is switched off costs a flag test: its arguments are not evaluated, so they must have
// no side effects. In a build for size most cost the call of Logger::print, which makes the same test, as
// they are many; those of each step along a path do not.
#ifndef VOBIUTILS_LOGGING_LOG_H
#define VOBIUTILS_LOGGING_LOG_H

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

inline bool enabled(LOG_TYPE_T level, LOG_GROUP_T group) {
    return (Logger::mask & (1U << (group % 32U))) != 0 && levelEnabled(level);
}

// What a line asks before it calls Logger::print.
inline bool mayPrint([[maybe_unused]] LOG_TYPE_T level, [[maybe_unused]] LOG_GROUP_T group) {
#ifdef __OPTIMIZE_SIZE__
    return true;
#else
    return enabled(level, group);
#endif
}

// A text for "%s": not every system library accepts a null there.
inline char const* printable(char const* text) { return text != nullptr ? text : "(null)"; }

}  // namespace vobiutils

#define VOBIUTILS_LOG(level, ...)                                        \
    do {                                                                 \
        if (::vobiutils::mayPrint(level, LOG_GROUP_UTIL)) [[unlikely]] { \
            Logger::print(level, LOG_GROUP_UTIL, __VA_ARGS__);           \
        }                                                                \
    } while (false)

#define UTIL_INFO(...) VOBIUTILS_LOG(LOG_TYPE_INFO, __VA_ARGS__)
#define UTIL_WARN(...) VOBIUTILS_LOG(LOG_TYPE_WARN, __VA_ARGS__)
#define UTIL_DEBUG(...) VOBIUTILS_LOG(LOG_TYPE_DEBUG, __VA_ARGS__)
#define UTIL_ERROR(...) VOBIUTILS_LOG(LOG_TYPE_ERROR, __VA_ARGS__)

// A walk of many steps asks once, and each step then costs one test: `enabled` is what
// ::vobiutils::enabled said of the level DEBUG.
#define UTIL_DEBUG_IF(enabled, ...)                                     \
    do {                                                                \
        if (enabled) [[unlikely]] {                                     \
            Logger::print(LOG_TYPE_DEBUG, LOG_GROUP_UTIL, __VA_ARGS__); \
        }                                                               \
    } while (false)

#endif
