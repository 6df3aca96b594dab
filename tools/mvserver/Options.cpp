#include "Options.h"

#include <cctype>

namespace Morvenn::Net::MvServerProxy::Tools {

std::string variableOf(const std::string& names) {
    const std::size_t start = names.find("--") + 2;
    std::string variable = "MV_";
    for (std::size_t i = start; i < names.size() && names[i] != ','; ++i) {
        const auto c = static_cast<unsigned char>(names[i]);
        variable += c == '-' ? '_' : static_cast<char>(std::toupper(c));
    }
    return variable;
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
