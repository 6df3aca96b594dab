// What to do about a failure, by its class.
//
// The family is not derived from std::exception; a program that wants one handler for everything
// wraps it, as asStandard() does here.
#include <iostream>
#include <stdexcept>
#include <string>

#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"

using namespace Morvenn::Net::MvServerProxy::Client;

namespace {

std::string execute(const std::string& url, const char* body) {
    MSPSession session;
    MvServerRequest request(&session);
    request.setHeader(HeaderKeys::kServerUrl, url);
    if (body != nullptr) {
        request.setBody(body);
    }
    return request.execute();
}

// The most special class first: every handler also takes the classes below its own.
std::string advice(const std::string& url, const char* body) {
    try {
        execute(url, body);
        return "nothing to do";
    } catch (const MSPConnectionException&) {
        return "try again later, with a new request";
    } catch (const MSPProtocolException& e) {
        return "mend the program: " + e.getMessage();
    } catch (const MSPException&) {
        return "tell the operator, with the log";
    }
}

std::string asStandard(const std::string& url, const char* body) {
    try {
        return execute(url, body);
    } catch (const Exception& e) {
        throw std::runtime_error(e.getMessage());
    }
}

}  // namespace

int main() {
    const std::string nobodyListens = "http://127.0.0.1:1/";
    std::cout << "no server: " << advice(nobodyListens, "hello") << '\n';
    std::cout << "no body: " << advice(nobodyListens, nullptr) << '\n';
    std::cout << "no such scheme: " << advice("gopher://127.0.0.1/", "hello").substr(0, 16) << '\n';
    try {
        asStandard(nobodyListens, nullptr);
    } catch (const std::exception& e) {
        std::cout << "std::exception: " << e.what() << '\n';
    }
}
