#ifndef PLC_FINS_NODE_TABLE_H
#define PLC_FINS_NODE_TABLE_H

#include "cpu/end_codes.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>

// The FINS node addresses of the connected clients.

namespace plc {

/// Who has a node address.
struct NodeHolder {
    std::string           address;         // IP address
    std::function<void()> confirm = [] {}; // sends a connection confirmation, to learn whether the client still lives
};

class NodeTable {
public:
    /// `server` is the server's own node, 1 to 254; `limit` the number of clients that may have a node at once.
    NodeTable(unsigned server, std::size_t limit) : serverNode(server), clientLimit(limit) {}

    /// Takes node `requested`, or with 0 the first free one of those that the server allocates, 239 to 254. TCP_OK and
    /// `node` set, or the error. Who asks for a node that a client at the same IP address has may be that client, started
    /// anew: the holder's connection is confirmed, and ends if there is nobody any more.
    TcpError assign(std::uint32_t requested, const NodeHolder &client, unsigned *node)
    {
        if (requested > NODE_MAX)
            return TCP_NODE_OUT_OF_RANGE;
        if (requested == serverNode)
            return TCP_NODE_IS_SERVER;
        if (used.size() >= clientLimit)
            return TCP_ALL_IN_USE;
        const auto holder = used.find(requested);
        if (holder != used.end()) {
            if (holder->second.address == client.address)
                holder->second.confirm();
            return TCP_NODE_IN_USE;
        }
        unsigned chosen = requested;
        for (unsigned free = ALLOCATED_FIRST; chosen == 0 && free <= ALLOCATED_LAST; ++free)
            if (free != serverNode && used.count(free) == 0)
                chosen = free;
        if (chosen == 0)
            return TCP_NO_NODE_LEFT;
        used.emplace(chosen, client);
        *node = chosen;
        return TCP_OK;
    }

    void release(unsigned node) { used.erase(node); }

    unsigned server() const { return serverNode; }
    std::size_t limit() const { return clientLimit; }

    std::set<unsigned> nodes() const
    {
        std::set<unsigned> all;
        for (const auto &entry : used)
            all.insert(entry.first);
        return all;
    }

private:
    enum : unsigned { NODE_MAX = 254, ALLOCATED_FIRST = 239, ALLOCATED_LAST = 254 };

    unsigned                       serverNode;
    std::size_t                    clientLimit;
    std::map<unsigned, NodeHolder> used;
};

} // namespace plc

#endif
