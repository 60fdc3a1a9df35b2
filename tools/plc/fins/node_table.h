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
    TcpError assign(std::uint32_t requested, unsigned *node);

    void release(unsigned node) { used.erase(node); }

    unsigned server() const { return serverNode; }
    std::size_t limit() const { return clientLimit; }
    const std::set<unsigned> &nodes() const { return used; }

private:
    unsigned           serverNode;
    std::size_t        clientLimit;
    std::set<unsigned> used;
};

} // namespace plc

#endif
