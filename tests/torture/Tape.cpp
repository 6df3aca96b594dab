#include "tests/torture/Tape.h"

#include <algorithm>
#include <utility>

namespace Torture {

std::string Answer::block() const {
    std::string content = bytes;
    const std::size_t claimed = static_cast<std::size_t>(std::clamp(result, 0, kBlockSize));
    if (content.size() < claimed) {
        content.resize(claimed, kPad);
    }
    return content;
}

Tape::Tape(std::vector<Answer> receives)
    : m_receives(std::make_shared<const std::vector<Answer>>(std::move(receives))) {}

Answer Tape::next(Function function) {
    ++m_number;
    for (Fault& fault : m_faults) {
        if (fault.repeat == 0 || m_number < fault.call) {
            continue;
        }
        --fault.repeat;
        if (fault.shortens) {
            Answer answer = scheduled(function);
            --answer.result;
            return answer;
        }
        return fault.answer;
    }
    return scheduled(function);
}

Answer Tape::scheduled(Function function) {
    switch (function) {
        case Function::Receive:
            if (m_received == m_receives->size()) {
                return {0, {}, true};
            }
            return (*m_receives)[m_received++];
        case Function::Send:
        case Function::SendNoAck:
            return {1, {}, false};
        case Function::GetLastError:
            return {m_lastError.status, {}, false};
        default:
            return {};
    }
}

}  // namespace Torture
