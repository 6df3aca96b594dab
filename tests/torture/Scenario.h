// The exchanges that are put to torture: what the application does, and what the proxy answers when
// nothing goes wrong.
#ifndef MORVENN_TESTS_TORTURE_SCENARIO_H
#define MORVENN_TESTS_TORTURE_SCENARIO_H

#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include "tests/torture/Tape.h"

namespace Torture {

enum class Kind {
    Execute,       ///< a request; the response as one string
    Send,          ///< a request; the response read from the stream byte by byte
    TwoOnSession,  ///< two requests, the second with the session id of the first
    Directory,     ///< the constructor, then all environments
    DirectoryTwice,
    DirectoryVersion,
    DirectoryUrl,
    SignBatch,
    SignOne,
    SignText,  ///< the form that takes one string
    Shutdown,
    CompleteText,
    CompleteNull,
    Simple,
    SimpleUnanswered,  ///< without a place for the response
    Lifecycle,         ///< init, term
    Unsent
};

enum class Provider { None, Gives, GivesNull, Refuses, Throws };

/// One answer to Receive; a response may come in blocks of one byte instead.
struct Part {
    int instruction = 0;
    std::string bytes;
    bool isResponse = false;
};

struct Scenario {
    const char* name;
    Kind kind = Kind::Execute;
    std::map<std::string, std::string> headers;
    bool hasTextBody = false;
    std::string body;
    Provider provider = Provider::None;
    std::vector<Part> parts;

    Tape tape(bool singleBytes) const;
};

/// googletest names a scenario when it prints one.
void PrintTo(const Scenario& scenario, std::ostream* out);

const std::vector<Scenario>& scenarios();

/// @name What the application's provider holds
/// @{
constexpr char kUser[] = "somebody";
constexpr char kPassword[] = "canary-1f7c-PaSsWoRd-c0ffee";
constexpr char kDomain[] = "a domain of some length";
constexpr int kRefusalType = 4711;
constexpr char kRefusal[] = "ask somebody else";
/// @}

}  // namespace Torture

#endif
