#include "Config.h"

#include <array>
#include <charconv>
#include <limits>
#include <string_view>

#include "Failure.h"
#include "TextTools.h"
#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy {
namespace {

struct NumberSetting {
    const char* variable;
    std::int64_t Config::*field;
    std::int64_t least;
    std::int64_t most;
    const char* unit;
};
constexpr std::int64_t kMostMs = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t kMostBytes = std::numeric_limits<std::int64_t>::max();
constexpr std::array<NumberSetting, 6> kNumbers{{
    {"MV_SERVERPROXY_CONNECT_TIMEOUT_MS", &Config::connectTimeoutMs, 1, kMostMs, "milliseconds"},
    {"MV_SERVERPROXY_IDLE_TIMEOUT_MS", &Config::idleTimeoutMs, 1, kMostMs, "milliseconds"},
    {"MV_SERVERPROXY_TOTAL_TIMEOUT_MS", &Config::totalTimeoutMs, 0, kMostMs, "milliseconds"},
    {"MV_SERVERPROXY_EXPECT_TIMEOUT_MS", &Config::expectTimeoutMs, 1, kMostMs, "milliseconds"},
    {"MV_SERVERPROXY_SPOOL_LIMIT", &Config::spoolLimit, 0, kMostBytes, "bytes"},
    {"MV_SERVERPROXY_HEADER_LIMIT", &Config::headerLimit, 1024, 16 * 1024 * 1024, "bytes"},
}};

struct TextSetting {
    const char* variable;
    std::string Config::*field;
};
constexpr std::array<TextSetting, 4> kTexts{{
    {"MV_SERVERPROXY_HUB", &Config::hub},
    {"MV_SERVERPROXY_CA_FILE", &Config::caFile},
    {"MV_SERVERPROXY_TRACE", &Config::traceFile},
    {"TMPDIR", &Config::spoolFolder},
}};

std::int64_t readNumber(const NumberSetting& setting, std::string_view text) {
    std::int64_t number = 0;
    const char* last = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), last, number);
    if (error != std::errc() || end != last || number < setting.least || number > setting.most) {
        throw Failure{MV_STATUS_RUNTIME, std::string(setting.variable) + " is \"" + oneLine(text) +
                                             "\"; give a whole number of " + setting.unit +
                                             " from " + std::to_string(setting.least) + " to " +
                                             std::to_string(setting.most)};
    }
    return number;
}

void checkHub(Config& config) {
    while (!config.hub.empty() && config.hub.back() == '/') {
        config.hub.pop_back();
    }
    try {
        config.hubOrigin = targetUrl(config.hub).origin();
    } catch (const Failure& failure) {
        throw Failure{MV_STATUS_RUNTIME, "MV_SERVERPROXY_HUB cannot be used: " + failure.text +
                                             "; the hub is given as http://127.0.0.1:16064"};
    }
}

}  // namespace

Config readConfig(const Variables& variables) {
    Config config;
    for (const TextSetting& setting : kTexts) {
        const char* value = variables(setting.variable);
        if (value != nullptr && *value != '\0') {
            config.*setting.field = value;
        }
    }
    for (const NumberSetting& setting : kNumbers) {
        const char* value = variables(setting.variable);
        if (value != nullptr && *value != '\0') {
            config.*setting.field = readNumber(setting, value);
        }
    }
    checkHub(config);
    config.forwardProxies = forwardProxies(variables);
    return config;
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy
