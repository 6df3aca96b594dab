// How many of ICU's converters could not be opened: each such failure keeps memory by design.
#ifndef MORVENN_TESTS_TORTURE_CONVERTERWATCH_H
#define MORVENN_TESTS_TORTURE_CONVERTERWATCH_H

#include <cstddef>

namespace Torture {

void resetConverterFailures();
std::size_t converterFailures();

}  // namespace Torture

#endif
