// What depends on a terminal being there.
#pragma once

#include <string>

namespace Morvenn::Net::MvServerProxy::Tools {

bool isTerminal(int descriptor);

// Control characters (C0, DEL, and C1 as UTF-8) written visibly, as \n, \t or \x1b; all else as it
// is. With `keepLines` line feeds and tabs stay.
std::string escaped(const std::string& text, bool keepLines = false);

// `text` in bold red or dim when standard error is a terminal and NO_COLOR is not set.
std::string inRed(const std::string& text);
std::string dimmed(const std::string& text);

// Writes one whole line to standard error.
void note(const std::string& line);

}  // namespace Morvenn::Net::MvServerProxy::Tools
