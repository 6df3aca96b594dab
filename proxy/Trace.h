// A line of JSON for each call of the eight functions, appended to a file.
//
// What a line may say is a closed list: times, sizes, states, results, the URL without user,
// password and query, the texts of failures, and the values of the few request headers named in the
// source. Bodies, answers to challenges and all other headers are sizes and counts only.
#ifndef MORVENN_PROXY_TRACE_H
#define MORVENN_PROXY_TRACE_H

#include <cstdint>
#include <string>
#include <string_view>

namespace Morvenn::Net::MvServerProxy::Proxy {

struct TraceEntry {
    const char* call = "";
    const char* stateBefore = "";
    const char* stateAfter = "";
    int result = 0;
    std::int64_t microseconds = 0;
    std::string_view text;  // what came in; only looked at when `isHeader`, else its size counts
    bool isHeader = false;
    std::string_view url;      // empty: not said
    int status = 0;            // of the response; 0: not said
    std::string_view failure;  // empty: not said
};

// The line for an entry, with its line end. `when` is in microseconds since 1970.
std::string traceLine(const TraceEntry& entry, std::int64_t when, int thread);

class Trace {
public:
    // Opens the file for appending, readable by its owner only. Throws Failure (-1003); a link is
    // refused.
    explicit Trace(const std::string& file);
    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;
    ~Trace();

    // A line that cannot be written is left out; the exchange does not suffer.
    void add(const TraceEntry& entry) const;

private:
    int m_file;
};

}  // namespace Morvenn::Net::MvServerProxy::Proxy

#endif
