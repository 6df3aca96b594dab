#include "Context.h"

#include "Terminal.h"

namespace Morvenn::Net::MvServerProxy::Tools {

void trace(const Context& context, int level, const std::string& line) {
    if (context.verbosity >= level) {
        note(dimmed(line));
    }
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
