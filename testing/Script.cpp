#include "testing/Script.h"

#include <algorithm>
#include <ostream>
#include <stdexcept>
#include <utility>

#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"
#include "testing/Bytes.h"

namespace Morvenn::Net::MvServerProxy::TestKit {

Step Step::times(std::size_t count) const {
    Step step = *this;
    step.repeat = count;
    return step;
}

Step Step::claiming(int count) const {
    Step step = *this;
    step.result = count;
    return step;
}

Step Step::terminated(char byte) const {
    if (bytes.size() >= MV_PROXY_BLOCK_SIZE) {
        throw std::invalid_argument("no room for a terminator: the block fills the buffer");
    }
    Step step = *this;
    step.terminator = byte;
    return step;
}

Step Step::doing(std::function<void()> action) const {
    Step step = *this;
    step.hook = std::move(action);
    return step;
}

std::ostream& operator<<(std::ostream& out, const Step& step) {
    out << nameOf(step.function) << " -> ";
    if (step.generator) {
        out << "made by a function";
    } else {
        out << step.result;
    }
    if (!step.bytes.empty()) {
        out << ' ' << escaped(step.bytes, 60);
    }
    if (step.message) {
        out << ' ' << escaped(*step.message, 60);
    }
    if (step.repeat == Step::kForever) {
        out << ", for ever";
    } else if (step.repeat != 1) {
        out << ", " << step.repeat << " times";
    }
    return out;
}

Script::Script(std::initializer_list<Script> parts) {
    for (const Script& part : parts) {
        append(part);
    }
}

void Script::append(const Script& other) {
    m_steps.insert(m_steps.end(), other.m_steps.begin(), other.m_steps.end());
}

Step instruction(int code) {
    return gives(Function::Receive, code);
}

Step block(std::string bytes) {
    if (bytes.size() > MV_PROXY_BLOCK_SIZE) {
        throw std::invalid_argument("a block holds at most 16384 bytes, not " +
                                    std::to_string(bytes.size()) + "; use inBlocksOf");
    }
    Step step = gives(Function::Receive, static_cast<int>(bytes.size()));
    step.bytes = std::move(bytes);
    return step;
}

Step nothing(std::size_t times) {
    return gives(Function::Receive, 0).times(times);
}

Step end() {
    return gives(Function::Receive, MV_STATUS_END_OF_RESPONSE);
}

Step status(int code) {
    return gives(Function::Receive, code);
}

Step endless(std::function<std::string()> makeBlock) {
    Step step = gives(Function::Receive, 0).forever();
    step.generator = std::move(makeBlock);
    return step;
}

Script inBlocksOf(std::size_t size, const std::string& bytes) {
    if (size == 0) {
        throw std::invalid_argument("inBlocksOf: the size of a block is at least 1");
    }
    Script script;
    for (std::size_t at = 0; at < bytes.size(); at += size) {
        script.append(block(bytes.substr(at, size)));
    }
    return script;
}

Script inSingleBytes(const std::string& bytes) {
    return inBlocksOf(1, bytes);
}

Step gives(Function function, int result) {
    Step step;
    step.function = function;
    step.result = result;
    return step;
}

Step lastError(std::optional<std::string> message, int status) {
    Step step = gives(Function::GetLastError, status);
    step.message = std::move(message);
    return step;
}

}  // namespace Morvenn::Net::MvServerProxy::TestKit
