// A directory answer: the environments are those of a plain reader.
#include "admin/EnvironmentText.h"
#include "fuzz/Fuzz.h"
#include "tests/reference/Directory.h"

using namespace Morvenn::Net::MvServerProxy;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = Fuzz::Input(data, size).rest();
    const std::vector<Reference::DirectoryEntry> wanted = Reference::directory(text);

    Admin::Internal::EnvironmentParser parser(text);
    std::size_t count = 0;
    while (const auto environment = parser.next()) {
        Fuzz::require(count < wanted.size(), "there are no more environments than lines for them");
        const Reference::DirectoryEntry& entry = wanted[count++];
        Fuzz::require(environment->getName() == entry.name, "the name is the same");
        Fuzz::require(environment->getIndex() == entry.index, "the index is the same");
        for (const auto& [name, properties] : entry.services) {
            Admin::Service service(environment->getService(name));
            for (const auto& [key, value] : properties) {
                Fuzz::require(service.getProperty(key) == value, "the property is the same");
            }
        }
    }
    Fuzz::require(count == wanted.size(), "every environment is read");
    return 0;
}
