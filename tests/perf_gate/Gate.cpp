// The fixed exchanges of the performance gate.
//
//     mv_gate <case> count        prints the allocations of one exchange
//     mv_gate <case> run          runs it; callgrind collects inside mvGateMeasured() only
//
// Everything an exchange needs once, such as ICU's tables and the dynamic linker's work, is done by
// a first exchange outside the measurement.
#include <array>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <sstream>
#include <string>

#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"
#include "morvenn/net/mvserverproxy/client/ResponseStream.h"
#include "support/AllocationCount.h"
#include "support/ScriptedProxy.h"

namespace {

using Morvenn::Bench::Answer;
using Morvenn::Net::MvServerProxy::Client::MSPSession;
using Morvenn::Net::MvServerProxy::Client::MvServerRequest;
namespace Client = Morvenn::Net::MvServerProxy::Client;
namespace HeaderKeys = Client::HeaderKeys;

constexpr std::size_t kAnswerSize = 1024;

struct Header {
    const char* name;
    const char* value;
};
using Headers = std::array<Header, 10>;

constexpr Headers kShortHeaders{{
    {"Name-0", "value"},
    {"Name-1", "value"},
    {"Name-2", "value"},
    {"Name-3", "value"},
    {"Name-4", "value"},
    {"Name-5", "value"},
    {"Name-6", "value"},
    {"Name-7", "value"},
    {"Name-8", "value"},
    {"Name-9", "value"},
}};

constexpr Headers kLongHeaders{{
    {HeaderKeys::kServiceName, "accounts"},
    {HeaderKeys::kEnvName, "production"},
    {HeaderKeys::kOperationName, "list-open-items"},
    {HeaderKeys::kUseCompression, "false"},
    {HeaderKeys::kLogCorrelationId, "4f1c2a90-77d1-4d55-9d5e-0c1f"},
    {HeaderKeys::kUseCallback, "false"},
    {HeaderKeys::kLocale, "en_GB"},
    {HeaderKeys::kServerUrl, "http://server.example:8080/app"},
    {HeaderKeys::kContentType, "text/xml; charset=utf-8"},
    {HeaderKeys::kSessionDiscriminator, "main"},
}};

constexpr const char* kResponseLines[] = {
    "ResponseHeaderResponseCode=200",
    "ResponseHeaderResponseText=OK",
    "ResponseHeaderContentType=text/xml; charset=utf-8",
    "ResponseHeaderCompression=false",
    "ResponseSessionID=4f1c2a9077d14d559d5e0c1f",
    "Cache-Control=no-cache",
    "Content-Language=en-GB",
    "Date=Mon, 05 Jan 2026 10:00:00 GMT",
    "Server=Application/4.2",
    "X-Correlation-ID=4f1c2a90-77d1-4d55-9d5e-0c1f",
};

std::string headOf(std::size_t lines) {
    std::string head;
    for (std::size_t i = 0; i < lines; ++i) {
        head.append(kResponseLines[i]).append("\r\n");
    }
    return head + "\n";
}

// What an application does for one exchange.
void setHeaders(MvServerRequest& request, const Headers& headers) {
    for (const Header& header : headers) {
        request.setHeader(header.name, header.value);
    }
}

void textExchange() {
    MSPSession session;
    MvServerRequest request(&session);
    setHeaders(request, kShortHeaders);
    request.setBody("<request/>");
    static_cast<void>(request.execute());
}

std::istringstream s_body("<request/>");  // the application's, so not a part of the measurement

void streamExchange(const Headers& headers) {
    s_body.clear();
    s_body.seekg(0);
    MSPSession session;
    MvServerRequest request(&session);
    setHeaders(request, headers);
    request.setBody(&s_body);
    static_cast<void>(request.execute());
}

void streamExchangeOfShortHeaders() {
    streamExchange(kShortHeaders);
}

void streamExchangeOfLongHeaders() {
    streamExchange(kLongHeaders);
}

void openAndDestroy() {
    Client::MSPStream stream(
        new Client::MSPBufferBase<char>(std::make_unique<Client::ResponseStream>(), false));
}

struct Case {
    const char* name;
    void (*run)();
    bool asksForBody;
    std::size_t headerLines;
    std::size_t answerSize;
};

constexpr Case kCases[] = {
    {"text_exchange", textExchange, false, 10, kAnswerSize},
    {"stream_exchange", streamExchangeOfShortHeaders, true, 10, kAnswerSize},
    {"stream_exchange_long_headers", streamExchangeOfLongHeaders, true, 10, kAnswerSize},
    {"text_exchange_0_lines", textExchange, false, 0, kAnswerSize},
    {"text_exchange_1_mib", textExchange, false, 10, std::size_t{1} << 20U},
    {"open_and_destroy", openAndDestroy, false, 0, 0},
};

const Case* find(const char* name) {
    for (const Case& row : kCases) {
        if (std::strcmp(row.name, name) == 0) {
            return &row;
        }
    }
    return nullptr;
}

}  // namespace

// Not inlined and with a plain name: callgrind finds it by the name.
extern "C" __attribute__((noinline, visibility("default"))) void mvGateMeasured(void (*run)()) {
    run();
    asm volatile("" ::: "memory");  // keeps the call from becoming the function's last jump
}

int main(int argc, char** argv) {
    const Case* row = argc == 3 ? find(argv[1]) : nullptr;
    if (row == nullptr) {
        std::cerr << "usage: mv_gate <case> count|run, with one of these cases:\n";
        for (const Case& known : kCases) {
            std::cerr << "  " << known.name << "\n";
        }
        return 2;
    }
    const std::string head = headOf(row->headerLines);
    const std::string body(row->answerSize, 'x');
    Answer answer = Morvenn::Bench::answerOf(head, body);
    answer.asksForBody = row->asksForBody;
    Morvenn::Bench::setAnswer(answer);

    row->run();
    const unsigned long before = Morvenn::Bench::allocationCount();
    mvGateMeasured(row->run);
    const unsigned long allocations = Morvenn::Bench::allocationCount() - before;
    if (std::strcmp(argv[2], "count") == 0) {
        std::printf("%lu\n", allocations);
    }
    return 0;
}
