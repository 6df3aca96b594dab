// For files that stand in front of a library's functions: the function that stands behind them.
#ifndef MV_TESTS_UNIT_NEXTFUNCTION_H
#define MV_TESTS_UNIT_NEXTFUNCTION_H

#include <dlfcn.h>

#include <stdexcept>
#include <string>

namespace Morvenn::Net::MvServerProxy::Tests {

/// @p name as the linker knows it; the first argument only gives the type.
template <typename F>
F nextFunction(F /*type of*/, const char* name) {
    void* address = dlsym(RTLD_NEXT, name);
    if (address == nullptr) {
        throw std::runtime_error(std::string("no library has ") + name);
    }
    return reinterpret_cast<F>(address);
}

}  // namespace Morvenn::Net::MvServerProxy::Tests

#endif
