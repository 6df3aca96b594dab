// One request and its answer, between the HTTP library and a handler.
//
// Lives on its connection's thread from the request header to the end of the answer.
#pragma once

#include "Faults.h"
#include "Refusal.h"
#include "Server.h"

struct MHD_Connection;
struct MHD_Response;

namespace Morvenn::Net::MvServerProxy::Hub {

class Exchange {
public:
    Exchange(Server& server, MHD_Connection* connection, const char* method, const char* path);
    ~Exchange();
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;

    // The header is there, the body is not. False: close the connection.
    bool begin();

    // A piece of the body. False: close the connection.
    bool take(const char* bytes, std::size_t count);

    // The body has ended: answers. False: close the connection.
    bool finish();

    // The answer has left, or the connection broke off before (`whole` false).
    void completed(bool whole);

private:
    void route();
    bool answersBeforeBody() const;
    Answer makeAnswer();
    Answer refusalAnswer() const;
    bool deliver();
    MHD_Response* makeResponse();
    void resetConnection() const;

    // Runs `step`; what it throws becomes the refusal. False when it threw.
    template <typename Step>
    bool attempt(Step step);

    static std::ptrdiff_t readBody(void* exchange, std::uint64_t, char* to, std::size_t room);

    Server& m_server;
    MHD_Connection* const m_connection;
    const std::chrono::steady_clock::time_point m_begun;
    Request m_request;
    std::optional<FaultPlan> m_faults;
    HandlerPtr m_handler;
    std::optional<Refusal> m_refusal;
    Answer m_answer;
    std::uint64_t m_received = 0;
    std::uint64_t m_dropped = 0;  // of that, after the refusal
    std::uint64_t m_sent = 0;
};

}  // namespace Morvenn::Net::MvServerProxy::Hub
