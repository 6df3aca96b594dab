// The sessions that clients carry from one exchange to the next.
//
// Safe to use from any number of threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <mutex>
#include <string>
#include <unordered_map>

namespace Morvenn::Net::MvServerProxy::Hub {

struct Session {
    std::string id;              // 32 hexadecimal digits, so that no header rule can cut it
    std::uint64_t requests = 0;  // exchanges of this session so far, this one included
};

class SessionStore {
public:
    static constexpr std::size_t kDefaultCapacity = 1024;

    explicit SessionStore(std::size_t capacity = kDefaultCapacity);

    // Counts one exchange of the session `id` and returns it. An id that is empty or not known
    // (any more) starts a session with a new id. Beyond the capacity the session that was used
    // longest ago is forgotten.
    Session visit(const std::string& id);

    std::size_t size() const;

private:
    const std::size_t m_capacity;
    mutable std::mutex m_mutex;
    std::list<Session> m_byUse;  // the latest first
    std::unordered_map<std::string, std::list<Session>::iterator> m_byId;
};

}  // namespace Morvenn::Net::MvServerProxy::Hub
