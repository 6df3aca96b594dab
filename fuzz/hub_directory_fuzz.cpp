// A directory file of the hub: what it accepts, a client reads as it is written.
#include "fuzz/Fuzz.h"
#include "hub/Directory.h"
#include "tests/reference/Directory.h"

using namespace Morvenn::Net::MvServerProxy;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = Fuzz::Input(data, size).rest();
    Hub::Directory directory;
    try {
        directory = Hub::parseDirectory(text);
    } catch (const Hub::DirectoryError& e) {
        Fuzz::require(e.line() > 0, "a fault has a line");
        return 0;
    }
    const auto read = Reference::directory(Hub::directoryText(directory));
    Fuzz::require(read.size() == directory.size(), "a client reads every environment");
    for (std::size_t i = 0; i < read.size(); ++i) {
        Fuzz::require(read[i].name == directory[i].name, "with its name");
        Fuzz::require(read[i].index == directory[i].index, "and its index");
    }
    const auto all = Hub::selectEnvironments(directory, "All");
    Fuzz::require(all.size() == directory.size(), "All selects all");
    return 0;
}
