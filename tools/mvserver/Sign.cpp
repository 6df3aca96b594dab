// mvserver sign: has the server sign files.

#include "Failure.h"
#include "Json.h"
#include "LocalFile.h"
#include "OutputFile.h"
#include "Terminal.h"
#include "Verbs.h"

#include <morvenn/net/mvserverproxy/crypto/PKCS7.h>

#include <climits>
#include <filesystem>
#include <set>

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

using Crypto::PKCS7;

struct SignOptions {
    std::vector<std::string> files;
    std::string outputFolder;
    bool oneByOne = false;
};

// A signature begins as every DER sequence does.
constexpr char kDerSequence = '\x30';

std::string readItem(const std::string& path) {
    std::string item = readFile(path);
    if (item.empty() || item.size() > INT_MAX) {
        throw Failure(ExitCode::LocalFile,
                      path + " cannot be signed: it has " + std::to_string(item.size()) + " bytes",
                      "a file to sign has at least one byte and less than 2 GiB");
    }
    return item;
}

// The library takes the server to answer with one signature for each item and does not tell how
// many there are. The array knows: the platform's C++ ABI keeps the number of elements in front of
// an array whose elements have destructors, for delete[] to go by.
__attribute__((no_sanitize("address"))) std::size_t elementsOf(const std::string* array) {
    return reinterpret_cast<const std::size_t*>(array)[-1];
}

std::vector<std::string> signBatch(const std::vector<std::string>& items) {
    std::vector<const char*> data;
    std::vector<int> sizes;
    for (const std::string& item : items) {
        data.push_back(item.data());
        sizes.push_back(static_cast<int>(item.size()));
    }
    const std::unique_ptr<std::string[]> signatures(
        PKCS7().sign(data.data(), static_cast<unsigned>(data.size()), sizes.data()));
    const std::size_t count = elementsOf(signatures.get());
    if (count != items.size()) {
        throw Failure(ExitCode::Protocol, "the server answered " + std::to_string(items.size()) +
                                              " files with " + std::to_string(count) +
                                              " signatures");
    }
    return {signatures.get(), signatures.get() + count};
}

std::vector<std::string> signEach(const std::vector<std::string>& items) {
    std::vector<std::string> signatures;
    signatures.reserve(items.size());
    for (const std::string& item : items) {
        signatures.push_back(PKCS7().sign(item.data(), static_cast<unsigned>(item.size())));
    }
    return signatures;
}

std::string signaturePath(const std::string& file, const std::string& folder) {
    const std::filesystem::path path(file);
    return (folder.empty() ? path : folder / path.filename()).string() + ".p7s";
}

// The paths of the signatures, in the order of the files.
std::vector<std::string> signaturePaths(const SignOptions& options) {
    std::vector<std::string> paths;
    std::set<std::string> seen;
    for (const std::string& file : options.files) {
        paths.push_back(signaturePath(file, options.outputFolder));
        if (!seen.insert(std::filesystem::path(paths.back()).lexically_normal()).second) {
            throw Failure(ExitCode::Usage,
                          "two signatures would get the name " + escaped(paths.back()),
                          "sign files of one name in calls of their own, with other --output-dir");
        }
    }
    return paths;
}

// All signatures are written before the first one gets its name.
nlohmann::json write(const SignOptions& options, const std::vector<std::string>& paths,
                     const std::vector<std::string>& signatures) {
    std::vector<std::unique_ptr<Output>> files;
    nlohmann::json list = nlohmann::json::array();
    for (std::size_t i = 0; i < signatures.size(); ++i) {
        const std::string& signature = signatures[i];
        if (signature.empty() || signature[0] != kDerSequence) {
            throw Failure(ExitCode::Protocol,
                          "the server sent no signature for " + options.files[i]);
        }
        files.push_back(openOutputFile(paths[i]));
        files.back()->write(signature.data(), signature.size());
        files.back()->finish();
        list.push_back(
            {{"file", options.files[i]}, {"signature", paths[i]}, {"bytes", signature.size()}});
    }
    for (const std::unique_ptr<Output>& file : files) {
        file->commit();
    }
    return list;
}

nlohmann::json sign(const SignOptions& options, const Context& context) {
    const std::vector<std::string> paths = signaturePaths(options);
    std::vector<std::string> items;
    for (const std::string& file : options.files) {
        items.push_back(readItem(file));
    }
    trace(context, 1, "> " + std::to_string(items.size()) + " files to sign");
    const nlohmann::json list =
        write(options, paths, options.oneByOne ? signEach(items) : signBatch(items));
    if (!context.json) {
        const std::unique_ptr<Output> output = standardOutput();
        for (const nlohmann::json& entry : list) {
            const std::string line = entry["signature"].get<std::string>() + "\n";
            output->write(line.data(), line.size());
        }
        output->commit();
    }
    return {{"signatures", list}};
}

}  // namespace

void addSign(Verb program, Context& context) {
    auto options = std::make_shared<SignOptions>();
    Verb verb = program.verb(
        "sign", "Have the server sign files; FILE.p7s beside each holds its detached signature");
    verb.arguments("files", options->files, "FILE", "Files to sign, all in one exchange");
    verb.text("--output-dir", options->outputFolder, "DIR", "Folder for the signatures");
    verb.flag("--one-by-one", options->oneByOne,
              "One exchange for each file: slower, for a server that does not sign batches");
    verb.whenChosen([options, &context] {
        context.action = [options, &context] { return sign(*options, context); };
    });
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
