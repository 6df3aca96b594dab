// A whole exchange over whatever a proxy may answer, against the model of the fault torture.
#include "fuzz/Fuzz.h"
#include "tests/torture/Run.h"

using namespace Torture;

namespace {

// A run that keeps memory by design keeps about 20 KB; a program that fuzzes has room for so many.
constexpr int kMostKeeping = 40000;

// Most answers are what a proxy gives; the rest is not.
Answer answerFrom(Fuzz::Input& input) {
    static constexpr int kResults[] = {16,    17,    18,    0,   -1,   -1001,
                                       -1002, -1003, -5005, -42, -246, kBlockSize + 1};
    constexpr std::size_t kKinds = 24;
    const std::size_t kind = input.byte() % kKinds;
    Answer answer;
    if (kind < sizeof kResults / sizeof kResults[0]) {
        answer.result = kResults[kind];
        return answer;
    }
    answer.bytes = input.take(input.byte());
    for (char& byte : answer.bytes) {
        byte = static_cast<char>(byte & 0x7F);  // the model decodes nothing beyond ASCII
    }
    answer.result = static_cast<int>(answer.bytes.size());
    return answer;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::Input input(data, size);
    const Scenario& scenario = scenarios()[input.byte() % scenarios().size()];
    static const Run warm = play(scenarios().front(), scenarios().front().tape(false));
    std::vector<Answer> answers;
    while (!input.empty()) {
        answers.push_back(answerFrom(input));
    }
    const Tape tape(answers);
    Run expected = predict(scenario, tape, false);
    if (expected.spins || expected.hoards) {
        return 0;
    }
    static int keeping = 0;
    if (expected.kept > 0 && ++keeping > kMostKeeping) {
        return 0;
    }
    const Run actual = play(scenario, tape);
    expected.kept = actual.kept;  // what the proxy's texts keep is counted by the torture
    const std::string words = difference(expected, actual);
    Fuzz::require(words.empty(), words.c_str());
    return 0;
}
