#include "FaultyGzip.h"

#include "GzipSource.h"

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

using Text = const std::string&;

constexpr std::size_t kTrailer = 8;  // check value and size at the end of a member

std::string withWrongCheck(Text text) {
    std::string all = gzipped(text);
    all[all.size() - kTrailer] = static_cast<char>(all[all.size() - kTrailer] ^ 1);
    return all;
}

std::string withoutItsEnd(Text text) {
    const std::string all = gzipped(text);
    return all.substr(0, all.size() - kTrailer - 1);
}

struct Kind {
    const char* name;
    std::string (*make)(Text text);
};

constexpr Kind kKinds[] = {
    {"garbage", [](Text text) { return "this is not gzip: " + text; }},
    {"damaged", &withWrongCheck},
    {"cut", &withoutItsEnd},
    {"trailing", [](Text text) { return gzipped(text) + "rubbish after the end"; }},
    {"empty", [](Text) { return std::string(); }},
    // No fault: the text in two members, which many readers stop between.
    {"members",
     [](Text text) {
         return gzipped(text.substr(0, text.size() / 2)) + gzipped(text.substr(text.size() / 2));
     }},
};

}  // namespace

bool isFaultyGzip(const std::string& kind) {
    for (const Kind& known : kKinds) {
        if (kind == known.name) {
            return true;
        }
    }
    return false;
}

std::string faultyGzipNames() {
    std::string names;
    for (const Kind& known : kKinds) {
        names += (names.empty() ? "" : " or ") + std::string(known.name);
    }
    return names;
}

std::string faultyGzip(const std::string& kind, const std::string& text) {
    for (const Kind& known : kKinds) {
        if (kind == known.name) {
            return known.make(text);
        }
    }
    return text;
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
