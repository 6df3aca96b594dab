// Request headers from the command line.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace Morvenn::Net::MvServerProxy::Tools {

// Adds a header. A name that is there already, an empty name and control characters are a Failure
// (Usage): the library would send the first without a word, and the others as further lines.
void addHeader(std::map<std::string, std::string>& headers, const std::string& name,
               const std::string& value);

// The same for each "name=value".
void addHeaders(std::map<std::string, std::string>& headers, const std::vector<std::string>& named);

}  // namespace Morvenn::Net::MvServerProxy::Tools
