// A proxy that costs as little as one can: what a measurement shows is then the library's own.
//
// It defines the eight functions, keeps no record and allocates nothing. The answer is set once and
// given again to every exchange; MvServerProxy_Complete rewinds it.
#ifndef MORVENN_BENCH_SUPPORT_SCRIPTEDPROXY_H
#define MORVENN_BENCH_SUPPORT_SCRIPTEDPROXY_H

#include <cstddef>
#include <string_view>

namespace Morvenn::Bench {

struct Answer {
    bool asksForBody = false;  // gives the instructions 16 and 18 before the header lines
    std::string_view head;  // header lines and the empty line that ends them; in blocks of its own
    std::string_view body;  // given again from its start until bodySize bytes are out
    std::size_t bodySize = 0;
    std::size_t blockSize = 16384;
};

/// An answer whose body is given once.
Answer answerOf(std::string_view head, std::string_view body);

/// Borrows both texts until the next call.
void setAnswer(const Answer& answer);

/// What the last exchange was sent, in bytes: the check that a request was written.
std::size_t bytesSent();

}  // namespace Morvenn::Bench

#endif  // MORVENN_BENCH_SUPPORT_SCRIPTEDPROXY_H
