// One exchange's work: takes the request body piece by piece, then makes the answer.
#pragma once

#include "Answer.h"

namespace Morvenn::Net::MvServerProxy::Hub {

class Handler {
public:
    virtual ~Handler() = default;

    // A piece of the body. May throw Refusal: the rest of the body is then read and dropped, and
    // the refusal is the answer.
    virtual void take(const char* bytes, std::size_t count) = 0;

    // Called once, after the whole body. May throw Refusal.
    virtual Answer finish() = 0;
};

using HandlerPtr = std::unique_ptr<Handler>;

}  // namespace Morvenn::Net::MvServerProxy::Hub
