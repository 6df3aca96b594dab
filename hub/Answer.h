// What the hub answers: status, headers, and a source for the body.
#pragma once

#include "Request.h"
#include "Source.h"

#include <functional>

namespace Morvenn::Net::MvServerProxy::Hub {

struct Answer {
    unsigned status = 200;
    std::vector<Header> headers;
    SourcePtr body;
    bool inOnePiece = true;  // a small body may be read at once; faults show only bit by bit
    std::optional<std::uint64_t> declaredSize;  // a false Content-Length
    std::function<void()> afterwards;  // called once the answer has left, or cannot leave any more
};

// An answer with that text as its body and that "Content-Type".
Answer textAnswer(unsigned status, std::string text,
                  const std::string& contentType = "text/plain; charset=utf-8");

// Compresses the body and says so in the headers.
void compress(Answer& answer);

}  // namespace Morvenn::Net::MvServerProxy::Hub
