/// \file
/// The process-wide diagnostic log.
///
/// A message has a group (the module that logs) and a level. It is written when the group's bit
/// is set in Logger::mask and the level is enabled in the settings (BEConfig.h). If
/// Logger::enableFileLog is not 0, it is first appended to the file BEConfig::LOG_FILE; then it is
/// printed on standard output. A line has no time stamp:
/// \code{.unparsed}
/// UTIL          | WARN: message
/// \endcode
///
/// Threads: print may be called from any thread; lines of different threads never mix. init and
/// setGroup belong to start-up, while no other thread is in the library.
#ifndef VOBIUTILS_LOGGER_H
#define VOBIUTILS_LOGGER_H

#include <pthread.h>

#pragma GCC visibility push(default)

/// Level of a message. Any other value is printed under "PRINT" and cannot be switched off by
/// level.
enum LOG_TYPE_T : unsigned int {
    LOG_TYPE_INFO = 0,     ///< "INFO", enabled by BEConfig::LOG_INFO_ENABLE
    LOG_TYPE_WARN = 1,     ///< "WARN", enabled by BEConfig::LOG_WARNING_ENABLE
    LOG_TYPE_DEBUG = 2,    ///< "DEBUG", enabled by BEConfig::LOG_DEBUG_ENABLE
    LOG_TYPE_ERROR = 3,    ///< "ERROR", enabled by BEConfig::LOG_ERROR_ENABLE
    LOG_TYPE_DEFAULT = 4,  ///< "PRINT", always enabled
};

/// Group of a message: bit number in Logger::mask and index into Logger::LogGroupNames. The library
/// itself logs under LOG_GROUP_UTIL; the others are for the programs built on it.
enum LOG_GROUP_T : unsigned int {
    LOG_GROUP_UTIL = 0,            ///< "UTIL", the library itself
    LOG_GROUP_WSL = 1,             ///< "WSL"
    LOG_GROUP_API_AL = 2,          ///< "API_AL"
    LOG_GROUP_APIV1_GATEWAY = 3,   ///< "APIV1_GATEWAY"
    LOG_GROUP_APIV1_WIFI = 4,      ///< "APIV1_WIFI"
    LOG_GROUP_APIV1_NETWORK = 5,   ///< "APIV1_NETWORK"
    LOG_GROUP_APIV1_SECURITY = 6,  ///< "APIV1_SECURITY"
    LOG_GROUP_APIV1_SERVICE = 7,   ///< "APIV1_SERVICE"
    LOG_GROUP_APIV1_MEDIA = 8,     ///< "APIV1_MEDIA"
    LOG_GROUP_APIV1_QOS = 9,       ///< "APIV1_QOS"
    LOG_GROUP_FAL = 10,            ///< "FAL"
    LOG_GROUP_LDB_GATEWAY = 11,    ///< "LDB_GATEWAY"
    LOG_GROUP_LDB_WIFI = 12,       ///< "LDB_WIFI"
    LOG_GROUP_LDB_NETWORK = 13,    ///< "LDB_NETWORK"
    LOG_GROUP_LDB_SECURITY = 14,   ///< "LDB_SECURITY"
    LOG_GROUP_LDB_SERVICE = 15,    ///< "LDB_SERVICE"
    LOG_GROUP_LDB_MEDIA = 16,      ///< "LDB_MEDIA"
    LOG_GROUP_LDB_QOS = 17,        ///< "LDB_QOS"
    LOG_GROUP_UTEST = 18,          ///< "UTEST"
};

/// \copydoc Logger.h
class Logger {
  public:
    /// Starts the log: sets mask to BEConfig::LOG_MASK, sets enableFileLog and installs
    /// be_sig_handler for SIGSEGV. Call once, after BEConfig::init; until then nothing is printed.
    /// If the log file exists, enableFileLog stays as it is, even when BEConfig::LOG_TO_FILE is 0.
    /// If not, the file is created, and enableFileLog follows LOG_TO_FILE (0 when the file cannot
    /// be created). Always returns 0.
    static int init();

    /// Enables or disables the group `group` (taken modulo 32) in mask.
    static void setGroup(LOG_GROUP_T group, bool enable);

    /// Logs a printf-style message. `format` must end in a line feed: print does not add
    /// one. The message is cut after 1023 characters, and empty for a null format. A group of 19 or
    /// more prints an empty name. A log file that cannot be opened is reported on standard output,
    /// each time. Settings, mask and names are read at every call, and the file is open only during
    /// the call, so it may be rotated or removed.
    static void print(LOG_TYPE_T level, LOG_GROUP_T group, char const* format, ...)
        __attribute__((format(printf, 3, 4)));

    static int enableFileLog;              ///< 1: append to the log file as well; initially 1
    static char const* LogGroupNames[19];  ///< names of the groups, static strings
    static pthread_mutex_t lock;           ///< held while one line is written
    static unsigned int mask;              ///< bit n enables group n; initially 0
};

/// The library's SIGSEGV handler: does nothing and returns, so that the faulting instruction runs
/// again. Installed by Logger::init.
void be_sig_handler(int signal);

#pragma GCC visibility pop

#endif
