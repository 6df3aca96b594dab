#include <curl/curl.h>

#include <algorithm>
#include <stdexcept>

#include "http/Client.h"

namespace Morvenn::Bench {

namespace {

std::size_t giveBody(char* buffer, std::size_t size, std::size_t count, void* left) {
    auto& rest = *static_cast<std::uint64_t*>(left);
    const std::size_t piece = std::min<std::uint64_t>(rest, size * count);
    fillBody(buffer, piece);
    rest -= piece;
    return piece;
}

std::size_t takeAnswer(char*, std::size_t size, std::size_t count, void* total) {
    *static_cast<std::uint64_t*>(total) += size * count;
    return size * count;
}

class CurlClient : public HttpClient {
public:
    CurlClient() : m_easy(curl_easy_init()) {
        if (m_easy == nullptr) {
            throw std::runtime_error("libcurl gives no handle");
        }
    }
    ~CurlClient() override { curl_easy_cleanup(m_easy); }

    std::uint64_t post(const Job& job) override {
        std::uint64_t left = job.bodySize;
        std::uint64_t total = 0;
        const std::string text(job.bodySize <= kTextLimit ? job.bodySize : 0, 'x');
        curl_easy_reset(m_easy);
        curl_easy_setopt(m_easy, CURLOPT_URL, job.url.c_str());
        curl_easy_setopt(m_easy, CURLOPT_POST, 1L);
        curl_easy_setopt(m_easy, CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(m_easy, CURLOPT_WRITEFUNCTION, takeAnswer);
        curl_easy_setopt(m_easy, CURLOPT_WRITEDATA, &total);
        curl_slist* headers = curl_slist_append(nullptr, "Content-Type: text/plain");
        if (job.bodySize <= kTextLimit) {
            curl_easy_setopt(m_easy, CURLOPT_POSTFIELDSIZE_LARGE,
                             static_cast<curl_off_t>(text.size()));
            curl_easy_setopt(m_easy, CURLOPT_POSTFIELDS, text.c_str());
        } else {
            headers = curl_slist_append(headers, "Transfer-Encoding: chunked");
            curl_easy_setopt(m_easy, CURLOPT_READFUNCTION, giveBody);
            curl_easy_setopt(m_easy, CURLOPT_READDATA, &left);
        }
        curl_easy_setopt(m_easy, CURLOPT_HTTPHEADER, headers);
        if (job.compressed) {
            curl_easy_setopt(m_easy, CURLOPT_ACCEPT_ENCODING, "gzip");
        }
        const std::string authorities = authorityFile();
        if (!authorities.empty()) {
            curl_easy_setopt(m_easy, CURLOPT_CAINFO, authorities.c_str());
        }
        const CURLcode result = curl_easy_perform(m_easy);
        curl_slist_free_all(headers);
        check(result);
        return total;
    }

private:
    void check(CURLcode result) {
        long status = 0;
        curl_easy_getinfo(m_easy, CURLINFO_RESPONSE_CODE, &status);
        if (result != CURLE_OK || status != 200) {
            throw std::runtime_error(std::string(curl_easy_strerror(result)) + ", status " +
                                     std::to_string(status));
        }
    }

    CURL* m_easy;
};

}  // namespace

std::unique_ptr<HttpClient> makeCurlClient() {
    return std::make_unique<CurlClient>();
}

}  // namespace Morvenn::Bench
