#include "Services.h"

#include "DigestHandler.h"
#include "DocumentHandler.h"
#include "Refusal.h"
#include "XmlService.h"

#include <charconv>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

constexpr char kXml[] = "application/xml";

HandlerPtr makeXmlSummary(const Request&) {
    return std::make_unique<DocumentHandler>(
        [](const std::string& body) { return textAnswer(200, summarizeXml(body), kXml); });
}

HandlerPtr makeXmlReverse(const Request&) {
    return std::make_unique<DocumentHandler>(
        [](const std::string& body) { return textAnswer(200, reverseXml(body), kXml); });
}

HandlerPtr makeDigest(const Request&) {
    return std::make_unique<DigestHandler>();
}

// Answers as many bytes as the body says in decimal.
HandlerPtr makePattern(const Request&) {
    return std::make_unique<DocumentHandler>([](const std::string& body) {
        std::uint64_t size = 0;
        const char* const end = body.data() + body.size();
        const auto [stop, error] = std::from_chars(body.data(), end, size);
        if (error != std::errc() || stop != end) {
            throw Refusal(400, "Pattern takes the number of bytes to answer as its body");
        }
        Answer answer = textAnswer(200, "");
        answer.body = std::make_unique<PatternSource>(size);
        return answer;
    });
}

// Answers the headers of the request as they arrived: what a proxy made of an application's.
HandlerPtr makeHeaders(const Request& request) {
    std::string text = request.method + " " + request.path + "\n";
    for (const auto& [name, value] : request.headers) {
        text.append(name).append(": ").append(value).append("\n");
    }
    return std::make_unique<DocumentHandler>(
        [text](const std::string&) { return textAnswer(200, text); });
}

struct Service {
    const char* name;
    HandlerPtr (*make)(const Request&);
};

constexpr Service kServices[] = {
    {"XmlSummary", &makeXmlSummary},  // counts elements, attributes and text
    {"XmlReverse", &makeXmlReverse},  // the document, children in reverse order
    {"Digest", &makeDigest},          // size and SHA-256 of the body, which is not kept
    {"Pattern", &makePattern},        // as many bytes as the body says
    {"Headers", &makeHeaders},        // the headers that arrived
};

std::string knownServices() {
    std::string names;
    for (const Service& service : kServices) {
        names += (names.empty() ? "" : ", ") + std::string(service.name);
    }
    return names;
}

}  // namespace

HandlerPtr makeService(const Request& request) {
    const std::string name = request.headerText("Service-Name");
    for (const Service& service : kServices) {
        if (name == service.name) {
            return service.make(request);
        }
    }
    if (name.empty()) {
        throw Refusal(
            400, "the request names no service; set Service-Name to one of " + knownServices());
    }
    throw Refusal(404, "no service \"" + name + "\"; the hub knows " + knownServices());
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
