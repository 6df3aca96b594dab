// One way of making the same POST: the library over its default proxy, and what else there is.
#ifndef MORVENN_BENCH_HTTP_CLIENT_H
#define MORVENN_BENCH_HTTP_CLIENT_H

#include <cstdint>
#include <memory>
#include <string>

namespace Morvenn::Bench {

struct Job {
    std::string url;
    std::uint64_t bodySize = 0;  // streamed when above kTextLimit, in pieces whose sum is not told
    bool compressed = false;     // asks for gzip and inflates
};

inline constexpr std::uint64_t kTextLimit = 1024;

class HttpClient {
public:
    HttpClient() = default;
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;
    virtual ~HttpClient() = default;

    /// Makes the exchange, on a kept connection where there is one.
    /// Returns the size of the answer; throws std::runtime_error for any other status than 200.
    virtual std::uint64_t post(const Job& job) = 0;
};

std::unique_ptr<HttpClient> makeLibraryClient();
std::unique_ptr<HttpClient> makeCurlClient();
std::unique_ptr<HttpClient> makePocoClient();
std::unique_ptr<HttpClient> makeHttplibClient();

/// The file of authorities that https servers are checked against, for the peers as for the
/// default proxy library; empty when none is set.
std::string authorityFile();

/// Reads @p stream to its end in blocks of 16384 bytes and returns its size.
std::uint64_t drain(std::istream& stream);

/// Copies @p size bytes of a body to @p buffer; the same byte throughout, and never zero.
void fillBody(char* buffer, std::size_t size);

}  // namespace Morvenn::Bench

#endif  // MORVENN_BENCH_HTTP_CLIENT_H
