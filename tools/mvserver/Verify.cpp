// mvserver verify: checks signatures that the server made.

#include "Cms.h"
#include "Failure.h"
#include "Json.h"
#include "OutputFile.h"
#include "Terminal.h"
#include "Verbs.h"

namespace Morvenn::Net::MvServerProxy::Tools {
namespace {

constexpr char kWhoVerifies[] =
    "verified by this program with OpenSSL; the library itself never verifies a signature";

struct VerifyOptions {
    std::vector<std::string> files;
    std::string signature;
    std::string authorities;
};

std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) {
        all += (all.empty() ? "" : "; ") + text;
    }
    return all;
}

nlohmann::json verify(const VerifyOptions& options, const Context& context) {
    const CmsVerifier verifier(options.authorities);
    const std::unique_ptr<Output> output = standardOutput();
    nlohmann::json list = nlohmann::json::array();
    for (const std::string& file : options.files) {
        const std::string signature = options.signature.empty() ? file + ".p7s" : options.signature;
        const std::vector<std::string> signers = verifier.verify(file, signature);
        list.push_back({{"file", file}, {"signature", signature}, {"signers", signers}});
        const std::string line = file + ": valid, signed by " + joined(signers) + "\n";
        if (!context.json) {
            output->write(line.data(), line.size());
        }
    }
    output->commit();
    if (!context.json) {
        note(std::string("mvserver: ") + kWhoVerifies);
    }
    return {{"verified", list}, {"note", kWhoVerifies}};
}

}  // namespace

void addVerify(Verb program, Context& context) {
    auto options = std::make_shared<VerifyOptions>();
    Verb verb =
        program.verb("verify", std::string("Check the signatures of files (") + kWhoVerifies + ")");
    verb.arguments("files", options->files, "FILE", "Signed files");
    verb.text("--ca", options->authorities, "FILE",
              "Certificates to trust, in PEM form; no others are trusted")
        .required();
    verb.text("--signature", options->signature, "FILE",
              "Signature of the one file (default: the file's name and .p7s)");
    verb.whenChosen([options, &context] {
        if (!options->signature.empty() && options->files.size() != 1) {
            throw Failure(ExitCode::Usage, "--signature goes with exactly one file");
        }
        context.action = [options, &context] { return verify(*options, context); };
    });
}

}  // namespace Morvenn::Net::MvServerProxy::Tools
