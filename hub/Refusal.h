// Thrown by a handler that cannot serve a request; it becomes an answer with that status and the
// text as its body. The text says what is wrong and what to do, in one line without a line end.
#pragma once

#include <stdexcept>
#include <string>

namespace Morvenn::Net::MvServerProxy::Hub {

class Refusal : public std::runtime_error {
public:
    Refusal(unsigned status, const std::string& text)
        : std::runtime_error(text), m_status(status) {}

    unsigned status() const { return m_status; }

private:
    unsigned m_status;
};

}  // namespace Morvenn::Net::MvServerProxy::Hub
