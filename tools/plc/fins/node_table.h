#ifndef PLC_FINS_NODE_TABLE_H
#define PLC_FINS_NODE_TABLE_H

#include "cpu/end_codes.h"

#include <cstddef>
#include <cstdint>
#include <set>

// The FINS node addresses of the connected clients.

namespace plc {

class NodeTable {
public:
    /// `server` is the server's own node, 1 to 254; `limit` the number of clients that may have a node at once.
    NodeTable(unsigned server, std::size_t limit) : serverNode(server), clientLimit(limit) {}

    /// Takes node `requested`, or with 0 the first free one of those that the server allocates, 239 to 254. TCP_OK and
    /// `node` set, or the error.
    TcpError assign(std::uint32_t requested, unsigned *node)
    {
        if (requested > NODE_MAX)
            return TCP_NODE_OUT_OF_RANGE;
        if (requested == serverNode)
            return TCP_NODE_IS_SERVER;
        if (used.size() >= clientLimit)
            return TCP_ALL_IN_USE;
        if (used.count(requested) != 0)
            return TCP_NODE_IN_USE;
        unsigned chosen = requested;
        for (unsigned free = ALLOCATED_FIRST; chosen == 0 && free <= ALLOCATED_LAST; ++free)
            if (free != serverNode && used.count(free) == 0)
                chosen = free;
        if (chosen == 0)
            return TCP_NO_NODE_LEFT;
        used.insert(chosen);
        *node = chosen;
        return TCP_OK;
    }

    void release(unsigned node) { used.erase(node); }

    unsigned server() const { return serverNode; }
    std::size_t limit() const { return clientLimit; }
    const std::set<unsigned> &nodes() const { return used; }

private:
    enum : unsigned { NODE_MAX = 254, ALLOCATED_FIRST = 239, ALLOCATED_LAST = 254 };

    unsigned           serverNode;
    std::size_t        clientLimit;
    std::set<unsigned> used;
};

} // namespace plc

#endif
