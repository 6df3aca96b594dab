// The hub's key pair: given by the user, or generated at first use and kept in a private folder.
//
//     <folder>/ca.pem   what clients trust
//     <folder>/hub.key  private key
//     <folder>/hub.pem  its certificate, issued by ca.pem
//
// Safe to use from any number of threads.
#pragma once

#include <mutex>
#include <optional>
#include <string>

namespace Morvenn::Net::MvServerProxy::Hub {

struct KeyPair {
    std::string key;          // PEM
    std::string certificate;  // PEM, the key's own first
};

class KeyStore {
public:
    // A pair of files.
    KeyStore(std::string keyFile, std::string certificateFile);

    // The generated pair; an empty folder stands for defaultFolder().
    explicit KeyStore(std::string folder);

    // Reads the pair at the first call, and makes it before that when it is missing, damaged or
    // about to expire. Throws std::runtime_error.
    const KeyPair& pair();

    // The path of the generated CA certificate; the file is there after pair().
    std::string caFile() const { return m_folder + "/ca.pem"; }

    // $XDG_STATE_HOME/mvhub or $HOME/.local/state/mvhub. Throws std::runtime_error when neither
    // variable is set.
    static std::string defaultFolder();

private:
    KeyPair load() const;
    KeyPair loadOrMake();

    const bool m_generates = false;
    std::string m_keyFile;
    std::string m_certificateFile;
    std::string m_folder;
    std::mutex m_mutex;
    std::optional<KeyPair> m_pair;
};

}  // namespace Morvenn::Net::MvServerProxy::Hub
