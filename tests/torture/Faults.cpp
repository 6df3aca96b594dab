#include "tests/torture/Faults.h"

#include <climits>
#include <string>

#include "tests/torture/Run.h"

namespace Torture {
namespace {

const std::vector<int>& resultsOf(Function function) {
    static const std::vector<int> kInit = {1,     INT_MAX, -1,    -42,   -1001,
                                           -1002, -1003,   -5005, -5006, INT_MIN};
    static const std::vector<int> kTerm = {5, -1, -42, -1001, -1002, -1003, -5005, INT_MIN};
    static const std::vector<int> kSend = {0,    1,     5,     INT_MAX, -1,    -2,    -42,
                                           -246, -1001, -1002, -1003,   -5005, -5006, INT_MIN};
    static const std::vector<int> kReceive = {
        0,  1,  5,   15,   16,    19,    255,   kBlockSize, kBlockSize + 1, 20000,  INT_MAX,
        -1, -2, -42, -246, -1001, -1002, -1003, -5005,      -5006,          INT_MIN};
    static const std::vector<int> kComplete = {0, 5, -1, -1001};
    static const std::vector<int> kNone;
    switch (function) {
        case Function::Init:
            return kInit;
        case Function::Term:
            return kTerm;
        case Function::Send:
        case Function::SendNoAck:
        case Function::SendEOF:
            return kSend;
        case Function::Receive:
            return kReceive;
        case Function::Complete:
            return kComplete;
        default:
            return kNone;
    }
}

Fault faultAt(std::size_t call, int result) {
    Fault fault;
    fault.call = call;
    fault.answer.result = result;
    return fault;
}

}  // namespace

std::vector<Function> goldenCalls(const Scenario& scenario, bool singleBytes, bool initialised) {
    const Run golden = predict(scenario, scenario.tape(singleBytes), false, initialised);
    std::vector<Function> functions;
    for (const auto& call : golden.calls.entries()) {
        functions.insert(functions.end(), call.count, call.function);
    }
    return functions;
}

std::vector<Fault> faultsOf(Function function, std::size_t call) {
    std::vector<Fault> faults;
    for (const int result : resultsOf(function)) {
        faults.push_back(faultAt(call, result));
    }
    if (function != Function::Complete) {  // called from destructors, which nothing may leave
        Fault escape = faultAt(call, 0);
        escape.answer.escapes = true;
        faults.push_back(escape);
    }
    if (function == Function::Receive) {
        Fault idle = faultAt(call, 0);
        idle.repeat = 1000;
        faults.push_back(idle);
        Fault shorter = faultAt(call, 0);
        shorter.shortens = true;
        faults.push_back(shorter);
        Fault full = faultAt(call, kBlockSize);
        full.answer.bytes = "\nhost:x\nA=b\n\n";
        faults.push_back(full);
    }
    return faults;
}

const std::vector<LastError>& lastErrors() {
    static const std::vector<LastError> kRows = {{std::nullopt, 0},
                                                 {std::nullopt, -1},
                                                 {"the proxy's text", 0},
                                                 {"dropped", -1},
                                                 {"", 0},
                                                 {std::string(65536, 'm'), 0},
                                                 {"not UTF-8: \xFF\xC3", 0},
                                                 {"two\r\nlines", 0}};
    return kRows;
}

std::vector<std::size_t> failingCalls(std::size_t calls, std::size_t most) {
    std::vector<std::size_t> numbers;
    const std::size_t step = calls <= most ? 1 : calls / most;
    for (std::size_t number = 1; number <= calls; ++number) {
        const bool isEdge = number <= most / 3 || number + most / 3 > calls;
        if (step == 1 || isEdge || number % step == 0) {
            numbers.push_back(number);
        }
    }
    return numbers;
}

}  // namespace Torture
