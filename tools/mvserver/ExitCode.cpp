#include "ExitCode.h"

namespace Morvenn::Net::MvServerProxy::Tools {

const char* wordOf(ExitCode code) {
    for (const ExitCodeRow& row : kExitCodes) {
        if (row.code == code) {
            return row.word;
        }
    }
    return "unknown";
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
