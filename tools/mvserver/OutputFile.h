// A file that appears whole or not at all.
#pragma once

#include "Cleanup.h"

#include <memory>
#include <string>

namespace Morvenn::Net::MvServerProxy::Tools {

// Where bytes go. Every failure is a Failure with exit code LocalFile.
class Output {
public:
    Output() = default;
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;
    virtual ~Output() = default;

    virtual void write(const char* bytes, std::size_t count) = 0;
    // All is written; gives the descriptor back before commit().
    virtual void finish() {}
    // Keeps what was written. Without it a file is not there afterwards.
    virtual void commit() {}
};

// Writes beside `path` under a temporary name, and renames it in commit(). A link is followed; what
// is there but no regular file (a device, a pipe) is written to directly.
std::unique_ptr<Output> openOutputFile(const std::string& path);

// Standard output. Bytes that go to a terminal have control characters escaped, line feeds and tabs
// excepted. A reader that left ends the program quietly.
std::unique_ptr<Output> standardOutput();

// Makes the file at `path` hold `bytes`, with the given access rights, in the same way.
void writeWhole(const std::string& path, const std::string& bytes, unsigned mode);

}  // namespace Morvenn::Net::MvServerProxy::Tools
