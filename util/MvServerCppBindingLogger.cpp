#include "morvenn/net/mvserverproxy/util/MvServerCppBindingLogger.h"

#include <exception>
#include <iostream>
#include <new>
#include <string_view>

#include "util/Platform.h"

namespace Morvenn::Net::MvServerProxy::Util {

namespace {

struct Level {
    std::string_view name;   // as the environment variable spells it
    std::string_view label;  // as it stands at the start of a line
};

// Indexed by LoggingLevel. The labels are part of the log's format and are compared byte for byte.
// By design: OFF fills four characters, the others five. (Logger.LabelsAreExact)
constexpr Level kLevels[] = {
    {"OFF", " [OFF ] "},   {"ERROR", " [ERROR] "}, {"WARN", " [WARN ] "},
    {"INFO", " [INFO ] "}, {"DEBUG", " [DEBUG] "},
};

constexpr char kLevelVariable[] = "MV_CPPBINDING_LOG_LEVEL";
constexpr char kNameVariable[] = "MVHUB_CONFIG";
constexpr const char* kDirectoryVariables[] = {"TEMP", "TMP"};

std::string logDirectory() {
    for (const char* variable : kDirectoryVariables) {
        if (const char* value = Internal::environmentValue(variable)) {
            return value;
        }
    }
    return ".";
}

std::string logFileName(const std::string& processId) {
    const char* name = Internal::environmentValue(kNameVariable);
    return "/CppBinding_" + processId + "_" + (name != nullptr ? name : "Morvenn") + ".log";
}

void noteOpenFailure(const std::string& path) {
    try {
        std::cout << "Could not open the log file:-" << path << " Logging hence will be disabled";
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): the log fails nobody
    }
}

}  // namespace

std::atomic<MvServerCppBindingLogger::LoggingLevel> MvServerCppBindingLogger::s_level{LevelWarn};
std::atomic<MvServerCppBindingLogger*> MvServerCppBindingLogger::s_singlton{nullptr};

MvServerCppBindingLogger::MvServerCppBindingLogger() : m_file(nullptr) {}
MvServerCppBindingLogger::MvServerCppBindingLogger(const MvServerCppBindingLogger&) = default;
MvServerCppBindingLogger& MvServerCppBindingLogger::operator=(const MvServerCppBindingLogger&) =
    default;
MvServerCppBindingLogger::~MvServerCppBindingLogger() = default;

MvServerCppBindingLogger* MvServerCppBindingLogger::getInstance() {
    if (MvServerCppBindingLogger* instance = s_singlton.load(std::memory_order_acquire)) {
        return instance;
    }
    readLevel();
    auto* created = new (std::nothrow) MvServerCppBindingLogger;
    MvServerCppBindingLogger* current = nullptr;
    if (s_singlton.compare_exchange_strong(current, created)) {
        return created;  // never released: it lives until the process ends
    }
    delete created;  // another thread was first
    return current;
}

void MvServerCppBindingLogger::readLevel() {
    const char* value = Internal::environmentValue(kLevelVariable);
    if (value == nullptr) {
        return;
    }
    for (int level = LevelOff; level <= LevelDebug; ++level) {
        if (kLevels[level].name == value) {
            s_level.store(static_cast<LoggingLevel>(level), std::memory_order_relaxed);
        }
    }
}

void MvServerCppBindingLogger::write(LoggingLevel level, const std::string& text) {
    if (!admits(level)) {
        return;
    }
    // By design: the level is read only here, after the test, so the first message that passes the
    // built-in level is written whatever the variable says. (Logger.OffStillWritesTheFirstError)
    if (MvServerCppBindingLogger* instance = getInstance()) {
        instance->log(level, text);
    }
}

void MvServerCppBindingLogger::error(const std::string& text) {
    write(LevelError, text);
}
void MvServerCppBindingLogger::warn(const std::string& text) {
    write(LevelWarn, text);
}
void MvServerCppBindingLogger::info(const std::string& text) {
    write(LevelInfo, text);
}
void MvServerCppBindingLogger::debug(const std::string& text) {
    write(LevelDebug, text);
}

void MvServerCppBindingLogger::log(LoggingLevel level, std::string text) {
    if (m_file == nullptr && !open()) {
        return;
    }
    const std::string_view label = kLevels[level].label;
    std::string line;
    line.reserve(label.size() + 2 + text.size() + 1);
    line.append(label).append(": ").append(text).append("\n");
    // Results unused by design: a full disk does not fail the caller. (Logger.FailedWriteIsIgnored)
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), m_file));
    static_cast<void>(std::fflush(m_file));
}

bool MvServerCppBindingLogger::open() {
    m_processId = Internal::processId();
    // By design: the name begins with a slash of its own, so the path holds two.
    // (Logger.PathHoldsTwoSlashes)
    const std::string path = logDirectory() + "/" + logFileName(m_processId);
    m_file = Internal::createPrivateFile(path);
    if (m_file == nullptr) {
        s_level.store(LevelOff, std::memory_order_relaxed);
        noteOpenFailure(path);
    }
    return m_file != nullptr;
}

}  // namespace Morvenn::Net::MvServerProxy::Util
