/**
 * @file
 * The library's log.
 *
 * One text line a message, in one file a process:
 *
 *     <directory>//CppBinding_<process id>_<name>.log
 *
 * | part | comes from |
 * |---|---|
 * | directory | "TEMP" if set, else "TMP" if set, else "."; set to an empty value counts as set |
 * | name | "MVHUB_CONFIG" if set, else "Morvenn" |
 *
 * By design: two slashes stand between directory and file. (Logger.PathHoldsTwoSlashes)
 *
 * The level comes from "MV_CPPBINDING_LOG_LEVEL": exactly OFF, ERROR, WARN, INFO or DEBUG; anything
 * else leaves it at WARN. It is read once, by the first message that passes the built-in WARN, or
 * by getInstance().
 *
 * By design: with DEBUG or INFO set, debug and info messages are dropped until the first warning or
 * error; with OFF set, the first warning or error is still written. An application that wants its
 * level from the start calls getInstance() first. (Logger.DebugIsDroppedUntilTheFirstWarning,
 * Logger.OffStillWritesTheFirstError)
 *
 * The file is created with mode 0600 and truncated; an existing symbolic link, hard link, foreign
 * file or anything but a regular file is refused like any file that cannot be opened: a note on
 * standard output, once, and logging is off. A failed write is ignored. Lines are not escaped: a
 * message that contains a line break spans lines, so do not trust the log's structure with foreign
 * texts. The four variables are ignored in a process that runs with raised privileges.
 *
 * At level DEBUG the log holds header texts, session ids and challenge texts; never a password.
 */
#ifndef MORVENN_NET_MVSERVERPROXY_UTIL_MVSERVERCPPBINDINGLOGGER_H
#define MORVENN_NET_MVSERVERPROXY_UTIL_MVSERVERCPPBINDINGLOGGER_H

#include <atomic>
#include <cstdio>
#include <string>

#include "morvenn/net/mvserverproxy/Export.h"

namespace Morvenn::Net::MvServerProxy::Util {

/**
 * The process-wide log. Use the static functions; build a message only behind the matching test:
 * @code
 * if (MvServerCppBindingLogger::isDebug()) {
 *     MvServerCppBindingLogger::debug("got " + describe(thing));
 * }
 * @endcode
 *
 * The instance and its file live until the process ends; every line is written and flushed at once.
 *
 * Thread rule: no lock is taken. Once one message has been written from one thread, threads may log
 * at the same time and lines stay whole.
 */
class MVCPP_API MvServerCppBindingLogger {
public:
    /** Also the filter: a message is written when the current level is its own or higher. */
    enum LoggingLevel {
        LevelOff = 0,
        LevelError = 1,
        LevelWarn = 2,
        LevelInfo = 3,
        LevelDebug = 4
    };

    /** The one instance, null without memory; the first call creates it and reads the level. */
    static MvServerCppBindingLogger* getInstance();

    /** Writes a line at the function's level when the current level admits it. @{ */
    static void error(const std::string& text);
    static void warn(const std::string& text);
    static void info(const std::string& text);
    static void debug(const std::string& text);
    /** @} */

    /** Whether the current level admits messages of the level in the name. @{ */
    static bool isError() { return admits(LevelError); }
    static bool isWarn() { return admits(LevelWarn); }
    static bool isInfo() { return admits(LevelInfo); }
    static bool isDebug() { return admits(LevelDebug); }
    /** @} */

    /** Singleton by convention: an object of one's own opens the same file anew. */
    MvServerCppBindingLogger();
    /** Copies share the open file. @{ */
    MvServerCppBindingLogger(const MvServerCppBindingLogger& other);
    MvServerCppBindingLogger& operator=(const MvServerCppBindingLogger& other);
    /** @} */
    /** Leaves the file open. */
    ~MvServerCppBindingLogger();

    /**
     * Writes one line, label, ": ", @p text and a line feed, without testing the level.
     * @param level 0 to 4; other values are not allowed.
     * @param text  written whole, zero bytes included.
     * By design: the label of LevelOff is one character shorter than the others.
     * (Logger.LabelsAreExact)
     */
    void log(LoggingLevel level, std::string text);

private:
    static bool admits(LoggingLevel level) {
        return s_level.load(std::memory_order_relaxed) >= level;
    }
    MVCPP_LOCAL static void write(LoggingLevel level, const std::string& text);
    MVCPP_LOCAL static void readLevel();
    MVCPP_LOCAL bool open();

    static std::atomic<LoggingLevel> s_level;
    MVCPP_LOCAL static std::atomic<MvServerCppBindingLogger*> s_singlton;

    std::FILE* m_file;
    std::string m_processId;
};

}  // namespace Morvenn::Net::MvServerProxy::Util

#endif  // MORVENN_NET_MVSERVERPROXY_UTIL_MVSERVERCPPBINDINGLOGGER_H
