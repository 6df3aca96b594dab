// Lines on the standard error stream, each written whole in one call, so that lines of several
// threads never mix. Control characters are escaped: a client cannot forge a line.
#pragma once

#include <string>

namespace Morvenn::Net::MvServerProxy::Hub {

// "mvhub: <text>"; always written.
void logLine(const std::string& text);

// As logLine, but not with --quiet: one line per exchange.
void logExchange(const std::string& text);

void setQuiet(bool quiet);

// Control characters and the backslash as \xNN, everything else unchanged.
std::string printable(const std::string& text);

}  // namespace Morvenn::Net::MvServerProxy::Hub
