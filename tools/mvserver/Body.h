// The body of a request, as the user named it: a text, a file, or standard input.
#pragma once

#include "Progress.h"

#include <cstdint>
#include <memory>
#include <streambuf>
#include <string>

namespace Morvenn::Net::MvServerProxy::Tools {

// A body travels as text, so a zero byte in it would silently end the piece it is in. Reading one
// is therefore a Failure (LocalFile) that names its place, as is an error of the system.
class Body {
public:
    // "@FILE", "-" for standard input, else the text itself. Opens the file.
    explicit Body(const std::string& named);

    // Whether it was given as a text on the command line.
    bool isLiteral() const { return m_descriptor < 0; }
    // Bytes in all; 0 when not known.
    std::uint64_t size() const { return m_size; }

    // All of it as one text.
    std::string whole(Progress& progress);
    // To be read in pieces; counts them. The body must outlive it.
    std::unique_ptr<std::streambuf> stream(Progress& progress);

private:
    std::string m_text;
    std::string m_name;
    std::shared_ptr<const int> m_owned;  // closes the file
    int m_descriptor = -1;
    std::uint64_t m_size = 0;
};

}  // namespace Morvenn::Net::MvServerProxy::Tools
