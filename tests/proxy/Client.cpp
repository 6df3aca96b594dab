#include "Client.h"

#include <algorithm>
#include <array>
#include <cstdlib>

#include "morvenn/net/mvserverproxy/proxy/MvServerProxy.h"

namespace Morvenn::Net::MvServerProxy::Proxy::Test {
namespace {

constexpr std::size_t kChunk = 4096;

bool failed(Reply& reply, int result) {
    if (result < 0) {
        reply.code = result;
        reply.error = lastError();
        MvServerProxy_Complete();
    }
    return result < 0;
}

// The chunks of the body, as a client with a stream hands them over.
bool sendBody(Reply& reply, const std::string& body, std::size_t& position) {
    int result = 1;
    while (position < body.size() && result > 0) {
        const std::string chunk = body.substr(position, kChunk);
        position += chunk.size();
        result = MvServerProxy_SendNoAck(chunk.c_str());
    }
    return !failed(reply, result) && !failed(reply, MvServerProxy_SendEOF());
}

bool answer(Reply& reply, const Answers& answers) {
    std::array<char, MV_PROXY_BLOCK_SIZE> block{};
    const int length = MvServerProxy_Receive(block.data());
    if (failed(reply, length)) {
        return false;
    }
    reply.challenges.emplace_back(block.data(), static_cast<std::size_t>(length));
    const std::size_t which = std::min(reply.challenges.size(), answers.size()) - 1;
    return !failed(reply, MvServerProxy_SendNoAck(answers.at(which).c_str()));
}

}  // namespace

int start(Settings settings) {
    for (const char* name :
         {"MV_SERVERPROXY_HUB", "MV_SERVERPROXY_CA_FILE", "MV_SERVERPROXY_CONNECT_TIMEOUT_MS",
          "MV_SERVERPROXY_IDLE_TIMEOUT_MS", "MV_SERVERPROXY_TOTAL_TIMEOUT_MS",
          "MV_SERVERPROXY_EXPECT_TIMEOUT_MS", "MV_SERVERPROXY_SPOOL_LIMIT",
          "MV_SERVERPROXY_HEADER_LIMIT", "MV_SERVERPROXY_TRACE", "http_proxy", "https_proxy",
          "HTTPS_PROXY", "all_proxy", "ALL_PROXY", "no_proxy", "NO_PROXY"}) {
        ::unsetenv(name);
    }
    for (const auto& [name, value] : settings) {
        ::setenv(name, value.c_str(), 1);
    }
    return MvServerProxy_Init(std::malloc, std::free);
}

void stop() {
    MvServerProxy_Term();
}

std::string lastError() {
    char* message = nullptr;
    MvServerProxy_GetLastError(&message);
    return message == nullptr ? "" : message;
}

std::string headerText(const std::string& url, const std::string& more) {
    return more + "Server-Url=" + url + "\r\n\r\n";
}

std::string Reply::value(const std::string& name) const {
    const std::string lines = "\n" + header;
    const auto begin = lines.find("\n" + name + "=");
    if (begin == std::string::npos) {
        return "<none>";
    }
    const auto value = begin + name.size() + 2;
    return lines.substr(value, lines.find('\n', value) - value);
}

std::string answerText(const std::string& user, const std::string& password,
                       const std::string& domain) {
    return "user:" + user + "\r\npassword:" + password + "\r\ndomain:" + domain + "\r\n\r\n";
}

void readResponse(Reply& reply) {
    std::array<char, MV_PROXY_BLOCK_SIZE> block{};
    std::string all;
    int count = MvServerProxy_Receive(block.data());
    for (; count > 0; count = MvServerProxy_Receive(block.data())) {
        all.append(block.data(), static_cast<std::size_t>(count));
    }
    reply.end = count;
    if (count < -1) {
        failed(reply, count);
    }
    const auto empty = all.compare(0, 1, "\n") == 0 ? 0 : all.find("\n\n") + 1;
    reply.header = all.substr(0, empty + 1);
    reply.body = all.substr(std::min(all.size(), empty + 1));
    MvServerProxy_Complete();
}

Reply sendStream(const std::string& header, const std::string& body, const Answers& answers) {
    Reply reply;
    std::array<char, MV_PROXY_BLOCK_SIZE> block{};
    if (failed(reply, MvServerProxy_SendNoAck(header.c_str())) ||
        failed(reply, MvServerProxy_SendEOF())) {
        return reply;
    }
    std::size_t position = 0;
    for (;;) {
        const int instruction = MvServerProxy_Receive(block.data());
        if (failed(reply, instruction)) {
            return reply;
        }
        reply.instructions.push_back(instruction);
        if (instruction == MV_INSTRUCTION_RESPONSE_READY) {
            break;
        }
        const bool goesOn = instruction == MV_INSTRUCTION_SEND_BODY
                                ? sendBody(reply, body, position)
                                : answer(reply, answers);
        if (!goesOn) {
            return reply;
        }
    }
    readResponse(reply);
    return reply;
}

Reply sendText(const std::string& header, const std::string& body) {
    Reply reply;
    if (!failed(reply, MvServerProxy_Send((header + body).c_str())) &&
        !failed(reply, MvServerProxy_SendEOF())) {
        readResponse(reply);
    }
    return reply;
}

Reply loadDirectory(const std::string& selector) {
    Reply reply;
    std::array<char, MV_PROXY_BLOCK_SIZE> block{};
    if (failed(reply, MvServerProxy_SendNoAck(("getEnv:" + selector + "\r\n\r\n").c_str())) ||
        failed(reply, MvServerProxy_SendEOF())) {
        return reply;
    }
    int count = MvServerProxy_Receive(block.data());
    for (; count > 0; count = MvServerProxy_Receive(block.data())) {
        reply.body.append(block.data(), static_cast<std::size_t>(count));
    }
    reply.end = count;
    if (count < -1) {
        failed(reply, count);
    }
    MvServerProxy_Complete();
    return reply;
}

std::string pattern(std::size_t size) {
    std::string text(size, '\0');
    unsigned state = 12345;
    for (char& c : text) {
        state = state * 1103515245U + 12345U;
        c = static_cast<char>('0' + (state >> 16U) % 75U);
    }
    return text;
}

}  // namespace Morvenn::Net::MvServerProxy::Proxy::Test
