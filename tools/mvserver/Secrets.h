// Passwords: where they come from, and how they go.
#pragma once

#include <optional>
#include <string>

namespace Morvenn::Net::MvServerProxy::Tools {

// Overwrites the text and empties it.
void wipe(std::string& text);

// The first line of a file or of an open descriptor. A password that is empty, longer than 1024
// bytes or holds a control character is a Failure (LocalFile). A file that others may read gets a
// warning.
std::string passwordFromFile(const std::string& path);
std::string passwordFromDescriptor(int descriptor);

// Asks on the controlling terminal, not on standard input. Empty when there is no terminal.
std::optional<std::string> askVisibly(const std::string& question);
std::optional<std::string> askWithoutEcho(const std::string& question);

}  // namespace Morvenn::Net::MvServerProxy::Tools
