// Small text helpers.
#ifndef MORVENN_UTIL_TEXT_H
#define MORVENN_UTIL_TEXT_H

#include <string>
#include <string_view>

namespace Morvenn::Net::MvServerProxy::Util::Internal {

/// The text without leading and trailing white space, as isspace classifies it.
std::string_view trim(std::string_view text);

/// The first two of the pieces that lie between separators; what follows the second is dropped.
struct TwoPieces {
    std::string_view first;
    std::string_view second;  ///< empty when there is no separator
    bool hasSeparator;
};
TwoPieces firstTwoPieces(std::string_view text, char separator);

/// As atoi: 0 for a text that does not begin with a number; what follows the digits is ignored.
int toInt(std::string_view text);

/// Decimal, as "%d".
std::string toText(int number);

}  // namespace Morvenn::Net::MvServerProxy::Util::Internal

#endif  // MORVENN_UTIL_TEXT_H
