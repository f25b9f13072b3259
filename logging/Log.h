// Macros with which the library logs: one for each level, always in the group UTIL.
//
// A disabled line costs one flag test. Its arguments are then not evaluated, so they must have no
// side effects.
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

// Whether Logger::print would print a line of that level and group.
inline bool enabled(LOG_TYPE_T level, LOG_GROUP_T group) {
    return (Logger::mask & (1U << (group % 32U))) != 0 && levelEnabled(level);
}

// A string for "%s": not every C library accepts a null there.
inline char const* printable(char const* string) { return string != nullptr ? string : "(null)"; }

}  // namespace vobiutils

#define VOBIUTILS_LOG(level, ...)                                       \
    do {                                                                \
        if (::vobiutils::enabled(level, LOG_GROUP_UTIL)) [[unlikely]] { \
            Logger::print(level, LOG_GROUP_UTIL, __VA_ARGS__);          \
        }                                                               \
    } while (false)

#define UTIL_INFO(...) VOBIUTILS_LOG(LOG_TYPE_INFO, __VA_ARGS__)
#define UTIL_WARN(...) VOBIUTILS_LOG(LOG_TYPE_WARN, __VA_ARGS__)
#define UTIL_DEBUG(...) VOBIUTILS_LOG(LOG_TYPE_DEBUG, __VA_ARGS__)
#define UTIL_ERROR(...) VOBIUTILS_LOG(LOG_TYPE_ERROR, __VA_ARGS__)

// For a walk of many steps, which calls ::vobiutils::enabled for the level DEBUG once and passes
// the result as `enabled` to the line of each step.
#define UTIL_DEBUG_IF(enabled, ...)                                     \
    do {                                                                \
        if (enabled) [[unlikely]] {                                     \
            Logger::print(LOG_TYPE_DEBUG, LOG_GROUP_UTIL, __VA_ARGS__); \
        }                                                               \
    } while (false)

#endif
