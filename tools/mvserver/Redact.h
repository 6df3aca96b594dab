// What of an exchange may be shown: names always, values from a list of harmless ones.
#pragma once

#include <string>

namespace Morvenn::Net::MvServerProxy::Tools {

// "Name=value" ready for a terminal. URLs lose user, password and query; the value of a header that
// is not known to be harmless is replaced by its length.
std::string shownHeader(const std::string& name, const std::string& value);

// The URL without what may be secret: "http://***@host/path?***".
std::string shownUrl(const std::string& url);

}  // namespace Morvenn::Net::MvServerProxy::Tools
