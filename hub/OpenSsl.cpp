#include "OpenSsl.h"

#include <openssl/err.h>

#include <array>
#include <stdexcept>

namespace Morvenn::Net::MvServerProxy::Hub {

void failOpenSsl(const std::string& what) {
    std::string reasons;
    std::array<char, 256> text{};
    for (auto code = ERR_get_error(); code != 0; code = ERR_get_error()) {
        ERR_error_string_n(code, text.data(), text.size());
        reasons += (reasons.empty() ? "" : "; ") + std::string(text.data());
    }
    throw std::runtime_error("cannot " + what + ": " +
                             (reasons.empty() ? "no reason given" : reasons));
}

BioPtr readerOf(const std::string& text) {
    return BioPtr(orFail(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())), "read"));
}

BioPtr memoryWriter() {
    return BioPtr(orFail(BIO_new(BIO_s_mem()), "write to memory"));
}

std::string writtenTo(BIO* writer) {
    char* bytes = nullptr;
    const long count = BIO_get_mem_data(writer, &bytes);
    return std::string(bytes, static_cast<std::size_t>(count));
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
