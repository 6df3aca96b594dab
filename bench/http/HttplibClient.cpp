#include <httplib.h>

#include <stdexcept>

#include "http/Client.h"

namespace Morvenn::Bench {

namespace {

// Small exchanges over http only: this version has no answer in pieces to a POST.
class HttplibClient : public HttpClient {
public:
    std::uint64_t post(const Job& job) override {
        const std::size_t path = job.url.find('/', job.url.find("//") + 2);
        if (m_client == nullptr) {
            m_client = std::make_unique<httplib::Client>(job.url.substr(0, path));
            m_client->set_keep_alive(true);
            m_client->set_tcp_nodelay(true);
        }
        const auto result =
            m_client->Post(job.url.substr(path), std::string(job.bodySize, 'x'), "text/plain");
        if (!result || result->status != 200) {
            throw std::runtime_error("no answer with status 200");
        }
        return result->body.size();
    }

private:
    std::unique_ptr<httplib::Client> m_client;
};

}  // namespace

std::unique_ptr<HttpClient> makeHttplibClient() {
    return std::make_unique<HttplibClient>();
}

}  // namespace Morvenn::Bench
