// Signatures over several items in one exchange, each written to a file.
//
// usage: sign_batch FOLDER. Check one of them, with the hub's own certificate authority:
//   openssl cms -verify -binary -inform DER -in 1.p7s -content 1.txt -CAfile ca.pem
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "morvenn/net/mvserverproxy/client/Exceptions.h"
#include "morvenn/net/mvserverproxy/crypto/PKCS7.h"

using namespace Morvenn::Net::MvServerProxy;

int main(int argc, char** argv) {
    const std::string folder = argc > 1 ? argv[1] : ".";
    std::vector<std::string> items = {"first order", "second order", std::string("with\0zero", 9)};

    // Pointers and lengths: the form for items that may hold any byte.
    std::vector<const char*> data;
    std::vector<int> sizes;
    for (const std::string& item : items) {
        data.push_back(item.data());
        sizes.push_back(static_cast<int>(item.size()));
    }
    try {
        Crypto::PKCS7 signer;
        const std::unique_ptr<std::string[]> signatures(
            signer.sign(data.data(), static_cast<unsigned>(items.size()), sizes.data()));
        for (std::size_t i = 0; i < items.size(); ++i) {
            const std::string stem = folder + "/" + std::to_string(i + 1);
            std::ofstream(stem + ".txt", std::ios::binary) << items[i];
            std::ofstream(stem + ".p7s", std::ios::binary) << signatures[i];
        }
        std::cout << items.size() << " items signed\n";
    } catch (const Client::MSPException& e) {
        std::cerr << e.getMessage() << '\n';
        return 1;
    }
}
