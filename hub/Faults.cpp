#include "Faults.h"

#include "FaultyGzip.h"
#include "Refusal.h"

#include <algorithm>
#include <charconv>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

constexpr unsigned kLongestPauseMs = 600000;
constexpr std::size_t kLargestHeader = 1000000;

[[noreturn]] void refuse(const std::string& name, const std::string& value,
                         const std::string& expected) {
    throw Refusal(400, "fault \"" + name + "\" takes " + expected + ", not \"" + value + "\"");
}

// The value as a number from `least` to `most`.
template <typename Number>
Number numberIn(const std::string& name, const std::string& value, Number least, Number most) {
    Number number = 0;
    const char* const end = value.data() + value.size();
    const auto [stop, error] = std::from_chars(value.data(), end, number);
    if (error != std::errc() || stop != end || number < least || number > most) {
        refuse(name, value,
               "a number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return number;
}

unsigned pauseOf(const std::string& name, const std::string& value) {
    return numberIn<unsigned>(name, value, 0, kLongestPauseMs);
}

std::uint64_t bytesOf(const std::string& name, const std::string& value) {
    return numberIn<std::uint64_t>(name, value, 0, UINT64_MAX);
}

std::size_t headerOf(const std::string& name, const std::string& value) {
    return numberIn<std::size_t>(name, value, 1, kLargestHeader);
}

void setReset(FaultPlan& plan, const std::string& name, const std::string& value) {
    if (value.empty()) {
        plan.reset = true;
        return;
    }
    plan.resetAfter = bytesOf(name, value);
}

void setGzip(FaultPlan& plan, const std::string& name, const std::string& value) {
    if (!isFaultyGzip(value)) {
        refuse(name, value, faultyGzipNames());
    }
    plan.gzip = value;
}

void setRedirect(FaultPlan& plan, const std::string& name, const std::string& value) {
    if (std::any_of(value.begin(), value.end(), [](char c) { return c > 0 && c <= ' '; })) {
        refuse(name, value, "a URL without blanks");
    }
    plan.redirectTarget = value;
}

using Text = const std::string&;

struct Fault {
    const char* name;
    const char* usual;  // the value when the request gives none
    void (*set)(FaultPlan& plan, Text name, Text value);
};

constexpr Fault kFaults[] = {
    {"early", "413",
     [](FaultPlan& p, Text n, Text v) { p.earlyStatus = numberIn<unsigned>(n, v, 400, 599); }},
    {"delay", "1000", [](FaultPlan& p, Text n, Text v) { p.delayMs = pauseOf(n, v); }},
    {"dribble", "10", [](FaultPlan& p, Text n, Text v) { p.dribbleMs = pauseOf(n, v); }},
    {"cut", "0", [](FaultPlan& p, Text n, Text v) { p.cutAfter = bytesOf(n, v); }},
    {"reset", "", &setReset},
    {"close", "", [](FaultPlan& p, Text, Text) { p.close = true; }},
    {"length", "10",
     [](FaultPlan& p, Text n, Text v) {
         p.lengthError = numberIn<std::int64_t>(n, v, -1000000, 1000000);
     }},
    {"headers", "20000", [](FaultPlan& p, Text n, Text v) { p.headerBytes = headerOf(n, v); }},
    {"headerline", "20000", [](FaultPlan& p, Text n, Text v) { p.headerLine = headerOf(n, v); }},
    {"gzip", "garbage", &setGzip},
    {"redirect", "/echo", &setRedirect},
};

std::string knownFaults() {
    std::string names;
    for (const Fault& fault : kFaults) {
        names += (names.empty() ? "" : ", ") + std::string(fault.name);
    }
    return names;
}

void add(FaultPlan& plan, const std::string& member) {
    const std::size_t colon = member.find(':');
    const std::string name = member.substr(0, colon);
    for (const Fault& fault : kFaults) {
        if (name == fault.name) {
            fault.set(plan, name,
                      colon == std::string::npos ? fault.usual : member.substr(colon + 1));
            return;
        }
    }
    throw Refusal(400, "no fault \"" + name + "\"; the hub knows " + knownFaults());
}

std::string wantedFaults(const Request& request) {
    const std::string header = request.headerText("Hub-Fault");
    const auto argument = request.query.find("fault");
    return header.empty() && argument != request.query.end() ? argument->second : header;
}

}  // namespace

std::optional<FaultPlan> requestedFaults(const Request& request, bool allowed) {
    const std::string list = wantedFaults(request);
    if (list.empty()) {
        return std::nullopt;
    }
    if (!allowed) {
        throw Refusal(403, "the request asks for a fault; start mvhub with --faults");
    }
    FaultPlan plan;
    std::size_t begin = 0;
    while (begin <= list.size()) {
        const std::size_t end = std::min(list.find(',', begin), list.size());
        add(plan, list.substr(begin, end - begin));
        begin = end + 1;
    }
    return plan;
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
