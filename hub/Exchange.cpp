#include "Exchange.h"

#include "Log.h"
#include "RequestGuard.h"

#include <microhttpd.h>

#include <array>
#include <charconv>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

constexpr std::size_t kBlock = 64 * 1024;

// Answers up to this size leave in one piece with their header.
constexpr std::uint64_t kSmallAnswer = 16 * 1024;

// A body up to this size is read before it is refused: a client that is still sending when the
// connection closes would lose the answer.
constexpr std::uint64_t kDroppedBody = 1024 * 1024;

MHD_Result addHeader(void* headers, MHD_ValueKind, const char* name, const char* value) {
    static_cast<std::vector<Header>*>(headers)->emplace_back(name, value != nullptr ? value : "");
    return MHD_YES;
}

MHD_Result addArgument(void* query, MHD_ValueKind, const char* name, const char* value) {
    (*static_cast<std::map<std::string, std::string>*>(query))[name] =
        value != nullptr ? value : "";
    return MHD_YES;
}

Request readRequest(MHD_Connection* connection, const char* method, const char* path) {
    Request request;
    request.method = method;
    request.path = path;
    MHD_get_connection_values(connection, MHD_HEADER_KIND, &addHeader, &request.headers);
    MHD_get_connection_values(connection, MHD_GET_ARGUMENT_KIND, &addArgument, &request.query);
    return request;
}

// The announced size of the body, 0 when none is announced.
std::uint64_t announcedBody(const Request& request) {
    const std::string text = request.headerText("Content-Length");
    std::uint64_t size = 0;
    std::from_chars(text.data(), text.data() + text.size(), size);
    return size;
}

MHD_Response* smallResponse(Source& body, std::uint64_t& sent) {
    std::array<char, kSmallAnswer> block;
    std::size_t size = 0;
    while (size < block.size()) {
        const auto count = body.read(block.data() + size, block.size() - size);
        if (count <= 0) {
            break;
        }
        size += static_cast<std::size_t>(count);
    }
    sent = size;
    return MHD_create_response_from_buffer(size, block.data(), MHD_RESPMEM_MUST_COPY);
}

}  // namespace

Exchange::Exchange(Server& server, MHD_Connection* connection, const char* method, const char* path)
    : m_server(server),
      m_connection(connection),
      m_begun(std::chrono::steady_clock::now()),
      m_request(readRequest(connection, method, path)) {
    m_server.exchangeBegins();
}

Exchange::~Exchange() {
    m_server.exchangeEnds();
}

bool Exchange::begin() {
    try {
        route();
    } catch (const Refusal& refusal) {
        m_refusal = refusal;
    }
    return m_refusal && refusesEarly() ? finish() : true;
}

void Exchange::route() {
    checkRequest(m_request, m_server.settings().limits, m_server.settings().loopbackNamesOnly);
    checkBodySize(announcedBody(m_request), m_server.settings().limits);
    m_handler = m_server.route()(m_request);
}

bool Exchange::refusesEarly() const {
    return m_request.header("Expect") != nullptr || announcedBody(m_request) > kDroppedBody;
}

void Exchange::take(const char* bytes, std::size_t count) {
    m_received += count;
    if (m_refusal) {
        return;
    }
    try {
        checkBodySize(m_received, m_server.settings().limits);
        m_handler->take(bytes, count);
    } catch (const Refusal& refusal) {
        m_refusal = refusal;
    }
}

bool Exchange::finish() {
    if (!m_refusal) {
        try {
            return deliver(m_handler->finish());
        } catch (const Refusal& refusal) {
            m_refusal = refusal;
        }
    }
    logLine(m_request.method + " " + m_request.path + " refused: " + m_refusal->what());
    return deliver(textAnswer(m_refusal->status(), std::string(m_refusal->what()) + "\n"));
}

bool Exchange::deliver(Answer answer) {
    m_answer = std::move(answer);
    const auto size = m_answer.body->size();
    MHD_Response* response = size && *size <= kSmallAnswer ? smallResponse(*m_answer.body, m_sent)
                                                           : MHD_create_response_from_callback(
                                                                 size.value_or(MHD_SIZE_UNKNOWN),
                                                                 kBlock, &readBody, this, nullptr);
    if (response == nullptr) {
        return false;
    }
    for (const auto& [name, value] : m_answer.headers) {
        MHD_add_response_header(response, name.c_str(), value.c_str());
    }
    const MHD_Result queued = MHD_queue_response(m_connection, m_answer.status, response);
    MHD_destroy_response(response);
    return queued == MHD_YES;
}

std::ptrdiff_t Exchange::readBody(void* exchange, std::uint64_t, char* to, std::size_t room) {
    auto* self = static_cast<Exchange*>(exchange);
    const auto count = self->m_answer.body->read(to, room);
    if (count == Source::kEnd) {
        return MHD_CONTENT_READER_END_OF_STREAM;
    }
    if (count == Source::kBroken) {
        return MHD_CONTENT_READER_END_WITH_ERROR;
    }
    self->m_sent += static_cast<std::uint64_t>(count);
    return count;
}

void Exchange::completed(bool whole) {
    const auto spent = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - m_begun);
    logExchange(m_request.method + " " + m_request.path + " " + std::to_string(m_answer.status) +
                ", " + std::to_string(m_received) + " bytes in, " + std::to_string(m_sent) +
                " out, " + std::to_string(spent.count()) + " ms" + (whole ? "" : ", broken off"));
    if (m_answer.afterwards) {
        m_answer.afterwards();
    }
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
