// Keeps a request body until the answer has been sent: the first part in memory, everything beyond
// it in a temporary file that has no name and vanishes with the exchange.
#pragma once

#include "Source.h"

namespace Morvenn::Net::MvServerProxy::Hub {

class Spool : public Source {
public:
    static constexpr std::size_t kMemoryPart = 256 * 1024;

    Spool();
    ~Spool() override;

    // Appends bytes. Throws Refusal with 507 when the temporary file cannot take them.
    // Requires: nothing has been read yet.
    void write(const char* bytes, std::size_t count);

    std::ptrdiff_t read(char* to, std::size_t room) override;
    std::optional<std::uint64_t> size() const override;

private:
    void writeFile(const char* bytes, std::size_t count);
    std::ptrdiff_t readFile(char* to, std::size_t room);

    std::string m_memory;
    int m_file = -1;
    std::uint64_t m_size = 0;
    std::uint64_t m_position = 0;
};

}  // namespace Morvenn::Net::MvServerProxy::Hub
