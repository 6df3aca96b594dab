// Compressed bodies that are wrong in a named way, or right in an unusual one.
#pragma once

#include <string>

namespace Morvenn::Net::MvServerProxy::Hub {

bool isFaultyGzip(const std::string& kind);

// "a or b or c", for messages.
std::string faultyGzipNames();

// The text, compressed and spoiled. Requires: isFaultyGzip(kind).
std::string faultyGzip(const std::string& kind, const std::string& text);

}  // namespace Morvenn::Net::MvServerProxy::Hub
