#include <istream>
#include <stdexcept>
#include <streambuf>

#include "http/Client.h"
#include "morvenn/net/mvserverproxy/client/MvServerRequest.h"

namespace Morvenn::Bench {

namespace {

namespace Client = Net::MvServerProxy::Client;
namespace HeaderKeys = Client::HeaderKeys;

// A body that is made while it is read.
class BodyBuffer : public std::streambuf {
public:
    explicit BodyBuffer(std::uint64_t size) : m_left(size) { fillBody(m_block, sizeof m_block); }

protected:
    int_type underflow() override {
        const std::size_t size = m_left < sizeof m_block ? m_left : sizeof m_block;
        m_left -= size;
        setg(m_block, m_block, m_block + size);
        return size == 0 ? traits_type::eof() : traits_type::to_int_type(*m_block);
    }

private:
    std::uint64_t m_left;
    char m_block[16384];
};

class LibraryClient : public HttpClient {
public:
    std::uint64_t post(const Job& job) override {
        Client::MvServerRequest request(&m_session);
        request.setHeader(HeaderKeys::kBaseFullUrl, job.url);
        request.setHeader(HeaderKeys::kContentType, "text/plain");
        if (job.compressed) {
            request.setHeader(HeaderKeys::kUseCompression, "true");
        }
        if (job.bodySize <= kTextLimit) {
            request.setBody(std::string(job.bodySize, 'x').c_str());
            return sizeOfAnswer(request);
        }
        BodyBuffer buffer(job.bodySize);
        std::istream body(&buffer);
        request.setBody(&body);
        return sizeOfAnswer(request);
    }

private:
    static std::uint64_t sizeOfAnswer(Client::MvServerRequest& request) {
        const std::unique_ptr<std::istream> answer(request.send());
        if (request.getResponseCode() != "200") {
            throw std::runtime_error("the server answered " + request.getResponseCode());
        }
        return drain(*answer);
    }

    Client::MSPSession m_session;
};

}  // namespace

std::unique_ptr<HttpClient> makeLibraryClient() {
    return std::make_unique<LibraryClient>();
}

}  // namespace Morvenn::Bench
