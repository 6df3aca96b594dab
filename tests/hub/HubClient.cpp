#include "HubClient.h"

#include <arpa/inet.h>
#include <curl/curl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace HubTest {
namespace {

struct Upload {
    const std::string& body;
    std::size_t position = 0;
};

std::size_t appendText(char* bytes, std::size_t, std::size_t count, void* text) {
    static_cast<std::string*>(text)->append(bytes, count);
    return count;
}

// Keeps the lines of the last response only: a status line begins a new one.
std::size_t appendHeader(char* bytes, std::size_t, std::size_t count, void* text) {
    auto* all = static_cast<std::string*>(text);
    if (std::string(bytes, count).rfind("HTTP/", 0) == 0) {
        all->clear();
    }
    all->append(bytes, count);
    return count;
}

std::size_t readUpload(char* to, std::size_t, std::size_t room, void* state) {
    auto* upload = static_cast<Upload*>(state);
    const std::size_t count = std::min(room, upload->body.size() - upload->position);
    std::memcpy(to, upload->body.data() + upload->position, count);
    upload->position += count;
    return count;
}

void setBody(CURL* curl, const Call& call, Upload& upload) {
    curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, call.method.c_str());
    if (call.method != "POST") {
        return;
    }
    curl_easy_setopt(curl, CURLOPT_POST, 1L);
    curl_easy_setopt(curl, CURLOPT_READFUNCTION, &readUpload);
    curl_easy_setopt(curl, CURLOPT_READDATA, &upload);
    if (!call.chunked) {
        curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE,
                         static_cast<curl_off_t>(call.body.size()));
    }
}

}  // namespace

std::string Reply::header(const std::string& name) const {
    const std::size_t begin = headerText.rfind("\n" + name + ": ");
    if (begin == std::string::npos) {
        return "";
    }
    const std::size_t value = begin + name.size() + 3;
    return headerText.substr(value, headerText.find('\r', value) - value);
}

Reply exchange(const Call& call) {
    const std::unique_ptr<CURL, void (*)(CURL*)> curl(curl_easy_init(), &curl_easy_cleanup);
    curl_slist* headers = nullptr;
    for (const std::string& header : call.headers) {
        headers = curl_slist_append(headers, header.c_str());
    }
    if (call.chunked) {
        headers = curl_slist_append(headers, "Transfer-Encoding: chunked");
    }
    const std::unique_ptr<curl_slist, void (*)(curl_slist*)> headersOwner(headers,
                                                                          &curl_slist_free_all);
    Reply reply;
    Upload upload{call.body};
    curl_easy_setopt(curl.get(), CURLOPT_URL, call.url.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_PROXY, "");
    curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT, call.timeoutSeconds);
    curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, &appendText);
    curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &reply.body);
    curl_easy_setopt(curl.get(), CURLOPT_HEADERFUNCTION, &appendHeader);
    curl_easy_setopt(curl.get(), CURLOPT_HEADERDATA, &reply.headerText);
    if (!call.caFile.empty()) {
        curl_easy_setopt(curl.get(), CURLOPT_CAINFO, call.caFile.c_str());
    }
    setBody(curl.get(), call, upload);
    reply.curlResult = curl_easy_perform(curl.get());
    curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &reply.status);
    return reply;
}

Reply post(const std::string& url, const std::string& body, const Headers& headers) {
    Call call;
    call.url = url;
    call.body = body;
    call.headers = headers;
    return exchange(call);
}

Reply get(const std::string& url, const Headers& headers) {
    Call call;
    call.method = "GET";
    call.url = url;
    call.headers = headers;
    return exchange(call);
}

std::string gunzipped(const std::string& compressed) {
    z_stream stream = {};
    inflateInit2(&stream, 15 + 16);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(compressed.data()));
    stream.avail_in = static_cast<uInt>(compressed.size());
    std::string plain;
    std::vector<char> block(65536);
    int result = Z_OK;
    while (stream.avail_in > 0 || result == Z_OK) {
        stream.next_out = reinterpret_cast<Bytef*>(block.data());
        stream.avail_out = static_cast<uInt>(block.size());
        result = inflate(&stream, Z_NO_FLUSH);
        plain.append(block.data(), block.size() - stream.avail_out);
        if (result == Z_STREAM_END && stream.avail_in > 0) {
            result = inflateReset(&stream);
        }
        if (result != Z_OK && result != Z_STREAM_END) {
            break;
        }
    }
    inflateEnd(&stream);
    if (result != Z_STREAM_END) {
        throw std::runtime_error("not a whole gzip text: " + std::to_string(result));
    }
    return plain;
}

RawConnection::RawConnection(std::uint16_t port)
    : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const timeval limit = {10, 0};
    ::setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
    if (::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        ::close(m_socket);
        throw std::runtime_error(std::string("cannot connect: ") + std::strerror(errno));
    }
}

RawConnection::~RawConnection() {
    ::close(m_socket);
}

void RawConnection::send(const std::string& bytes) const {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count =
            ::send(m_socket, bytes.data() + done, bytes.size() - done, MSG_NOSIGNAL);
        if (count <= 0) {
            throw std::runtime_error(std::string("cannot send: ") + std::strerror(errno));
        }
        done += static_cast<std::size_t>(count);
    }
}

std::string RawConnection::readToEnd(int& error) const {
    std::string all;
    char block[16384];
    ssize_t count = 0;
    while ((count = ::recv(m_socket, block, sizeof(block), 0)) > 0) {
        all.append(block, static_cast<std::size_t>(count));
    }
    error = count < 0 ? errno : 0;
    return all;
}

std::string RawConnection::readUntil(const std::string& text) const {
    std::string all;
    char block[16384];
    while (all.find(text) == std::string::npos) {
        const ssize_t count = ::recv(m_socket, block, sizeof(block), 0);
        if (count <= 0) {
            break;
        }
        all.append(block, static_cast<std::size_t>(count));
    }
    return all;
}

}  // namespace HubTest
