#include "tests/reference/Inflation.h"

#include <zlib.h>

#include <stdexcept>
#include <utility>

namespace Morvenn::Net::MvServerProxy::Reference {

Inflation::Inflation(Source source)
    : m_source(std::move(source)), m_stream(std::make_unique<z_stream>()) {
    if (inflateInit2(m_stream.get(), 31) != Z_OK) {
        throw std::runtime_error("zlib cannot be initialised");
    }
}

Inflation::~Inflation() {
    inflateEnd(m_stream.get());
}

std::string Inflation::next() {
    std::string output(16384, '\0');
    m_stream->next_out = reinterpret_cast<Bytef*>(output.data());
    m_stream->avail_out = static_cast<uInt>(output.size());
    for (;;) {
        if (m_stream->avail_in == 0) {
            m_input = m_source();
            if (m_input.empty()) {
                break;
            }
            m_stream->next_in = reinterpret_cast<Bytef*>(m_input.data());
            m_stream->avail_in = static_cast<uInt>(m_input.size());
        }
        if (m_status != Z_OK) {
            m_stream->avail_in = 0;
            continue;
        }
        m_status = inflate(m_stream.get(), Z_NO_FLUSH);
        if (m_stream->avail_out < output.size()) {
            break;
        }
    }
    const bool failed = m_status != Z_OK && m_status != Z_STREAM_END;
    output.resize(failed ? 0 : output.size() - m_stream->avail_out);
    return output;
}

std::string zlibMessage(int status) {
    switch (status) {
        case -1:
            return " Invalid I/p or O/p Stream set for Zlib decompression";
        case -2:
            return "Invalid compression level set in Zlib for decompressing compressed response \n";
        case -3:
            return " Invalid or incomplete compressed response receieved for Zlib decompression\n";
        case -4:
            return "Out of memory\n. Decompression buffer for Zlib is smaller than required \n";
        case -5:
            return "Buffer is either invalid or is not large enough";
        case -6:
            return "Zlib version mismatch!\n";
        default:
            return "";
    }
}

}  // namespace Morvenn::Net::MvServerProxy::Reference
