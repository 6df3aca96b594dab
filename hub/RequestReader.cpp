#include "RequestReader.h"

#include <microhttpd.h>

#include <charconv>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

std::string textOf(const char* value, std::size_t size) {
    return value != nullptr ? std::string(value, size) : std::string();
}

MHD_Result addHeader(void* headers, MHD_ValueKind, const char* name, std::size_t nameSize,
                     const char* value, std::size_t valueSize) {
    static_cast<std::vector<Header>*>(headers)->emplace_back(textOf(name, nameSize),
                                                             textOf(value, valueSize));
    return MHD_YES;
}

MHD_Result addArgument(void* query, MHD_ValueKind, const char* name, std::size_t nameSize,
                       const char* value, std::size_t valueSize) {
    auto& arguments = *static_cast<std::map<std::string, std::string>*>(query);
    arguments[textOf(name, nameSize)] = textOf(value, valueSize);
    return MHD_YES;
}

}  // namespace

Request readRequest(MHD_Connection* connection, const char* method, const char* path) {
    Request request;
    request.method = method;
    request.path = path;
    MHD_get_connection_values_n(connection, MHD_HEADER_KIND, &addHeader, &request.headers);
    MHD_get_connection_values_n(connection, MHD_GET_ARGUMENT_KIND, &addArgument, &request.query);
    return request;
}

std::uint64_t announcedBody(const Request& request) {
    const std::string text = request.headerText("Content-Length");
    std::uint64_t size = 0;
    std::from_chars(text.data(), text.data() + text.size(), size);
    return size;
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
