// A compressed response, inflated block by block: what comes out, and when it fails.
#ifndef MORVENN_TESTS_REFERENCE_INFLATION_H
#define MORVENN_TESTS_REFERENCE_INFLATION_H

#include <functional>
#include <memory>
#include <string>

struct z_stream_s;

namespace Morvenn::Net::MvServerProxy::Reference {

/// Inflates in portions of at most 16384 bytes. Input is read when the last is used up; once the
/// gzip data have ended or failed, it is read and dropped. A portion ends as soon as it holds a
/// byte, or with the response.
class Inflation {
public:
    /// Gives the next block, empty at the end of the response. May throw.
    using Source = std::function<std::string()>;

    explicit Inflation(Source source);
    ~Inflation();
    Inflation(const Inflation&) = delete;
    Inflation& operator=(const Inflation&) = delete;

    /// The next portion; empty at the end, or after a failure: see status().
    std::string next();

    /// zlib's last result: 0 running, 1 at the end of the gzip data, anything else a failure.
    int status() const { return m_status; }

private:
    Source m_source;
    std::unique_ptr<z_stream_s> m_stream;
    std::string m_input;
    int m_status = 0;
};

/// The message that goes with a failed status.
std::string zlibMessage(int status);

}  // namespace Morvenn::Net::MvServerProxy::Reference

#endif
