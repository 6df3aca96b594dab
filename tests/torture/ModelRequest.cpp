#include <algorithm>

#include "tests/reference/Inflation.h"
#include "tests/torture/Model.h"

namespace Torture {
namespace {

constexpr std::size_t kChunk = 4096;

std::string valueOf(const Reference::HeaderMap& headers, const std::string& name) {
    const auto header = headers.find(name);
    return header == headers.end() ? std::string() : header->second;
}

}  // namespace

std::string ModelRequest::run(std::string& session, bool isInitialised) {
    if (!isInitialised) {
        m_base.init();
    }
    if (!session.empty()) {
        headers.emplace("SessionID", session);
    }
    if (hasTextBody) {
        sendText();
    } else {
        sendStream();
    }
    m_base.info("Now receiving the response");
    readHead(session);
    m_handedOver = true;
    std::string response;
    if (reading == Reading::Execute) {
        readBody(response);
        m_base.debug("Received the response. The size is :-" + std::to_string(response.size()) +
                     "bytes");
        return response;
    }
    try {
        readBody(response);
        return response + "|end";
    } catch (const Thrown&) {
        return response + "|bad";
    } catch (const ProxyEscape&) {
        return response + "|bad";
    }
}

void ModelRequest::sendText() {
    m_base.checked(Function::Send, Reference::headerText(headers) + body);
    m_base.checked(Function::SendEOF);
}

void ModelRequest::sendStream() {
    const std::string text = Reference::headerText(headers);
    m_base.debug("Encoded Headers");
    m_base.debug(text);
    m_base.checked(Function::SendNoAck, text);
    m_base.checked(Function::SendEOF);
    int code = m_base.checked(Function::Receive);
    while (code != 18 && code > 0) {
        if (code != 16 && code != 17) {
            throw Spinning{};
        }
        if (code == 17) {
            code = challenge();
        }
        if (code == 16) {
            code = sendBody();
        }
    }
    if (code < 0) {
        m_base.failStatus(code);
    }
}

int ModelRequest::challenge() {
    m_base.info("Credential challenge by Forward Proxy. Credential Call back invoked");
    if (m_scenario.provider == Provider::None) {
        m_base.error("No credential Provider available");
        ModelBase::raise("MSPException", 0, "No credential Provider available");
    }
    const Answer answer = m_base.receive();
    if (answer.result < 0) {
        m_base.error("Invalid response challenge recieved");
        ModelBase::raise("MSPProtocolException", 0, "Invalid response challenge recieved");
    }
    if (answer.result > kBlockSize) {
        m_base.failTooLong(answer.result);
    }
    // The buffer is cleared and one byte longer than a block.
    std::string buffer = answer.block();
    buffer.resize(kBlockSize + 1, '\0');
    m_base.debug("Credential Callback response");
    m_base.debug(buffer.c_str());
    const Reference::Challenge scope =
        Reference::challenge(buffer.substr(0, static_cast<std::size_t>(answer.result) + 1));
    m_scopes += "<" + scope.host + "|" + scope.port + "|" + scope.realm + ">";

    const char kNotSupplied[] = " Credentials Not supplied by credential Provider";
    switch (m_scenario.provider) {
        case Provider::Throws:
            throw Thrown{"int " + std::to_string(kRefusalType), {}, false};
        case Provider::Refuses:
            m_base.error(kNotSupplied);
            ModelBase::raise("MSPRuntimeException", kRefusalType, kRefusal);
        case Provider::GivesNull:
            m_base.error(kNotSupplied);
            m_base.error(kNotSupplied);
            ModelBase::raise("MSPRuntimeException", 0, kNotSupplied);
        default:
            break;
    }
    m_base.debug("Credentials Provided. wont be logged due to security reasons");
    m_base.checked(Function::SendNoAck, Reference::challengeAnswer(kUser, kPassword, kDomain));
    return m_base.receive().result;
}

int ModelRequest::sendBody() {
    int result = 0;
    std::size_t size = 0;
    do {
        size = m_bodyEnded ? 0 : std::min(kChunk, body.size() - m_sent);
        m_bodyEnded = m_bodyEnded || size < kChunk;
        if (size > 0) {
            m_base.debug("Sending a part of Request Body Now");
            m_base.debug("The size of which is :- " + std::to_string(size) + " bytes");
            result = m_base.call(Function::SendNoAck, body.substr(m_sent, size)).result;
            m_sent += size;
        }
    } while (!m_bodyEnded && size > 0 && result >= 1);
    if (result < 0) {
        m_base.failStatus(result);
    }
    m_base.checked(Function::SendEOF);
    const int code = m_base.receive().result;
    m_base.info("Completed sending the request body!\n");
    return code;
}

// A byte, or the proxy's result when it had none to give; both are appended to a line alike.
int ModelRequest::headByte() {
    if (m_block.empty()) {
        const Answer answer = m_base.receive();
        if (answer.result <= 0) {
            return answer.result;
        }
        if (answer.result > kBlockSize) {
            m_base.failTooLong(answer.result);
        }
        m_block = answer.block().substr(0, static_cast<std::size_t>(answer.result));
    }
    const int byte = static_cast<unsigned char>(m_block[0]);
    m_block.erase(0, 1);
    return byte;
}

void ModelRequest::readHead(std::string& session) {
    for (int byte = headByte(); byte != '\n'; byte = headByte()) {
        std::string line;
        for (; byte != '\n'; byte = headByte()) {
            line.push_back(static_cast<char>(byte));
        }
        Reference::enterHeaderLine(m_responseHeaders, line);
    }
    session = decoded(valueOf(m_responseHeaders, "ResponseSessionID"));
}

// Empty at the end of the response.
std::string ModelRequest::nextBlock() {
    if (!m_block.empty()) {
        return std::move(m_block);
    }
    Answer answer = m_base.receive();
    while (answer.result == 0) {
        answer = m_base.receive();
    }
    if (answer.result < -1) {
        m_base.failStatus(answer.result);
    }
    if (answer.result > kBlockSize) {
        m_base.failTooLong(answer.result);
    }
    return answer.result < 0 ? std::string()
                             : answer.block().substr(0, static_cast<std::size_t>(answer.result));
}

void ModelRequest::readBody(std::string& response) {
    if (valueOf(m_responseHeaders, "ResponseHeaderCompression") == "true") {
        readCompressed(response);
    } else {
        readPlain(response);
    }
}

void ModelRequest::readPlain(std::string& response) {
    for (std::string block = nextBlock(); !block.empty(); block = nextBlock()) {
        response += block;
    }
}

void ModelRequest::readCompressed(std::string& response) {
    Reference::Inflation inflation([this] {
        std::string block = nextBlock();
        m_block.clear();
        return block;
    });
    for (;;) {
        const std::string portion = inflation.next();
        if (inflation.status() != 0 && inflation.status() != 1) {
            m_base.failLocal(Reference::zlibMessage(inflation.status()));
        }
        if (portion.empty()) {
            return;
        }
        response += portion;
    }
}

}  // namespace Torture
