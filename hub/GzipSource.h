// Compresses another source as it is read: one gzip member, its size not known beforehand.
#pragma once

#include "Source.h"

#include <vector>

struct z_stream_s;

namespace Morvenn::Net::MvServerProxy::Hub {

class GzipSource : public Source {
public:
    explicit GzipSource(SourcePtr plain);
    ~GzipSource() override;

    std::ptrdiff_t read(char* to, std::size_t room) override;
    std::optional<std::uint64_t> size() const override;

private:
    bool refill();  // false when the plain source broke

    SourcePtr m_plain;
    std::unique_ptr<z_stream_s> m_stream;
    std::vector<char> m_input;
    bool m_inputEnded = false;
    bool m_finished = false;
};

// The whole text as one gzip member.
std::string gzipped(std::string text);

}  // namespace Morvenn::Net::MvServerProxy::Hub
