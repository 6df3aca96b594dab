#include "Exchange.h"

#include "FaultyAnswer.h"
#include "Log.h"
#include "RequestGuard.h"
#include "RequestReader.h"

#include <microhttpd.h>
#include <sys/socket.h>

#include <array>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

constexpr std::size_t kBlock = 64 * 1024;

// Answers up to this size leave in one piece with their header.
constexpr std::uint64_t kSmallAnswer = 16 * 1024;

// So much of a refused body is read and dropped: a client that is still sending when the connection
// closes would lose the answer. Of one that is sent without its length the connection ends there.
constexpr std::uint64_t kDroppedBody = 1024 * 1024;

MHD_Response* smallResponse(Source& body, std::uint64_t& sent) {
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): 16 KiB of zeroes for every answer
    std::array<char, kSmallAnswer> block;
    std::size_t size = 0;
    std::ptrdiff_t count = 1;
    while (count > 0 && size < block.size()) {
        count = body.read(block.data() + size, block.size() - size);
        size += static_cast<std::size_t>(std::max<std::ptrdiff_t>(count, 0));
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

template <typename Step>
bool Exchange::attempt(Step step) {
    try {
        step();
        return true;
    } catch (const Refusal& refusal) {
        m_refusal = refusal;
    } catch (const std::exception& error) {
        m_refusal = Refusal(500, error.what());
    }
    return false;
}

bool Exchange::begin() {
    attempt([this] { route(); });
    return answersBeforeBody() ? finish() : true;
}

void Exchange::route() {
    const ServerSettings& settings = m_server.settings();
    checkRequest(m_request, settings.limits, settings.loopbackNamesOnly);
    m_faults = requestedFaults(m_request, settings.faults);
    if (m_faults && m_faults->earlyStatus) {
        throw Refusal(*m_faults->earlyStatus, "refused early, as the request asked for");
    }
    checkBodySize(announcedBody(m_request), settings.limits);
    m_handler = m_server.route()(m_request);
}

bool Exchange::answersBeforeBody() const {
    if (!m_refusal) {
        return false;
    }
    return (m_faults && m_faults->earlyStatus) || m_request.header("Expect") != nullptr ||
           announcedBody(m_request) > kDroppedBody;
}

bool Exchange::take(const char* bytes, std::size_t count) {
    m_received += count;
    if (m_refusal) {
        m_dropped += count;
        if (m_dropped <= kDroppedBody || announcedBody(m_request) > 0) {
            return true;
        }
        m_answer = refusalAnswer();
        return false;
    }
    attempt([&] {
        checkBodySize(m_received, m_server.settings().limits);
        m_handler->take(bytes, count);
    });
    return true;
}

bool Exchange::finish() {
    if (m_faults && m_faults->delayMs) {
        // The time that the client waits on purpose is no idle time.
        MHD_set_connection_option(m_connection, MHD_CONNECTION_OPTION_TIMEOUT, 0);
        m_server.stopSignal().pause(std::chrono::milliseconds(*m_faults->delayMs));
    }
    if (m_faults && m_faults->reset) {
        resetConnection();
        return false;
    }
    if (m_faults && m_faults->close) {
        return false;
    }
    m_answer = makeAnswer();
    return deliver();
}

Answer Exchange::makeAnswer() {
    Answer answer;
    const auto make = [&] {
        answer = m_handler->finish();
        if (m_faults) {
            applyFaults(answer, *m_faults, m_server.stopSignal(), [this] { resetConnection(); });
        }
    };
    return !m_refusal && attempt(make) ? std::move(answer) : refusalAnswer();
}

Answer Exchange::refusalAnswer() const {
    logLine(m_request.method + " " + m_request.path + " refused: " + m_refusal->what());
    return textAnswer(m_refusal->status(), std::string(m_refusal->what()) + "\n");
}

bool Exchange::deliver() {
    MHD_Response* response = makeResponse();
    if (response == nullptr) {
        return false;
    }
    for (const auto& [name, value] : m_answer.headers) {
        MHD_add_response_header(response, name.c_str(), value.c_str());
    }
    if (m_answer.declaredSize) {
        // A body that ends with the connection is the only one that gets no length from the
        // library.
        MHD_set_response_options(
            response,
            static_cast<MHD_ResponseFlags>(MHD_RF_INSANITY_HEADER_CONTENT_LENGTH |
                                           MHD_RF_HTTP_1_0_COMPATIBLE_STRICT),
            MHD_RO_END);
        MHD_add_response_header(response, "Content-Length",
                                std::to_string(*m_answer.declaredSize).c_str());
    }
    const MHD_Result queued = MHD_queue_response(m_connection, m_answer.status, response);
    MHD_destroy_response(response);
    return queued == MHD_YES;
}

MHD_Response* Exchange::makeResponse() {
    const auto size = m_answer.declaredSize ? std::nullopt : m_answer.body->size();
    if (m_answer.inOnePiece && size && *size <= kSmallAnswer) {
        return smallResponse(*m_answer.body, m_sent);
    }
    return MHD_create_response_from_callback(size.value_or(MHD_SIZE_UNKNOWN), kBlock, &readBody,
                                             this, nullptr);
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

// Dissolving the association of a connected socket sends a reset at once; closing it could end the
// connection in good order first.
void Exchange::resetConnection() const {
    const auto* info = MHD_get_connection_info(m_connection, MHD_CONNECTION_INFO_CONNECTION_FD);
    sockaddr nobody = {};
    nobody.sa_family = AF_UNSPEC;
    ::connect(info->connect_fd, &nobody, sizeof(nobody));
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
